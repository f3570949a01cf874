#include "LibDatabase/db/tvdbchecker.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/db/tvupdatecounter.h"
#include "LibDatabase/db/tvvariable.h"

#include <algorithm>
#include <ostream>

const char* const TVDBChecker::C_NewerVersionMessage =
    "Cloud sync paused - Data from newer app version - Please update to latest app.";

namespace {

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

} // namespace

void TVDBChecker::periodic_check(long seconds, bool force, long now)
{
    if (m_db == nullptr)
        return;
    if (!force &&
        (now - m_lastCleanTime < seconds || !m_db->db_has_changed_since(m_lastCleanCounter)))
        return;
    run_checks();
    if (m_items.empty()) {
        m_lastCleanTime = now;
        m_lastCleanCounter = TVUpdateCounter::get_counter(false);
    }
}

void TVDBChecker::force_full_check()
{
    m_lastCleanTime = 0;
    m_lastCleanCounter = 0;
}

void TVDBChecker::run_checks()
{
    if (m_db == nullptr)
        return;
    for (int code : {TVDatabase::TVErrC_ExtraVariables, TVDatabase::TVErrC_InvalidChild,
                     TVDatabase::TVErrC_UnfilledVariables, TVDatabase::TVErrC_NewerAppVersion})
        clear_error(code);
    for (int i = 0; i < m_db->get_nexternals(); ++i)
        if (m_db->get_external_no(i)->get_dbwarning())
            record_error(*m_db, TVDatabase::TVErrC_NewerAppVersion, C_NewerVersionMessage,
                         C_NewerVersionMessage);
    for (int i = 0; i < m_db->get_nobjects(); ++i) {
        const TVDBObject* object = m_db->get_object_by_index(i);
        if (object->is_deleted() || object->get_last_update() <= m_lastCleanCounter)
            continue;
        check_object(*object);
    }
}

void TVDBChecker::check_object(const TVDBObject& object)
{
    const int id = object.get_id();
    std::vector<std::string> names;
    extra_variables(id, names);
    if (!names.empty())
        record_error(object, TVDatabase::TVErrC_ExtraVariables, "Extra variables",
                     "This entry has the following additional variables: " + joined(names) +
                         ".   You will need to edit the object and remove them.");
    if (is_bastard(id))
        record_error(object, TVDatabase::TVErrC_InvalidChild, "Not valid child",
                     "This child entry (Name:" + object.get_member_tag() +
                         ") is not in the list of valid child names for the parent." +
                         "   It will need to be moved or change type.");
    // Under edit the user is filling them in now.
    if (object.is_edited())
        return;
    names.clear();
    unfilled_vars(id, names);
    if (!names.empty())
        record_error(object, TVDatabase::TVErrC_UnfilledVariables, "Unfilled variables",
                     "This entry has the following unfilled variables: " + joined(names) +
                         ".   You will need to edit the object and supply a value.");
}

void TVDBChecker::record_error(const TVDBObject& object, int code,
                               const std::string& short_message, const std::string& message)
{
    m_items.push_back(
        std::make_unique<TVDBCheckItem>(object.get_id(), code, short_message, message));
}

void TVDBChecker::clear_error(int code)
{
    for (size_t i = m_items.size(); i-- > 0;)
        if (code == -1 || m_items[i]->get_error_code() == code)
            m_items.erase(m_items.begin() + static_cast<long>(i));
}

void TVDBChecker::upload(const TVDBChecker& other)
{
    for (const auto& item : other.m_items)
        m_items.push_back(std::make_unique<TVDBCheckItem>(*item));
}

void TVDBChecker::extra_variables(int id, std::vector<std::string>& names) const
{
    names = m_db != nullptr ? m_db->extra_variables(id) : std::vector<std::string>();
}

void TVDBChecker::unfilled_vars(int id, std::vector<std::string>& names) const
{
    names = m_db != nullptr ? m_db->unfilled_vars(id) : std::vector<std::string>();
}

bool TVDBChecker::is_bastard(int id) const
{
    return m_db != nullptr && m_db->is_bastard(id);
}

bool TVDBChecker::remove_extra_vars(int id)
{
    if (m_db == nullptr)
        return false;
    TVDBObject* object = m_db->get_object_by_id(id);
    if (object == nullptr)
        return false;
    bool removed = false;
    for (const std::string& name : m_db->extra_variables(id))
        for (int i = object->get_nvariables(); i-- > 0;)
            if (object->get_var_by_index(i, false)->get_tag() == name) {
                removed = object->remove_var_by_index(i) || removed;
                break;
            }
    if (removed)
        object->mark_changed(TVLOCATION, true);
    return removed;
}

const TVDBCheckItem* TVDBChecker::get_item_by_index(int index) const
{
    return index >= 0 && index < get_nitems() ? m_items[static_cast<size_t>(index)].get()
                                              : nullptr;
}

bool TVDBChecker::has_error(int id) const
{
    return std::any_of(m_items.begin(), m_items.end(),
                       [id](const auto& item) { return item->get_id() == id; });
}

std::string TVDBChecker::object_results(int id) const
{
    std::string text;
    for (const auto& item : m_items)
        if (item->get_id() == id)
            text += item->get_message() + "\n";
    return text;
}

void TVDBChecker::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent), ' ') << "TVDBChecker " << m_items.size()
        << " items, clean at " << m_lastCleanTime << "\n";
    for (const auto& item : m_items)
        item->dump(out, indent + 2);
}
