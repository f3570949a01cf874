#include "LibDatabase/tvdb/tvdbtool.h"

#include "LibCore/error/tverrdetails.h"
#include "LibDatabase/tvdb/tvdbcheckcommand.h"
#include "LibDatabase/tvdb/tvdbcommand.h"
#include "LibDatabase/tvdb/tvdbdatecommand.h"
#include "LibDatabase/tvdb/tvdbdumpcommand.h"
#include "LibDatabase/tvdb/tvdbexportcommand.h"
#include "LibDatabase/tvdb/tvdbimportcommand.h"
#include "LibDatabase/tvdb/tvdblogcommand.h"
#include "LibDatabase/tvdb/tvdbrepeatcommand.h"
#include "LibDatabase/tvdb/tvdbspeccommand.h"
#include "LibDatabase/tvdb/tvdbscriptcommand.h"
#include "LibDatabase/tvdb/tvdbsynccommand.h"
#include "LibDatabase/tvdb/tvdbtoolregistry.h"

#include <exception>
#include <memory>
#include <ostream>

namespace {

std::vector<std::unique_ptr<TVDBCommand>> make_commands(const TVDBToolRegistry& registry)
{
    std::vector<std::unique_ptr<TVDBCommand>> commands;
    commands.push_back(std::make_unique<TVDBDateCommand>());
    commands.push_back(std::make_unique<TVDBCheckCommand>());
    commands.push_back(std::make_unique<TVDBDumpCommand>());
    commands.push_back(std::make_unique<TVDBLogCommand>());
    commands.push_back(std::make_unique<TVDBRepeatCommand>());
    commands.push_back(std::make_unique<TVDBSpecCommand>());
    commands.push_back(std::make_unique<TVDBSyncCommand>());
    commands.push_back(std::make_unique<TVDBScriptCommand>());
    commands.push_back(std::make_unique<TVDBExportCommand>());
    commands.push_back(std::make_unique<TVDBImportCommand>());
    for (auto& command : registry.make_commands())
        commands.push_back(std::move(command));
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
           "\"tvdb COMMAND --help\" shows the options of a command; \"tvdb --version\" the\n"
           "version of the tool.\n";
}

} // namespace

int TVDBTool::run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const TVDBToolRegistry& registry = TVDBToolRegistry::instance();
    const std::vector<std::string> unlinked = registry.unlinked_classes();
    if (!unlinked.empty()) {
        err << "tvdb: built without the classes of " << unlinked.front()
            << ", whose files it was told to open\n";
        return TVDBCommand::C_ExitInternal;
    }
    const auto commands = make_commands(registry);
    if (args.empty()) {
        usage(commands, err);
        return TVDBCommand::C_ExitUsage;
    }
    if (args[0] == "-h" || args[0] == "--help" || args[0] == "help") {
        usage(commands, out);
        return TVDBCommand::C_ExitOk;
    }
    if (args[0] == "-v" || args[0] == "--version") {
        out << "tvdb " << TV_VERSION << "\n";
        return TVDBCommand::C_ExitOk;
    }
    for (const auto& command : commands) {
        if (args[0] != command->name())
            continue;
        try {
            return command->run(std::vector<std::string>(args.begin() + 1, args.end()), out, err);
        } catch (const TVErrDetails&) {
            err << "tvdb " << command->name() << ": failed on an internal error\n";
        } catch (const std::exception& fault) {
            err << "tvdb " << command->name() << ": " << fault.what() << "\n";
        }
        return TVDBCommand::C_ExitInternal;
    }
    err << "tvdb: unknown command '" << args[0] << "' (see tvdb --help)\n";
    return TVDBCommand::C_ExitUsage;
}
