#include "LibDatabase/db/tvdbmodelentry.h"

#include <cstring>
#include <ostream>

TVDBModelEntry::TVDBModelEntry(int id) : m_id(id) {}

std::string TVDBModelEntry::get_value(int column) const
{
    const auto it = m_values.find(column);
    return it == m_values.end() ? std::string() : it->second;
}

void TVDBModelEntry::set_value(int column, const std::string& value)
{
    m_values[column] = value;
}

void TVDBModelEntry::set_text_sort(const std::string& key)
{
    m_textSort = key;
}

void TVDBModelEntry::set_numeric_sort(double key)
{
    m_numericSort = key;
    m_useNumeric = true;
}

bool TVDBModelEntry::operator>(const TVDBModelEntry& other) const
{
    if (m_useNumeric)
        return m_numericSort > other.m_numericSort;
    const size_t shorter = std::min(m_textSort.size(), other.m_textSort.size());
    // memcmp compares as unsigned char, so "é" sorts after "z" on every platform.
    const int order = std::memcmp(m_textSort.data(), other.m_textSort.data(), shorter);
    if (order != 0)
        return order > 0;
    return m_textSort.size() > other.m_textSort.size();
}

void TVDBModelEntry::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(indent), ' ');
    out << pad << "TVDBModelEntry id " << m_id << " sort ";
    if (m_useNumeric)
        out << m_numericSort;
    else
        out << '"' << m_textSort << '"';
    out << "\n";
    for (const auto& value : m_values)
        out << pad << "  " << value.first << ": " << value.second << "\n";
}

std::ostream& operator<<(std::ostream& out, const TVDBModelEntry& entry)
{
    entry.dump(out, 0);
    return out;
}
