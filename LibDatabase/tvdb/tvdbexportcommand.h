#ifndef TVDBEXPORTCOMMAND_H
#define TVDBEXPORTCOMMAND_H

// TVDBExportCommand: "tvdb export DBFILE OUT [--app-type TYPE]": writes
// the whole of DBFILE, as the program sees it (partial file included), to
// OUT: a database file another installation can open. The copy is written
// whole or not at all and is loaded back before the command says it is
// done. --app-type makes the copy claim another application type; DBFILE
// itself is only read.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBExportCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "export"; }
    const char* summary() const override { return "write a database file out as a copy"; }
    void usage(std::ostream& out) const override;

protected:
    std::vector<std::string> value_options() const override { return {"--app-type"}; }
    const char* extra_arguments() const override { return " OUT [--app-type TYPE]"; }
    size_t max_extra_arguments() const override { return 1; }
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBEXPORTCOMMAND_H
