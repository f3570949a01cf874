#ifndef TVDBFILECOMMAND_H
#define TVDBFILECOMMAND_H

// TVDBFileCommand: the common part of the commands that look into a
// database file ("tvdb check|dump|log [--app NAME] FILE [...]").
//
// The file is opened read-only through the normal load, partial file and
// transaction log included, so the tool sees what the program would. It is
// loaded into the database class that the file's first object names (a
// program's own), when tvdb knows that class; else into a plain
// TVDatabase. The side files lie in the application's scratch and cache
// folders: --app names the application whose folders those are. Without
// it, a file of an application type that a program registered
// (TVDBToolRegistry) uses that program's folders, any other the folders of
// a program without a name. Only the classes linked into tvdb are known; a
// file holding any other fails to load as the program itself would fail
// on it.
//
// A failed load ends the command with exit status 1 and the load's own
// messages on err, which name the file.

#include "LibDatabase/tvdb/tvdbcommand.h"

#include <map>
#include <utility>
#include <string>
#include <vector>

class TVApplication;
class TVDatabase;

class TVDBFileCommand : public TVDBCommand
{
public:
    int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) final;

protected:
    // A command that changes the file opens it as the program does: locked
    // against the program, partial file kept and replayed; and closes it
    // at the end. The others open it read-only.
    virtual bool writable() const { return false; }
    // The options (beyond --app) that take a value; run_loaded finds the
    // values given in m_options.
    virtual std::vector<std::string> value_options() const { return {}; }
    // The options that take no value; run_loaded finds each given one in
    // m_options with the value "1".
    virtual std::vector<std::string> flag_options() const { return {}; }
    // Before the file is loaded, with the application object in place: a
    // status other than C_ExitOk ends the command there.
    virtual int prepare(TVApplication& application, const std::string& file, std::ostream& err)
    {
        (void)application;
        (void)file;
        (void)err;
        return C_ExitOk;
    }
    // The words the command takes after FILE, for its usage line.
    virtual const char* extra_arguments() const { return ""; }
    virtual size_t max_extra_arguments() const { return 0; }
    // Runs on the loaded database; extra holds the words after FILE.
    virtual int run_loaded(TVDatabase& db, const std::vector<std::string>& extra,
                           std::ostream& out, std::ostream& err) = 0;
    // The texts of every pending error of the framework, newest first, one
    // per line; clears them.
    static std::string take_messages();

    std::map<std::string, std::string> m_options;
    // Every value option as given, in order, for those that may repeat.
    std::vector<std::pair<std::string, std::string>> m_optionList;
};

#endif // TVDBFILECOMMAND_H
