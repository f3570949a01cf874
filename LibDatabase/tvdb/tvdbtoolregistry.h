#ifndef TVDBTOOLREGISTRY_H
#define TVDBTOOLREGISTRY_H

// TVDBToolRegistry: what a program tells the tvdb tool about itself. The
// tool knows the framework's commands and the engine's classes; a program
// whose files it should open as the program does registers, before main:
//
//   - the application type its files carry, with the program's name and
//     company, which name the folders of its side files (so a file of that
//     type needs no --app);
//   - the class of its database; the program's classes must be linked into
//     the tool whole (tv_link_registered_classes), and the tool refuses to
//     run when the class index doesn't know this one;
//   - commands of its own, listed after the framework's.
//
// A program registers with one file-scope Registration in a source of the
// tool's executable, as a class registers with TVObjectPreReg:
//
//   std::unique_ptr<TVDBCommand> make_summary() { return std::make_unique<DrillSummary>(); }
//   const TVDBToolRegistry::Registration s_drill(
//       {"Drill", "DrillProgram", "Drills", "DrillDB"}, {make_summary});
//
// The registry is filled before main and only read after it; there is no
// locking. A registry made by hand (a test's) is independent of instance().

#include <memory>
#include <string>
#include <vector>

class TVDBCommand;

class TVDBToolRegistry
{
public:
    // What the tool knows of one program's files.
    struct Program
    {
        std::string m_appType;       // the type the database record names
        std::string m_application;   // the program's name and company, which
        std::string m_company;       // name the folders of its side files
        std::string m_databaseClass; // its database class, linked in whole
    };
    // Makes a fresh command each time the tool runs; the caller owns it.
    using CommandMaker = std::unique_ptr<TVDBCommand> (*)();

    // Adds a program and its commands to instance() when constructed.
    class Registration
    {
    public:
        explicit Registration(const Program& program, const std::vector<CommandMaker>& commands = {});
    };

    TVDBToolRegistry() = default;
    TVDBToolRegistry(const TVDBToolRegistry&) = delete;
    TVDBToolRegistry& operator=(const TVDBToolRegistry&) = delete;

    // The registry of this process, which the tool's main runs with.
    static TVDBToolRegistry& instance();

    // A second program of the same application type replaces the first.
    void add_program(const Program& program);
    void add_command(CommandMaker make);

    // The program whose files carry appType; null when none registered it
    // (then a file's side files lie in the folders --app names, or those of
    // a program without a name).
    const Program* find_program(const std::string& appType) const;
    // The database classes of registered programs that the class index
    // doesn't know: those programs' classes were not linked in.
    std::vector<std::string> unlinked_classes() const;
    // Fresh commands of the programs, in the order they were registered.
    std::vector<std::unique_ptr<TVDBCommand>> make_commands() const;

private:
    std::vector<Program> m_programs;
    std::vector<CommandMaker> m_commands;
};

#endif // TVDBTOOLREGISTRY_H
