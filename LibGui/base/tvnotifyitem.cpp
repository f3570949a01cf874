#include "LibGui/base/tvnotifyitem.h"
#include "LibCore/log/tvdump.h"

#include <ostream>

TVNotifyItem::TVNotifyItem() : m_objectId(-1, -1, -1), m_schedule(TVDate::E_DateBlank)
{
}

TVNotifyItem::TVNotifyItem(const std::string& message, const TVId& id, int scheme,
                           double priority, const TVDate& schedule)
    : m_message(message), m_objectId(id), m_scheme(scheme), m_priority(priority),
      m_schedule(schedule)
{
}

void TVNotifyItem::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVNotifyItem: \"" << m_message << "\" id " << m_objectId << " scheme "
        << m_scheme << " priority " << m_priority << " schedule " << m_schedule << '\n';
}

bool TVNotifyItem::operator==(const TVNotifyItem& other) const
{
    return m_message == other.m_message && m_objectId == other.m_objectId &&
           m_scheme == other.m_scheme && m_priority == other.m_priority &&
           m_schedule == other.m_schedule;
}

bool TVNotifyItem::compare_scheme(const TVNotifyItem& a, const TVNotifyItem& b)
{
    return !(a.m_scheme < b.m_scheme);
}

bool TVNotifyItem::compare_priority(const TVNotifyItem& a, const TVNotifyItem& b)
{
    return !(a.m_priority > b.m_priority);
}

std::ostream& operator<<(std::ostream& out, const TVNotifyItem& item)
{
    item.dump(out, 0);
    return out;
}
