#ifndef TVVARSPEC_H
#define TVVARSPEC_H

// TVVarSpec: the definition of one variable of an object spec: its tag
// ("NAME" or "NAME:ASSOC"), the defining text (initial value or
// expression), how the value comes (derived, prompted, automatic, a
// compiled system value), whether the user sees it, and its constraint.
//
// A TVVarSpec is a handle on a shared, reference-counted record: the
// variables of every object of a spec link to the spec's definitions
// (link), so a spec holds each definition once however many objects use
// it. A copy or a read makes a record of its own. Not thread-safe: the
// count is plain, as objects are changed by one thread at a time.
//
// m_isDerived and m_isPrompt exclude each other: setting one clears the
// other.
//
// Serial form: "t" tag, "s" spec text, "d" derived, "p" prompt, "a" auto,
// "y" system value, "i" private, "c" constraint (the letter's code), "r"
// constraint parameter, then TVObject's under "O".

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVVarSpec : public TVObject
{
public:
    // Constraint types: the code of the letter.
    enum E_Constraint {
        E_ConstrainNone = 'n',
        E_ConstrainBool = 'b',
        E_ConstrainInt = 'i',
        E_ConstrainFloat = 'f',
        E_ConstrainDate = 'd',
        E_ConstrainDuration = 'u',
        E_ConstrainLocation = 'l',
        E_ConstrainUrl = 'w',
        E_ConstrainPath = 'p',
        E_ConstrainChoice = 'c',
        E_ConstrainReference = 'r',
    };

    TVVarSpec();
    explicit TVVarSpec(const std::string& tag);
    TVVarSpec(const TVVarSpec& other);
    TVVarSpec& operator=(const TVVarSpec& other);
    ~TVVarSpec() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);

    // The constraint of a name ("int", "Choice"...), case ignored; -1 when
    // unknown. constraint_to_str gives "" for an unknown code.
    static int str_to_constraint(const std::string& name);
    static std::string constraint_to_str(int constraint);

    const std::string& get_tag() const;
    void set_tag(const std::string& tag);
    const std::string& get_spec() const;
    void set_spec(const std::string& spec);
    // Adds text on a new line, or sets it when the spec text is empty.
    void append_spec(const std::string& text);
    bool is_derived() const;
    void set_derived(bool on);
    bool is_prompt() const;
    void set_prompt(bool on);
    bool is_auto() const;
    void set_auto(bool on);
    bool is_sysvalue() const;
    void set_sysvalue(bool on);
    bool is_private() const;
    void set_private(bool on);
    int get_constraint() const;
    void set_constraint(int constraint);
    const std::string& get_constraintparam() const;
    void set_constraintparam(const std::string& param);
    int get_reference_count() const;

    // With a name: the part of the tag before ":" is name. With an empty
    // name: the tag has no ":".
    bool match_assoc(const std::string& name) const;
    // Splits at the first ":"; false when there is none or it stands last.
    static bool split_assoc(const std::string& tag, std::string& name, std::string& assoc);
    // Drops this handle's record (freed with its last handle) and shares
    // other's.
    void link(const TVVarSpec& other);
    // Whether two handles share one record.
    bool shares_definition(const TVVarSpec& other) const;
    // False only for the bare system entry that add_sysquants declares: a
    // system value, neither prompted nor derived, with no spec text.
    bool defined_in_spec() const;

private:
    struct Record;
    void release();
    void own_copy_of(const Record& record);

    Record* r = nullptr;
};

#endif // TVVARSPEC_H
