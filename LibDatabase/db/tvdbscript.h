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

    // A run the user starts: the script's changes make one undoable step,
    // "Run Script NAME" (changes left open before it are finished first,
    // under that name, and stay whatever the run does). A
    // script that raises keeps what it changed up to there, its error on
    // the script, and gives TVErrC_okCancel. One stopped by the time limit
    // gives TVErrC_ScriptStopped, and its changes are dropped: the database
    // is rebuilt from its files as after undo, so objects held from before
    // the run are stale, this script too when an object owns it (the
    // fresh copy carries the error; look it up by id). Without a loaded, writable database the changes
    // stay in memory as they are.
    [[nodiscard]] int run(TVDBObject& object, bool interactive);
    // A run within another operation (a trigger, a script calling a
    // script): no step of its own, nothing dropped on a stop. value, when
    // given, receives the result as text.
    [[nodiscard]] int run_within(TVDBObject& object, bool interactive, std::string* value);

    // A run the time limit stopped.
    static int TVErrC_ScriptStopped;

    // -1 when the last run raised nothing.
    int get_error_line() const { return m_errorLine; }
    const std::string& get_error_text() const { return m_errorText; }
    void set_error(int line, const std::string& text);
    void clear_error();

private:
    int run_engine(TVDBObject& object, bool interactive, std::string* value);

    std::string m_name;
    std::string m_script;
    std::string m_shortcut;
    int m_errorLine = -1;
    std::string m_errorText;
};

#endif // TVDBSCRIPT_H
