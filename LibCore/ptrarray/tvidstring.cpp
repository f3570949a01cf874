#include "LibCore/ptrarray/tvidstring.h"
#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <ostream>

namespace {
const std::string C_NoName;
}

void TVIdString::add(const TVId& id, const std::string& text)
{
    m_entry.emplace_back(id, text);
}

void TVIdString::append(const TVIdString& other)
{
    // Copy first: other may be this list.
    std::vector<TVIdEntry> extra(other.m_entry);
    m_entry.insert(m_entry.end(), extra.begin(), extra.end());
}

TVId TVIdString::get_row_id(int row) const
{
    if (row < 0 || row >= size())
        return TVId::C_Empty;
    return m_entry[static_cast<size_t>(row)].get_id();
}

const std::string& TVIdString::get_row_name(int row) const
{
    if (row < 0 || row >= size())
        return C_NoName;
    return m_entry[static_cast<size_t>(row)].get_text();
}

int TVIdString::get_id_row(const TVId& id) const
{
    for (size_t i = 0; i < m_entry.size(); ++i)
        if (m_entry[i].get_id() == id)
            return static_cast<int>(i);
    return -1;
}

const std::string& TVIdString::get_id_name(const TVId& id) const
{
    return get_row_name(get_id_row(id));
}

TVId TVIdString::get_name_id(const std::string& text) const
{
    for (const TVIdEntry& entry : m_entry)
        if (entry.get_text() == text)
            return entry.get_id();
    return TVId::C_Empty;
}

void TVIdString::sort()
{
    std::stable_sort(m_entry.begin(), m_entry.end());
}

void TVIdString::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVIdString\n";
    for (const TVIdEntry& entry : m_entry)
        entry.dump(out, indent + 1);
}
