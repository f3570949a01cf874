#ifndef TVDBSCRIPT_H
#define TVDBSCRIPT_H

// TVDBScript: a named script carried by an object or by the spec that
// objects share, with an optional key shortcut. The text is QtScript; the
// last run's error (line, text) is kept on the script for the workspace to
// show, and is never saved. Serial form: "name", "script", "shortcut",
// then TVObject's under "TVObject".

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVDBObject;

class TVDBScript : public TVObject
{
public:
    TVDBScript();
    TVDBScript(const std::string& name, const std::string& script, const std::string& shortcut);
    TVDBScript(const TVDBScript& other);
    TVDBScript& operator=(const TVDBScript& other);
    ~TVDBScript() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);

    const std::string& get_name() const { return m_name; }
    void set_name(const std::string& name) { m_name = name; }
    const std::string& get_script() const { return m_script; }
    void set_script(const std::string& script) { m_script = script; }
    const std::string& get_shortcut() const { return m_shortcut; }
    void set_shortcut(const std::string& shortcut) { m_shortcut = shortcut; }

    // -1 when the last run raised nothing.
    int get_error_line() const { return m_errorLine; }
    const std::string& get_error_text() const { return m_errorText; }
    void set_error(int line, const std::string& text);
    void clear_error();

private:
    std::string m_name;
    std::string m_script;
    std::string m_shortcut;
    int m_errorLine = -1;
    std::string m_errorText;
};

#endif // TVDBSCRIPT_H
