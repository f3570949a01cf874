#ifndef TVNOTIFYLIST_H
#define TVNOTIFYLIST_H

// TVNotifyList: the items that want the user's attention now, and the
// schemes that say how far each kind may go. No toolkit: TVNotifyListQt
// shows the list, taking what changed from two queues (pop_new,
// pop_removed).
//
// Rebuilding. The owner doesn't track which reasons ended; it rebuilds:
//     list.reset();               // every current item becomes stale
//     list.add(item) ...          // for each reason that still holds
//     list.update();              // stale items go to the removed queue
// An add of an item already present keeps it (it is not new again), so a
// rebuild that finds the same reasons changes nothing in the queues. A
// reset on its own removes nothing; the update after the adds does, so
// call update only once the adds are done.
//
// Snoozing holds back an item (message and object id) until a time; the
// time is judged against TVDateUtils::unow(), so tests set the clock.
//
// Main thread only.

#include <deque>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibGui/base/tvnotifyitem.h"
#include "LibGui/base/tvnotifyscheme.h"

class TVNotifyList
{
public:
    // Key of the "use the system tray" flag among the system values.
    static constexpr const char* C_SystemTraySetting = "NotifySystemTray";

    TVNotifyList();
    TVNotifyList(const TVNotifyList&) = delete;
    TVNotifyList& operator=(const TVNotifyList&) = delete;
    virtual ~TVNotifyList();

    virtual void dump(std::ostream& out, int indent) const;

    // The platform's set-up (setup_notifications), then read_settings.
    [[nodiscard]] virtual int initialise();
    // Each scheme's response (where stored) and the tray flag, default on,
    // from the system values. Never fails.
    int read_settings();
    // Stores each scheme's response and the tray flag as system values.
    [[nodiscard]] int write_settings() const;

    // Adds item unless it is snoozed, its scheme neither badges nor pops
    // up (or is unknown), or an equal item is present. The current list is
    // kept by priority, highest first; equal priorities in order of adding.
    void add(const TVNotifyItem& item);
    // Drops snoozes whose time has passed and queues stale items as removed.
    virtual void update();
    // Begins a rebuild (see above): every current item becomes stale.
    void reset();
    // Holds back items of message and id until that time, and removes the
    // current items of that object id (to the removed queue).
    void snooze(const std::string& message, const TVId& id, const TVDate& until);

    // The oldest new (removed) item, taken off its queue; null when empty.
    std::unique_ptr<TVNotifyItem> pop_new();
    std::unique_ptr<TVNotifyItem> pop_removed();

    // The highest scheme among the items, -1 when there are none. text is
    // the message of the first item at that scheme, with "\nAnd N more
    // warnings." when there are others; "" when there are none.
    int get_notify_state(std::string& text) const;

    int get_nitems() const { return static_cast<int>(m_items.size()); }
    // In list order; index must be in range.
    const TVNotifyItem& get_item(int index) const { return m_items[static_cast<size_t>(index)].m_item; }
    // The items whose scheme badges and whose time has come: the number on
    // the application's icon.
    int get_badge_count() const;
    int get_nsnoozed() const { return static_cast<int>(m_snoozed.size()); }

    // Takes ownership. A scheme of an id already known replaces it.
    void add_scheme(TVNotifyScheme* scheme);
    // The scheme of that id; null if none.
    TVNotifyScheme* get_scheme_id(int id) const;
    int get_nschemes() const { return static_cast<int>(m_schemes.size()); }
    // By index in order of adding; null out of range.
    TVNotifyScheme* get_scheme_no(int index) const;

    // Whether this platform has a system tray; none without a toolkit.
    virtual bool systray_available() const { return false; }
    // The user's choice to use the tray where there is one.
    bool get_usetray() const { return m_usetray; }
    void set_usetray(bool usetray) { m_usetray = usetray; }

protected:
    // The platform's notification set-up; nothing by default.
    virtual int setup_notifications();

private:
    struct Entry {
        TVNotifyItem m_item;
        bool m_stale;
    };

    void drop_passed_snoozes();
    void sweep_stale();

    std::vector<Entry> m_items;
    std::deque<TVNotifyItem> m_new;
    std::deque<TVNotifyItem> m_removed;
    std::vector<std::unique_ptr<TVNotifyScheme>> m_schemes;
    std::vector<TVNotifyItem> m_snoozed;
    bool m_usetray = true;
};

std::ostream& operator<<(std::ostream& out, const TVNotifyList& list);

#endif // TVNOTIFYLIST_H
