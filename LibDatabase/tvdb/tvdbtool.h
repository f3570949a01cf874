#ifndef TVDBTOOL_H
#define TVDBTOOL_H

// TVDBTool: the tvdb command line, "tvdb COMMAND [arguments]". The
// commands are the framework's (date, check, dump, log) followed by those
// the programs registered with TVDBToolRegistry::instance(), which the
// file commands also ask about a file's program; "--help" lists them all,
// "--version" names the tool's version. Exit statuses are TVDBCommand's; a
// fault a command throws ends it with C_ExitInternal.
//
// A program whose database class isn't linked in would load its files as
// plain databases and fail on their classes; the tool says so and runs no
// command (C_ExitInternal).

#include <iosfwd>
#include <string>
#include <vector>

class TVDBTool
{
public:
    // Runs the command line args (the words after the tool's name):
    // answers to out, complaints to err. Gives the exit status.
    static int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);
};

#endif // TVDBTOOL_H
