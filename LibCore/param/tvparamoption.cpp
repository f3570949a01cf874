#include "LibCore/param/tvparamoption.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

TVParamOption::TVParamOption() : m_requiresValue(false) {}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             bool requiresValue, bool mandatory, bool multipleValues)
    : TVParamBase(name, description, mandatory, multipleValues), m_altName(altName), m_requiresValue(requiresValue)
{
}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             bool* variable)
    : TVParamBase(name, description, false, false), m_altName(altName), m_requiresValue(false)
{
    bind(variable);
}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             std::string* variable, bool mandatory)
    : TVParamBase(name, description, mandatory, false), m_altName(altName), m_requiresValue(true)
{
    bind(variable);
}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             int* variable, bool mandatory)
    : TVParamBase(name, description, mandatory, false), m_altName(altName), m_requiresValue(true)
{
    bind(variable);
}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             long* variable, bool mandatory)
    : TVParamBase(name, description, mandatory, false), m_altName(altName), m_requiresValue(true)
{
    bind(variable);
}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             double* variable, bool mandatory)
    : TVParamBase(name, description, mandatory, false), m_altName(altName), m_requiresValue(true)
{
    bind(variable);
}

TVParamOption::TVParamOption(const std::string& name, const std::string& altName, const std::string& description,
                             std::vector<std::string>* variable, bool mandatory)
    : TVParamBase(name, description, mandatory, true), m_altName(altName), m_requiresValue(true)
{
    bind(variable);
}

TVParamOption::TVParamOption(const TVParamOption& other) = default;
TVParamOption& TVParamOption::operator=(const TVParamOption& other) = default;
TVParamOption::~TVParamOption() = default;

std::unique_ptr<TVParamBase> TVParamOption::clone() const
{
    return std::make_unique<TVParamOption>(*this);
}

std::string TVParamOption::switch_form(const std::string& name)
{
    return (name.size() == 1 ? "-" : "--") + name;
}

bool TVParamOption::match_cmdline(const std::string& arg) const
{
    if (!get_name().empty() && arg == switch_form(get_name()))
        return true;
    return !m_altName.empty() && arg == switch_form(m_altName);
}

bool TVParamOption::match_name(const std::string& name) const
{
    if (name.empty())
        return false;
    return name == get_name() || name == m_altName;
}

std::string TVParamOption::get_switch(bool withValue) const
{
    std::string text;
    if (!get_name().empty())
        text = switch_form(get_name());
    if (!m_altName.empty())
        text += (text.empty() ? "" : "|") + switch_form(m_altName);
    if (withValue && m_requiresValue)
        text += " ARG";
    return text;
}

void TVParamOption::dump_option(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    dump_base(out, indent);
    out << pad << " altName = " << m_altName << "\n";
    out << pad << " requiresValue = " << m_requiresValue << "\n";
}

void TVParamOption::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVParamOption Object:\n";
    dump_option(out, indent);
}
