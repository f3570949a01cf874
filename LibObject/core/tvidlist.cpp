#include "LibObject/core/tvidlist.h"
#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <ostream>
#include <string>

void TVIdList::add(const TVId& value)
{
    if (!is_marked(value))
        m_ids.push_back(value);
}

void TVIdList::insert(const TVId& value)
{
    if (!is_marked(value))
        m_ids.insert(m_ids.begin(), value);
}

void TVIdList::append(const TVIdList& other)
{
    // By index: other may be this list.
    const int count = other.size();
    for (int i = 0; i < count; ++i)
        add(other.m_ids[static_cast<size_t>(i)]);
}

bool TVIdList::is_marked(const TVId& value) const
{
    return std::any_of(m_ids.begin(), m_ids.end(),
                       [&value](const TVId& member) { return value.compare(member); });
}

void TVIdList::remove(int id, int seq, int group)
{
    for (size_t i = m_ids.size(); i-- > 0;) {
        const TVId& member = m_ids[i];
        if (member.get_id() != id)
            continue;
        if (seq >= 0 && member.get_seq() != seq)
            continue;
        if (group >= 0 && member.get_group() != group)
            continue;
        m_ids.erase(m_ids.begin() + static_cast<long>(i));
    }
}

int TVIdList::index_of(const TVId& value) const
{
    auto it = std::find(m_ids.begin(), m_ids.end(), value);
    return it == m_ids.end() ? -1 : static_cast<int>(it - m_ids.begin());
}

TVId TVIdList::first() const
{
    return m_ids.empty() ? TVId::C_Empty : m_ids.front();
}

int TVIdList::first_id() const
{
    return m_ids.empty() ? -1 : m_ids.front().get_id();
}

int TVIdList::first_sequence() const
{
    return sequence(0);
}

int TVIdList::sequence(int index) const
{
    return in_range(index) ? m_ids[static_cast<size_t>(index)].get_seq() : -1;
}

TVId TVIdList::operator[](int index) const
{
    return in_range(index) ? m_ids[static_cast<size_t>(index)] : TVId::C_Empty;
}

void TVIdList::replace(const TVId& value, int index)
{
    if (in_range(index))
        m_ids[static_cast<size_t>(index)] = value;
}

TVId TVIdList::pop()
{
    if (m_ids.empty())
        return TVId::C_Empty;
    TVId out = m_ids.front();
    m_ids.erase(m_ids.begin());
    return out;
}

std::vector<int> TVIdList::get_ids() const
{
    std::vector<int> out;
    out.reserve(m_ids.size());
    for (const TVId& member : m_ids)
        out.push_back(member.get_id());
    return out;
}

void TVIdList::set_ids(const std::vector<int>& ids)
{
    m_ids.clear();
    for (int id : ids)
        add(id, -1, -1);
}

void TVIdList::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVIdList (" << m_ids.size() << ")\n";
    for (const TVId& member : m_ids)
        member.dump(out, indent + 1);
}
