#ifndef TVDBCOMMAND_H
#define TVDBCOMMAND_H

// TVDBCommand: one subcommand of the tvdb tool ("tvdb date ..."). main()
// picks the command by its name and hands it the arguments behind it.
//
// Exit statuses are shared by all commands: 0 done, 1 the command ran but
// the answer is a failure (such as an invalid date), 2 the command line was
// wrong, 3 an internal fault.

#include <iosfwd>
#include <string>
#include <vector>

class TVDBCommand
{
public:
    static constexpr int C_ExitOk = 0;
    static constexpr int C_ExitFailed = 1;
    static constexpr int C_ExitUsage = 2;
    static constexpr int C_ExitInternal = 3;

    TVDBCommand() = default;
    TVDBCommand(const TVDBCommand&) = delete;
    TVDBCommand& operator=(const TVDBCommand&) = delete;
    virtual ~TVDBCommand() = default;

    // The word that selects the command, and a line for the tool's help.
    virtual const char* name() const = 0;
    virtual const char* summary() const = 0;
    // The command's own help text.
    virtual void usage(std::ostream& out) const = 0;
    // Runs with the arguments after the command's name: answers to out,
    // complaints to err. Gives the exit status.
    virtual int run(const std::vector<std::string>& args, std::ostream& out,
                    std::ostream& err) = 0;
};

#endif // TVDBCOMMAND_H
