#ifndef TVOBJECTSPEC_H
#define TVOBJECTSPEC_H

// TVObjectSpec: a user-defined kind of object, stored in the database as
// an object of its own (container tag TVDatabase::C_SpecTag). Its text, in
// the spec language (doc/schema-language.md), is the truth; the variables,
// children, inherited names, flags and scripts are derived from it by
// parse, and the database's compile (TVDatabase::parse_objectspec) adds
// the system values and what inherited specs bring.
//
// The spec owns its variable definitions (TVVarSpec) and children
// (TVObjectSpecChild); objects that follow it link their variables to the
// definitions, so the spec must outlive those links (the database keeps
// specs, deleted ones as tombstones, until it unloads).
//
// Serial form: "name", "varSpec", "child", "baseOnly", "defunct",
// "inherit", "text", then TVDBObject's under "DB". Where the text came
// from (file and line) and the last parse's failure are not saved.

#include "LibDatabase/db/tvdbobject.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class TVObjectSpecChild;
class TVVarSpec;

class TVObjectSpec : public TVDBObject
{
public:
    TVObjectSpec();
    TVObjectSpec(const std::string& name, const std::string& text);
    TVObjectSpec(const TVObjectSpec& other);
    TVObjectSpec& operator=(const TVObjectSpec& other);
    ~TVObjectSpec() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);
    // Specs don't follow specs.
    bool uses_spec() const override;

    const std::string& get_name() const;
    void set_name(const std::string& name);
    const std::string& get_text() const;
    void set_text(const std::string& text);
    // Where the text was imported from: messages name that file, and a
    // line of the text is line + its own line there.
    void set_file_info(const std::string& file, int line);
    const std::string& get_file_name() const;
    int get_file_line() const;

    // ---- Variables (owned) ---------------------------------------------------
    int get_nvarspecs() const;
    // Null for a bad index / an unknown tag.
    TVVarSpec* get_varspec_by_index(int index) const;
    TVVarSpec* get_varspec_by_name(const std::string& tag) const;
    // Takes spec; appended.
    void add_varspec(TVVarSpec* spec);
    // The variables "NAME:ASSOC" of name.
    int get_nassoc(const std::string& name) const;
    TVVarSpec* get_assoc_by_index(const std::string& name, int index) const;

    // ---- Children (owned) ------------------------------------------------------
    int get_nchildren() const;
    TVObjectSpecChild* get_child_by_index(int index) const;
    TVObjectSpecChild* get_child_by_name(const std::string& member_tag) const;
    // Takes child; one of a member tag already there is replaced.
    void add_child(TVObjectSpecChild* child);

    // ---- Inheritance -------------------------------------------------------------
    // Names of inherited specs, direct and, after a compile, indirect.
    int get_ninherited() const;
    const std::string& get_inherited_by_index(int index) const;
    const std::vector<std::string>& get_inherited() const;
    bool inherits(const std::string& name) const;
    // Appends name unless it is there.
    void add_inherited(const std::string& name);
    // Takes over what parent has and this spec lacks: variables (a bare
    // system entry here takes the parent's definition; a definition of
    // its own stays), children by member tag, scripts by name, and the
    // inherited names, which makes the list transitive.
    void apply_inheritance(const TVObjectSpec& parent);

    bool is_base_only() const;
    void set_baseonly(bool on);
    bool is_defunct() const;
    void set_defunct(bool on);

    // Drops variables, children, inherited names and scripts, and clears
    // the two flags: what parse derives from the text.
    void clear_variables();
    // Reads the text into this spec (the name checked first). error_line,
    // if given, receives the line of a failure or -1. The spec's own
    // parse only; TVDatabase::parse_objectspec is the whole compile.
    [[nodiscard]] int parse(int* error_line);
    // The last compile's failure: its text for the user ("" when none) and line.
    const std::string& get_parse_error() const;
    int get_parse_error_line() const;
    void set_parse_error(const std::string& text, int line);

    // The separator line, "{" and the name, the text (ending in a newline)
    // and "}".
    void export_spec(std::ostream& out) const;
    // Whether the text names spec_name as an inherited spec or a child's spec.
    bool referenced(const std::string& spec_name) const;
    // Another spec was renamed: its name in the text follows.
    void handle_rename(const std::string& from, const std::string& to);

private:
    struct TVObjectSpecImpl;
    void copy_fields(const TVObjectSpec& other);
    std::unique_ptr<TVObjectSpecImpl> d;
};

#endif // TVOBJECTSPEC_H
