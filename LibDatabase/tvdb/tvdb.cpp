// tvdb: the framework's command-line tool. "tvdb COMMAND [arguments]";
// "tvdb --help" lists the commands.

#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/error/tverrdetails.h"
#include "LibDatabase/tvdb/tvdbcheckcommand.h"
#include "LibDatabase/tvdb/tvdbcommand.h"
#include "LibDatabase/tvdb/tvdbdatecommand.h"
#include "LibDatabase/tvdb/tvdbdumpcommand.h"
#include "LibDatabase/tvdb/tvdblogcommand.h"
#include "LibDatabase/tvdb/tvdbrepeatcommand.h"
#include "LibDatabase/tvdb/tvdbreportcommand.h"

namespace {

std::vector<std::unique_ptr<TVDBCommand>> make_commands()
{
    std::vector<std::unique_ptr<TVDBCommand>> commands;
    commands.push_back(std::make_unique<TVDBDateCommand>());
    commands.push_back(std::make_unique<TVDBCheckCommand>());
    commands.push_back(std::make_unique<TVDBDumpCommand>());
    commands.push_back(std::make_unique<TVDBLogCommand>());
    commands.push_back(std::make_unique<TVDBReportCommand>());
    commands.push_back(std::make_unique<TVDBRepeatCommand>());
    return commands;
}

void usage(const std::vector<std::unique_ptr<TVDBCommand>>& commands, std::ostream& out)
{
    out << "Usage: tvdb COMMAND [arguments]\n"
           "\n"
           "Commands:\n";
    for (const auto& command : commands) {
        std::string name = command->name();
        out << "  " << name << std::string(name.size() < 10 ? 10 - name.size() : 1, ' ')
            << command->summary() << "\n";
    }
    out << "\n"
           "\"tvdb COMMAND --help\" shows the options of a command.\n";
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    const auto commands = make_commands();
    if (args.empty()) {
        usage(commands, std::cerr);
        return TVDBCommand::C_ExitUsage;
    }
    if (args[0] == "-h" || args[0] == "--help" || args[0] == "help") {
        usage(commands, std::cout);
        return TVDBCommand::C_ExitOk;
    }
    for (const auto& command : commands) {
        if (args[0] != command->name())
            continue;
        try {
            return command->run(std::vector<std::string>(args.begin() + 1, args.end()),
                                std::cout, std::cerr);
        } catch (const TVErrDetails&) {
            std::cerr << "tvdb " << command->name() << ": failed on an internal error\n";
        } catch (const std::exception& fault) {
            std::cerr << "tvdb " << command->name() << ": " << fault.what() << "\n";
        }
        return TVDBCommand::C_ExitInternal;
    }
    std::cerr << "tvdb: unknown command '" << args[0] << "' (see tvdb --help)\n";
    return TVDBCommand::C_ExitUsage;
}
