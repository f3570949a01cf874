#ifndef TVNOTIFYITEM_H
#define TVNOTIFYITEM_H

// TVNotifyItem: one thing that wants the user's attention, such as a due
// reminder. A plain value: the notification list copies items in and out.
//
// The id names what the item is about, so that selecting it can lead
// there; the scheme says how far it may push itself on the user; a higher
// priority sorts first. A blank schedule shows the item at once; a date
// holds it back until then (a scheduled reminder, or a snooze).

#include "LibDate/core/tvdate.h"
#include "LibObject/core/tvid.h"

#include <iosfwd>
#include <string>

class TVNotifyItem
{
public:
    TVNotifyItem();
    TVNotifyItem(const std::string& message, const TVId& id, int scheme, double priority,
                 const TVDate& schedule);
    TVNotifyItem(const TVNotifyItem&) = default;
    TVNotifyItem& operator=(const TVNotifyItem&) = default;
    virtual ~TVNotifyItem() = default;

    virtual void dump(std::ostream& out, int indent) const;
    bool operator==(const TVNotifyItem& other) const;
    bool operator!=(const TVNotifyItem& other) const { return !(*this == other); }

    const std::string& get_message() const { return m_message; }
    const TVId& get_object_id() const { return m_objectId; }
    int get_scheme() const { return m_scheme; }
    double get_priority() const { return m_priority; }
    const TVDate& get_schedule() const { return m_schedule; }
    void set_schedule(const TVDate& schedule) { m_schedule = schedule; }

    // Orderings for sorting: a's scheme is not below b's; a's priority is
    // not above b's.
    static bool compare_scheme(const TVNotifyItem& a, const TVNotifyItem& b);
    static bool compare_priority(const TVNotifyItem& a, const TVNotifyItem& b);

private:
    std::string m_message;
    TVId m_objectId;
    int m_scheme = 0;
    double m_priority = 0.0;
    TVDate m_schedule;
};

std::ostream& operator<<(std::ostream& out, const TVNotifyItem& item);

#endif // TVNOTIFYITEM_H
