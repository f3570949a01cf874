#ifndef TVDBSCHEMA_H
#define TVDBSCHEMA_H

// TVDBSchema: the object spec layer of a database: compiling specs
// (inheritance, child specs), applying them to objects, working out
// variables, the checker's questions about variables, and the ".tvo" spec
// files. TVDatabase delegates its spec calls here; a TVDBSchema is made
// per call and holds nothing but the database.
//
// A database takes part only once it holds a spec: until then nothing is
// added or changed, so files of programs that use no specs stay as they
// are. The first spec brings the two defaults ("Default" and "TopLevel")
// with it, at the next apply_objectspecs.

#include <string>
#include <vector>

class TVDatabase;
class TVDBObject;
class TVObjectSpec;

class TVDBSchema
{
public:
    explicit TVDBSchema(TVDatabase& db) : m_db(db) {}

    [[nodiscard]] int parse_objectspec(TVObjectSpec& spec, int* error_line);
    [[nodiscard]] int parse_objectspecs(bool strict);
    [[nodiscard]] int apply_objectspecs();
    [[nodiscard]] int apply_objectspec_to_db(TVDBObject* object, int spec_id, bool add_create);
    [[nodiscard]] int create_default_spec();
    [[nodiscard]] int create_object(TVDBObject* parent, const std::string& member_tag, int spec_id,
                                    TVDBObject** out);
    [[nodiscard]] int update_vars(int id, bool force);
    // What initialise does: compile (failures stay on the specs, for
    // validate_specs) and apply. Errors only end it.
    [[nodiscard]] int initialise();

    [[nodiscard]] int add_objectspec(TVObjectSpec* spec, const std::string& operation);
    [[nodiscard]] int delete_objectspec(int id);
    [[nodiscard]] int commit_objectspec(int id, const std::string& operation);
    [[nodiscard]] int revert_objectspec(int id);
    [[nodiscard]] int rename_spec(const std::string& from, const std::string& to);
    [[nodiscard]] int validate_specs() const;

    bool is_spec_derived_from(int base_id, int spec_id) const;
    bool objectspec_in_use(int id) const;
    bool objectspec_referenced(const std::string& name, std::string& by) const;
    std::vector<int> get_derived_specs(int base_id) const;
    std::vector<TVObjectSpec*> get_specs(bool all) const;
    std::vector<TVObjectSpec*> get_allowable_specs(int base_id, bool all) const;
    int get_child_base_spec(const TVDBObject& object) const;
    std::vector<std::string> get_var_values(const std::string& tag) const;
    std::string spec_child_member_tag(const TVDBObject& parent) const;

    std::vector<std::string> extra_variables(int id) const;
    std::vector<std::string> unfilled_vars(int id) const;
    bool is_bastard(int id) const;

    [[nodiscard]] int export_specs(const std::string& path) const;
    [[nodiscard]] int import_specs(const std::string& path);
    [[nodiscard]] int validate_specfile(const std::string& path) const;
    [[nodiscard]] int do_import(const std::string& path);

private:
    // active holds the names being compiled, to stop a circle of inheritance.
    [[nodiscard]] int compile(TVObjectSpec& spec, int* error_line, std::vector<std::string>& active);
    // The spec that object follows (or would: "Default" for none).
    const TVObjectSpec* spec_of(const TVDBObject& object) const;
    // A query of the file: the one of that name takes the text, or a new
    // one is added; then it is parsed.
    [[nodiscard]] int take_query(const std::string& name, const std::string& text,
                                 const std::string& path, int first);

    TVDatabase& m_db;
};

#endif // TVDBSCHEMA_H
