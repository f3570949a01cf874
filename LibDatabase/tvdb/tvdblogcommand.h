#ifndef TVDBLOGCOMMAND_H
#define TVDBLOGCOMMAND_H

// TVDBLogCommand: "tvdb log FILE": prints the transaction log of a database
// file, one line per transaction: id, status ("active" or "undone") and the
// operation, then the number of transactions the last full save holds.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBLogCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "log"; }
    const char* summary() const override { return "print the transaction log of a database file"; }
    void usage(std::ostream& out) const override;

protected:
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBLOGCOMMAND_H
