#ifndef TVDBSCRIPTCOMMAND_H
#define TVDBSCRIPTCOMMAND_H

// TVDBScriptCommand: "tvdb script FILE ID SCRIPT": runs SCRIPT (its text,
// or @PATH for a file's) against object ID of FILE, loaded read-only, and
// prints what it returns. Nothing it changes is saved. A script that
// raises, or runs past the time limit, prints its line and message.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBScriptCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "script"; }
    const char* summary() const override { return "run a script against an object of a database"; }
    void usage(std::ostream& out) const override;

protected:
    const char* extra_arguments() const override { return " ID SCRIPT"; }
    size_t max_extra_arguments() const override { return 2; }
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBSCRIPTCOMMAND_H
