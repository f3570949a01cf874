#ifndef TVDBSYNCCOMMAND_H
#define TVDBSYNCCOMMAND_H

// TVDBSyncCommand: "tvdb sync FILE --share DIR [--host NAME]": one round of
// sync between FILE and a shared folder, as the program that owns FILE
// would do it: the folder becomes that program's shared folder, FILE is
// linked to it if it isn't, every peer's file is pulled (a replace only
// with nothing unsaved), then a stamped save pushes FILE's own. What each
// pull did (each peer file read, ignored, replaced or merged with its
// counts) is printed from the database service's log. --host writes under
// another device's name.
//
// FILE is opened as the program opens it, and not while the program has
// it open. A folder that is missing or can't be written is named and
// nothing is touched; a file that doesn't load gives the load's message.

#include "LibDatabase/tvdb/tvdbfilecommand.h"

class TVDBSyncCommand : public TVDBFileCommand
{
public:
    const char* name() const override { return "sync"; }
    const char* summary() const override { return "pull and push a database through a shared folder"; }
    void usage(std::ostream& out) const override;

protected:
    bool writable() const override { return true; }
    std::vector<std::string> value_options() const override { return {"--share", "--host"}; }
    int prepare(TVApplication& application, const std::string& file, std::ostream& err) override;
    int run_loaded(TVDatabase& db, const std::vector<std::string>& extra, std::ostream& out,
                   std::ostream& err) override;
};

#endif // TVDBSYNCCOMMAND_H
