#include "LibObject/object/tvobjectindexentry.h"

#include <algorithm>

TVObjectIndexEntry::TVObjectIndexEntry(int id, const std::string& name, TVObjectCreateFn createFn)
    : m_id(id), m_name(name), m_createFn(createFn)
{
}

void TVObjectIndexEntry::print(FILE* out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    std::fprintf(out, "%sTVObjectIndexEntry: %d %s%s\n", pad.c_str(), m_id, m_name.c_str(),
                 m_createFn == nullptr ? " (no factory)" : "");
}
