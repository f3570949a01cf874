#ifndef TVVARIABLE_H
#define TVVARIABLE_H

// TVVariable: a variable on one object: a definition (TVVarSpec, linked to
// the spec's own once the spec is applied) and the value.
//
// m_isCached says the value is current; m_isInitialised that it is final
// and not to be expanded again (a prompt answered, a reference resolved, a
// value read from a file).
//
// Serial form: "v" value, "i" initialised, then the definition under "VS".
// On an object's own record a variable travels as one "V" line instead
// (TVDBObject::var_to_string).

#include "LibDatabase/db/tvdbscriptcache.h"
#include "LibDatabase/db/tvvarspec.h"

#include <iosfwd>
#include <string>

class TVVariable : public TVVarSpec
{
public:
    TVVariable();
    // A definition of its own with every flag at its default; the value is
    // cached.
    TVVariable(const std::string& tag, const std::string& value, bool initialised);
    TVVariable(const TVVariable& other);
    TVVariable& operator=(const TVVariable& other);
    ~TVVariable() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);

    const std::string& get_value() const { return m_value; }
    // Sets the value and marks it cached.
    void set_value(const std::string& value, bool initialised);
    bool isinitialised() const { return m_isInitialised; }
    bool iscached() const { return m_isCached; }
    // Only a prompt variable that is not derived becomes final this way.
    void mark_initialised();
    // A derived or system value forgets its value, to be worked out again.
    void clear_cache();
    // Unless this is an initialised variable that is not derived: the spec
    // text becomes the value, cached but not yet final.
    void clone_spec();
    // The results of this variable's "$=(...)" expressions, by place.
    TVDBScriptCache& script_cache() { return m_scriptCache; }

private:
    std::string m_value;
    bool m_isCached = false;
    bool m_isInitialised = false;
    TVDBScriptCache m_scriptCache;
};

#endif // TVVARIABLE_H
