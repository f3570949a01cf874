#ifndef TVDBQUERYCOMMAND_H
#define TVDBQUERYCOMMAND_H

// TVDBQueryCommand: "tvdb query FILE QUERY [--prompt TITLE=VALUE]...
// [--csv]": runs a query (its text, or @PATH for a file holding it) on the
// file, loaded read-only, and prints the table with its headers: columns
// aligned, or CSV. A prompt that is not given keeps its default. A text
// that doesn't parse prints the parser's message, with its line.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBQueryCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "query"; }
    const char* summary() const override { return "run a query on a database file"; }
    void usage(std::ostream& out) const override;

protected:
    std::vector<std::string> value_options() const override { return {"--prompt"}; }
    std::vector<std::string> flag_options() const override { return {"--csv"}; }
    const char* extra_arguments() const override { return " QUERY"; }
    size_t max_extra_arguments() const override { return 1; }
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBQUERYCOMMAND_H
