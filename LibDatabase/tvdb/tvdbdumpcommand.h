#ifndef TVDBDUMPCOMMAND_H
#define TVDBDUMPCOMMAND_H

// TVDBDumpCommand: "tvdb dump FILE [ID]": prints the loaded objects in the
// serial form, each behind its "@O:" line as in the main file, the
// database's own record first; with ID, that object alone (0 is the
// database's record). Tombstones are printed too: they are in the file.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBDumpCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "dump"; }
    const char* summary() const override { return "print the objects of a database file"; }
    void usage(std::ostream& out) const override;

protected:
    const char* extra_arguments() const override { return " [ID]"; }
    size_t max_extra_arguments() const override { return 1; }
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBDUMPCOMMAND_H
