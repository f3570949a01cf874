#ifndef TVDBIMPORTCOMMAND_H
#define TVDBIMPORTCOMMAND_H

// TVDBImportCommand: "tvdb import DBFILE SOURCE": merges the objects of the
// database file SOURCE into DBFILE as the program's Import -> Merge does:
// DBFILE opened as the program opens it, SOURCE's objects renumbered above
// DBFILE's, as one operation the program can undo, then DBFILE saved. A
// SOURCE that is no database, or one of another application type, gives
// the load's message and leaves DBFILE as it was.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBImportCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "import"; }
    const char* summary() const override { return "merge another database file into one"; }
    void usage(std::ostream& out) const override;

protected:
    bool writable() const override { return true; }
    const char* extra_arguments() const override { return " SOURCE"; }
    size_t max_extra_arguments() const override { return 1; }
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBIMPORTCOMMAND_H
