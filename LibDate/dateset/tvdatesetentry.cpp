#include "LibDate/dateset/tvdatesetentry.h"

#include <istream>
#include <ostream>
#include <string>

namespace {

const char C_TypeMark = ';';

} // namespace

bool TVDateSetEntry::operator==(const TVDateSetEntry& other) const
{
    return m_slot == other.m_slot && m_type == other.m_type;
}

void TVDateSetEntry::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ')
        << "TVDateSetEntry type " << m_type << "\n";
    m_slot.dump(out, indent + 1);
}

bool compare_tvdatesetentry(const TVDateSetEntry& a, const TVDateSetEntry& b)
{
    if (compare_tvdateslots(a.m_slot, b.m_slot))
        return true;
    if (compare_tvdateslots(b.m_slot, a.m_slot))
        return false;
    return a.m_type < b.m_type;
}

std::ostream& operator<<(std::ostream& out, const TVDateSetEntry& entry)
{
    return out << entry.m_slot << C_TypeMark << entry.m_type;
}

std::istream& operator>>(std::istream& in, TVDateSetEntry& entry)
{
    entry.m_type = 0;
    in >> entry.m_slot;
    if (!in.fail() && in.peek() == C_TypeMark) {
        in.get();
        in >> entry.m_type;
    }
    return in;
}
