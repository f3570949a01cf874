#include "LibGui/base/tvnotifylist.h"

#include <algorithm>
#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdateutils.h"

TVNotifyList::TVNotifyList() = default;

TVNotifyList::~TVNotifyList() = default;

int TVNotifyList::initialise()
{
    TV_PASS_ON(setup_notifications());
    read_settings();
    return TVErrC_ok;
}

int TVNotifyList::setup_notifications()
{
    return TVErrC_ok;
}

int TVNotifyList::read_settings()
{
    // Without parameters (a tool, a test) the defaults stand.
    if (!TVParam::has_object())
        return TVErrC_ok;
    for (const auto& scheme : m_schemes) {
        const std::string value = tvparam()->get_system_value(scheme->scheme_name());
        if (!value.empty())
            scheme->set_response(tv_string_to_int(value, scheme->get_response()));
    }
    m_usetray = tv_string_to_bool(tvparam()->get_system_value(C_SystemTraySetting), true);
    return TVErrC_ok;
}

int TVNotifyList::write_settings() const
{
    try {
        for (const auto& scheme : m_schemes)
            TV_PASS_ON(tvparam()->set_system_value(scheme->scheme_name(), tv_int_to_string(scheme->get_response())));
        TV_PASS_ON(tvparam()->set_system_value(C_SystemTraySetting, tv_bool_to_string(m_usetray)));
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

void TVNotifyList::drop_passed_snoozes()
{
    const TVDate now = TVDateUtils::unow();
    // From the end, so that erasing keeps the indices still to visit.
    for (size_t i = m_snoozed.size(); i-- > 0;)
        if (!(now < m_snoozed[i].get_schedule()))
            m_snoozed.erase(m_snoozed.begin() + static_cast<std::ptrdiff_t>(i));
}

void TVNotifyList::add(const TVNotifyItem& item)
{
    drop_passed_snoozes();
    for (const TVNotifyItem& snoozed : m_snoozed)
        if (snoozed.get_message() == item.get_message() && snoozed.get_object_id() == item.get_object_id())
            return;

    const TVNotifyScheme* scheme = get_scheme_id(item.get_scheme());
    if (scheme == nullptr || !(scheme->get_badge() || scheme->get_popup()))
        return;

    for (Entry& entry : m_items)
        if (entry.m_item == item) {
            entry.m_stale = false;
            return;
        }

    // The list is sorted highest priority first, so the items not below
    // the new one form a prefix; it goes after them.
    const auto at = std::partition_point(m_items.begin(), m_items.end(), [&item](const Entry& entry) {
        return TVNotifyItem::compare_priority(item, entry.m_item);
    });
    m_items.insert(at, Entry{item, false});
    m_new.push_back(item);
}

void TVNotifyList::sweep_stale()
{
    for (auto it = m_items.begin(); it != m_items.end();) {
        if (it->m_stale) {
            m_removed.push_back(it->m_item);
            it = m_items.erase(it);
        } else {
            ++it;
        }
    }
}

void TVNotifyList::update()
{
    drop_passed_snoozes();
    sweep_stale();
}

void TVNotifyList::reset()
{
    // Only marks: a reset with no rebuild after it (a window does one after
    // a change, before the next periodic update) must not take items away.
    for (Entry& entry : m_items)
        entry.m_stale = true;
}

void TVNotifyList::snooze(const std::string& message, const TVId& id, const TVDate& until)
{
    m_snoozed.emplace_back(message, id, 0, 0.0, until);
    for (auto it = m_items.begin(); it != m_items.end();) {
        if (it->m_item.get_object_id() == id) {
            m_removed.push_back(it->m_item);
            it = m_items.erase(it);
        } else {
            ++it;
        }
    }
}

std::unique_ptr<TVNotifyItem> TVNotifyList::pop_new()
{
    if (m_new.empty())
        return nullptr;
    auto item = std::make_unique<TVNotifyItem>(m_new.front());
    m_new.pop_front();
    return item;
}

std::unique_ptr<TVNotifyItem> TVNotifyList::pop_removed()
{
    if (m_removed.empty())
        return nullptr;
    auto item = std::make_unique<TVNotifyItem>(m_removed.front());
    m_removed.pop_front();
    return item;
}

int TVNotifyList::get_notify_state(std::string& text) const
{
    text.clear();
    int state = -1;
    for (const Entry& entry : m_items)
        if (entry.m_item.get_scheme() > state) {
            state = entry.m_item.get_scheme();
            text = entry.m_item.get_message();
        }
    if (m_items.size() > 1)
        text += "\nAnd " + std::to_string(m_items.size() - 1) + " more warnings.";
    return state;
}

int TVNotifyList::get_badge_count() const
{
    const TVDate now = TVDateUtils::unow();
    int count = 0;
    for (const Entry& entry : m_items) {
        const TVNotifyScheme* scheme = get_scheme_id(entry.m_item.get_scheme());
        const TVDate& schedule = entry.m_item.get_schedule();
        if (scheme != nullptr && scheme->get_badge() && (schedule.is_blank() || !(now < schedule)))
            ++count;
    }
    return count;
}

void TVNotifyList::add_scheme(TVNotifyScheme* scheme)
{
    if (scheme == nullptr)
        return;
    std::unique_ptr<TVNotifyScheme> owned(scheme);
    for (auto& known : m_schemes)
        if (known->get_id() == scheme->get_id()) {
            known = std::move(owned);
            return;
        }
    m_schemes.push_back(std::move(owned));
}

TVNotifyScheme* TVNotifyList::get_scheme_id(int id) const
{
    for (const auto& scheme : m_schemes)
        if (scheme->get_id() == id)
            return scheme.get();
    return nullptr;
}

TVNotifyScheme* TVNotifyList::get_scheme_no(int index) const
{
    if (index < 0 || index >= get_nschemes())
        return nullptr;
    return m_schemes[static_cast<size_t>(index)].get();
}

void TVNotifyList::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVNotifyList: " << m_items.size() << " items, " << m_new.size() << " new, " << m_removed.size()
        << " removed, " << m_snoozed.size() << " snoozed, usetray " << m_usetray << '\n';
    for (const Entry& entry : m_items) {
        if (entry.m_stale)
            out << pad << "  (stale)\n";
        entry.m_item.dump(out, indent + 1);
    }
    for (const TVNotifyItem& item : m_snoozed)
        item.dump(out, indent + 1);
    for (const auto& scheme : m_schemes)
        scheme->dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const TVNotifyList& list)
{
    list.dump(out, 0);
    return out;
}
