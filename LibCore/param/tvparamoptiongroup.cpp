#include "LibCore/param/tvparamoptiongroup.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

TVParamOptionGroup::TVParamOptionGroup() = default;

TVParamOptionGroup::TVParamOptionGroup(const std::string& name, const std::string& description)
    : TVParamBase(name, description, false, false)
{
}

TVParamOptionGroup::TVParamOptionGroup(const TVParamOptionGroup& other) : TVParamBase(other)
{
    for (const auto& option : other.m_options)
        m_options.push_back(std::make_unique<TVParamOption>(*option));
}

TVParamOptionGroup& TVParamOptionGroup::operator=(const TVParamOptionGroup& other)
{
    if (this != &other) {
        TVParamBase::operator=(other);
        m_options.clear();
        for (const auto& option : other.m_options)
            m_options.push_back(std::make_unique<TVParamOption>(*option));
    }
    return *this;
}

TVParamOptionGroup::~TVParamOptionGroup() = default;

std::unique_ptr<TVParamBase> TVParamOptionGroup::clone() const
{
    return std::make_unique<TVParamOptionGroup>(*this);
}

TVParamOption& TVParamOptionGroup::add_option(std::unique_ptr<TVParamOption> option)
{
    m_options.push_back(std::move(option));
    return *m_options.back();
}

TVParamOption* TVParamOptionGroup::find_option(const std::string& name) const
{
    for (const auto& option : m_options)
        if (option->match_name(name))
            return option.get();
    return nullptr;
}

void TVParamOptionGroup::display_usage(std::ostream& out) const
{
    out << "  " << get_name() << " options:\n";
    for (const auto& option : m_options) {
        if (option->get_hidden())
            continue;
        std::string line = usage_line("    " + option->get_switch(true), option->get_description());
        if (option->is_mandatory() && option->requires_value())
            line += " (required)";
        out << line << "\n";
    }
}

void TVParamOptionGroup::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamOptionGroup Object:\n";
    dump_base(out, indent);
    for (const auto& option : m_options)
        option->dump(out, indent + 1);
}
