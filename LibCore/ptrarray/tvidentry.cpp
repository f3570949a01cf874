#include "LibCore/ptrarray/tvidentry.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

TVIdEntry::TVIdEntry(const TVId& id, const std::string& text) : m_id(id), m_text(text)
{
}

bool TVIdEntry::operator==(const TVIdEntry& other) const
{
    return m_id == other.m_id && m_text == other.m_text;
}

void TVIdEntry::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVIdEntry\n" << pad << "    m_text = " << m_text << '\n';
    m_id.dump(out, indent + 1);
}
