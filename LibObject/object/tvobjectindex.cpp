#include "LibObject/object/tvobjectindex.h"

#include <algorithm>

TVObjectIndex::TVObjectIndex() : m_entries(true)
{
}

TVObjectIndex::TVObjectIndex(const TVObjectIndex& other)
    : TVSingleton<TVObjectIndex>(other), m_entries(other.m_entries)
{
}

TVObjectIndex& TVObjectIndex::operator=(const TVObjectIndex& other)
{
    if (this != &other)
        m_entries = other.m_entries;
    return *this;
}

TVObjectIndex::~TVObjectIndex() = default;

void TVObjectIndex::print(FILE* out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    std::fprintf(out, "%sTVObjectIndex: %d classes\n", pad.c_str(), m_entries.size());
    for (const TVObjectIndexEntry* entry : m_entries)
        entry->print(out, indent + 1);
}

void TVObjectIndex::append(const std::string& name, TVObjectCreateFn createFn, int& id)
{
    if (const TVObjectIndexEntry* known = m_entries.find(name)) {
        id = known->get_id();
        return;
    }
    id = m_entries.size();
    auto* entry = new TVObjectIndexEntry(id, name, createFn);
    if (!m_entries.add(name, entry)) {
        // Only a name mapped to nothing gets here; keep the array and map in step.
        delete entry;
        id = -1;
    }
}

const TVObjectIndexEntry* TVObjectIndex::find_name(const std::string& name) const
{
    return m_entries.find(name);
}

const TVObjectIndexEntry* TVObjectIndex::find_id(int id) const
{
    if (id < 0 || id >= m_entries.size())
        return nullptr;
    return m_entries[id];
}

TVObjectIndex* tvclassindex()
{
    return TVObjectIndex::instance();
}
