#include "LibCore/ptrarray/tvtagvalue.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

void TVTagValue::set(const std::string& tag, const std::string& value)
{
    m_value[tag] = value;
}

std::string TVTagValue::get_string(const std::string& tag, const std::string& defaultValue) const
{
    auto it = m_value.find(tag);
    return it == m_value.end() ? defaultValue : it->second;
}

int TVTagValue::get_int(const std::string& tag, int defaultValue) const
{
    auto it = m_value.find(tag);
    return it == m_value.end() ? defaultValue : tv_string_to_int(it->second, defaultValue);
}

double TVTagValue::get_double(const std::string& tag, double defaultValue) const
{
    auto it = m_value.find(tag);
    return it == m_value.end() ? defaultValue : tv_string_to_double(it->second, defaultValue);
}

void TVTagValue::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVTagValue\n";
    for (const auto& entry : m_value)
        out << pad << "    " << entry.first << " = " << entry.second << '\n';
}
