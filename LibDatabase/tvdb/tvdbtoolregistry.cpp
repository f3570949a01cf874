#include "LibDatabase/tvdb/tvdbtoolregistry.h"

#include "LibDatabase/tvdb/tvdbcommand.h"
#include "LibObject/object/tvobjectindex.h"

#include <algorithm>

TVDBToolRegistry::Registration::Registration(const Program& program,
                                             const std::vector<CommandMaker>& commands)
{
    TVDBToolRegistry& registry = instance();
    registry.add_program(program);
    for (CommandMaker make : commands)
        registry.add_command(make);
}

TVDBToolRegistry& TVDBToolRegistry::instance()
{
    // Made on first use, so a Registration may run before anything else of
    // this file is initialised.
    static TVDBToolRegistry registry;
    return registry;
}

void TVDBToolRegistry::add_program(const Program& program)
{
    const auto same = std::find_if(m_programs.begin(), m_programs.end(), [&](const Program& known) {
        return known.m_appType == program.m_appType;
    });
    if (same != m_programs.end())
        *same = program;
    else
        m_programs.push_back(program);
}

void TVDBToolRegistry::add_command(CommandMaker make)
{
    if (make != nullptr)
        m_commands.push_back(make);
}

const TVDBToolRegistry::Program* TVDBToolRegistry::find_program(const std::string& appType) const
{
    for (const Program& program : m_programs)
        if (!appType.empty() && program.m_appType == appType)
            return &program;
    return nullptr;
}

std::vector<std::string> TVDBToolRegistry::unlinked_classes() const
{
    std::vector<std::string> missing;
    for (const Program& program : m_programs)
        if (tvclassindex()->find_name(program.m_databaseClass) == nullptr)
            missing.push_back(program.m_databaseClass);
    return missing;
}

std::vector<std::unique_ptr<TVDBCommand>> TVDBToolRegistry::make_commands() const
{
    std::vector<std::unique_ptr<TVDBCommand>> commands;
    for (CommandMaker make : m_commands)
        commands.push_back(make());
    return commands;
}
