#ifndef TVQUERY_H
#define TVQUERY_H

// TVQuery: a stored query (container tag TVDatabase::C_QueryTag): its
// text, in the query language (doc/query-language.md), and what parse
// derives from it: conditions, which choose chains of objects, one object
// per kind; fields, the columns; and prompts, the values asked for
// before a run and put into the text as "$<Title>".
//
// A run (execute) is a nested loop, one depth per condition: a condition
// of a kind not yet in the chain brings in, one after the other, every
// live object of that kind that passes it; a condition of a kind already
// there tests that object. Every chain that passes all conditions is a
// row. The cost is the product of the kinds' sizes; the order of the
// conditions decides how many chains are tried. There is no index.
//
// A text that fails to parse stays on the query; the failure is a warning
// for the user that names the file (or the query) and line.
//
// The query owns its conditions, fields and prompts; they are rebuilt by
// every parse, so pointers to them don't outlive the next one.
//
// Serial form: "name", "text", "cond", "field", "prompt", then
// TVDBObject's under "TVDBObject".

#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvdbobject.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

class TVDatabase;
class TVQueryCond;
class TVQueryField;
class TVQueryParser;
class TVQueryPrompt;
class TVQueryResult;

class TVQuery : public TVDBObject
{
public:
    static int TVErrC_MissingObjectType;

    TVQuery();
    TVQuery(const std::string& name, const std::string& text);
    TVQuery(const TVQuery& other);
    TVQuery& operator=(const TVQuery& other);
    ~TVQuery() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);
    // Queries don't follow specs.
    bool uses_spec() const override;

    const std::string& get_name() const;
    void set_name(const std::string& name);
    const std::string& get_text() const;
    // A new text drops the text with prompt values in it.
    void set_text(const std::string& text);
    // Where the text came from: messages name that file, and a line of the
    // text is line + its own line there.
    void set_file_info(const std::string& file, int line);

    int get_nconditions() const;
    // Null for a bad index.
    TVQueryCond* get_condition(int index) const;
    // Takes cond.
    void add_condition(TVQueryCond* cond);
    int get_nfields() const;
    TVQueryField* get_field_no(int index) const;
    void add_field(TVQueryField* field);
    void clear_fields();
    int get_nprompts() const;
    TVQueryPrompt* get_prompt_no(int index) const;
    // Null when there is no prompt of that title.
    TVQueryPrompt* get_prompt_by_name(const std::string& title) const;
    void add_prompt(TVQueryPrompt* prompt);
    void clear_prompts();

    // Rebuilds conditions and fields (and the prompts, unless keepPrompts)
    // from the text. error_line, if given, receives the failing line or -1.
    [[nodiscard]] int parse(bool keepPrompts, int* error_line);
    // The text with each "$<Title>" replaced by its prompt's value, parsed
    // with the prompts kept. Nothing to do without prompts.
    [[nodiscard]] int expand_prompts();
    // The i-th value to the i-th prompt; extra values are dropped.
    void supply_prompts(const std::vector<std::string>& values);
    std::vector<std::string> get_prompts() const;

    // Fills result (cleared first) from db.
    [[nodiscard]] int execute(const TVDatabase& db, TVQueryResult& result) const;
    // The separator line, "<" and the name, the text (ending in a newline), ">".
    void export_query(std::ostream& out) const;

    // The value that cond (or a field) reads from the first object of
    // chain; TVErrC_okFailed when the object has none. The database's
    // hook (TVDatabase::query_value) is asked first.
    [[nodiscard]] virtual int get_value(const TVDatabase& db,
                                        const std::vector<TVDBObject*>& chain,
                                        const TVQueryCond& cond, std::string& out) const;

    [[nodiscard]] int parse_field(TVQueryParser& parser, const std::string& prefix);
    [[nodiscard]] int parse_condition(TVQueryParser& parser, const std::string& prefix);
    [[nodiscard]] int parse_prompt(TVQueryParser& parser, const std::string& prefix);

private:
    struct TVQueryImpl;
    struct TVQueryRun;
    void copy_fields(const TVQuery& other);
    [[nodiscard]] int expand_condition(TVQueryRun& run, int index) const;
    [[nodiscard]] int fill_cells(TVQueryRun& run) const;
    std::unique_ptr<TVQueryImpl> d;
};

#endif // TVQUERY_H
