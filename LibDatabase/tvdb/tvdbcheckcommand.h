#ifndef TVDBCHECKCOMMAND_H
#define TVDBCHECKCOMMAND_H

// TVDBCheckCommand: "tvdb check FILE": loads the file and says what is in
// it: the application type, the next id, the objects by class (tombstones
// apart), and the transaction log's size, undone entries and last save.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBCheckCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "check"; }
    const char* summary() const override { return "load a database file and summarise it"; }
    void usage(std::ostream& out) const override;

protected:
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBCHECKCOMMAND_H
