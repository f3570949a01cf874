#include "LibDatabase/db/tvdbsync.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvcloudservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/application/tvappstatussetter.h"
#include "LibCore/log/tvlog.h"
#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdbreader.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {
constexpr const char* C_SyncingStatus = "Syncing...";
constexpr const char* C_LogDate = "%D %T";

std::string when(const TVDate& date)
{
    return date.to_string(C_LogDate);
}
} // namespace

TVDBSync::TVDBSync(TVDatabase& db) : m_db(db), d(db.d.get())
{
}

void TVDBSync::log(const std::string& text) const
{
    if (istvwarn(tvlog()->log(TVDatabase::C_DatabaseService, text)))
        get_tverror()->clear_last_error();
}

// ---- The links ---------------------------------------------------------------------

int TVDBSync::add_external(int type, const std::string& name, int mode, TVExternalDB*& out)
{
    try {
        out = new TVExternalDB(type, name);
        d->m_external.add(out);
        m_db.mark_changed(TVLOCATION, true);
        if (mode == 0)
            TV_PASS_ON(push(*out, false));
        else if (mode == 1) {
            // Nothing of the user's here yet: the shared data simply comes in.
            d->m_writeTime = TVDateUtils::blank_date();
            d->m_writeHost.clear();
            std::string details;
            TV_PASS_ON(pull(*out, false, details));
        } else {
            TV_PASS_ON(pull_all(false));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVDBSync::is_syncing() const
{
    for (TVExternalDB* link : d->m_external)
        if (link->download_in_progress() || link->upload_in_progress())
            return true;
    return false;
}

bool TVDBSync::needs_push() const
{
    // With no link there is nowhere to push to.
    const bool changed = !d->m_external.empty() && m_db.db_has_changed_since(d->m_lastFullWrite);
    if (!changed)
        return false;
    // Asked as the links have always been asked; a date is never later
    // than itself, so the change is what decides.
    for (TVExternalDB* link : d->m_external)
        if (link->should_push(link->get_lastpushtime()) && link->is_available())
            return true;
    return changed;
}

bool TVDBSync::has_ext_data() const
{
    for (TVExternalDB* link : d->m_external)
        if (link->has_data())
            return true;
    return false;
}

int TVDBSync::cloud_state() const
{
    if (d->m_external.empty())
        return 4;
    std::vector<int> states;
    for (TVExternalDB* link : d->m_external)
        states.push_back(link->get_state());
    for (int state : {1, 0, 3, 2})
        if (std::find(states.begin(), states.end(), state) != states.end())
            return state;
    return 4;
}

std::string TVDBSync::merge_details() const
{
    const std::string separator = "--------------\n";
    std::string text;
    for (TVExternalDB* link : d->m_external) {
        if (!text.empty())
            text += separator;
        text += link->get_details() + "\n" + link->debug_info();
    }
    return text + separator + tvlog()->read(TVDatabase::C_DatabaseService);
}

// ---- Pushing ------------------------------------------------------------------------

int TVDBSync::push_all(bool include_manual, bool force)
{
    try {
        for (int i = 0; i < d->m_external.size(); ++i) {
            TVExternalDB* link = d->m_external[i];
            if (link == nullptr)
                return tverror(TVErrC_Assert, TVLOCATION, "Assertion Failed: ext != nullptr");
            if (link->get_manual() && !include_manual)
                continue;
            const int result = push(*link, force);
            if (istverr(result))
                return tv_trail_return(result, TVLOCATION);
            // One link that can't be written doesn't keep the others from it.
            if (istvwarn(result))
                tvsysinfo_append(TVLOCATION, "pushing %s", link->get_name().c_str());
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSync::push(TVExternalDB& link, bool force)
{
    try {
        if (!link.can_push() && !force)
            return TVErrC_ok;
        log("---");
        log("Writing Linked DB: " + link.get_name());
        std::string data;
        TV_PASS_ON(m_db.export_db(std::string(), &data, false, std::string()));
        TV_PASS_ON(link.write(data));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Pulling ------------------------------------------------------------------------

int TVDBSync::pull_all(bool can_replace)
{
    try {
        d->m_syncState = 1;
        TVCloudInstance::refresh_cloud();
        for (int i = 0; i < d->m_external.size(); ++i) {
            TVExternalDB* link = d->m_external[i];
            const std::string name = link->get_name();
            std::string details;
            const int result = pull(*link, can_replace, details);
            if (istverr(result))
                return tv_trail_return(result, TVLOCATION);
            if (istvwarn(result)) {
                TVCloudService::reset_all();
                link->set_details(details);
                return TVErrC_ok;
            }
            if (result == TVErrC_okFileChanged) {
                // The links came in with the file: the one in hand is gone.
                for (TVExternalDB* again : d->m_external)
                    if (again->get_name() == name) {
                        again->mark_replace();
                        again->set_pulltime(d->m_writeTime, d->m_writeHost);
                        again->set_details(details);
                    }
                d->m_latestWrite.set_latest(d->m_writeTime);
                return TVErrC_ok;
            }
            if (result == TVErrC_okFileNotChanged)
                continue;
            link->set_details(details);
            return TVErrC_ok;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSync::pull(TVExternalDB& link, bool can_replace, std::string& details)
{
    try {
        if (!link.is_available())
            return TVErrC_ok;
        const std::string host = TVApplication::get_hostname();
        const std::string data = link.read();
        if (data.empty())
            return TVErrC_okFileNotChanged;
        log("---");
        log(link.get_name() + " has data.");
        std::unique_ptr<TVDatabase> other(m_db.create_verification_db(d->m_appType));
        int result = TVErrC_ok;
        try {
            result = TVDBReader(*other).read(data, false, false);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        if (istvwarn(result)) {
            // Half a file, or a damaged one: read all again at the next check.
            log("Could not read the data; it will be read again.");
            TVCloudService::reset_all();
            get_tverror()->clear_all();
            return TVErrC_ok;
        }
        const TVDatabase::TVDatabaseImpl& them = *other->d;
        if (!d->m_appType.empty() && them.m_appType != d->m_appType) {
            // Not this program's data under this link's name: nothing of it
            // may come in.
            log("The data is of another program (" + them.m_appType + "); not taken in.");
            return TVErrC_ok;
        }
        if (TVApplication::release_to_int(them.m_appRelease) >
            TVApplication::release_to_int(tvapplication()->get_release())) {
            log("The data was written by a newer release (" + them.m_appRelease +
                "); sync paused for this link.");
            link.set_dbwarning(true);
            return TVErrC_ok;
        }
        log("Our last push " + when(link.get_lastpushtime()));
        log("Our last merge from " + them.m_writeHost + " was at " +
            when(link.get_pulltime(them.m_writeHost)));
        log("They wrote DB on " + them.m_writeHost + " at " + when(them.m_writeTime));
        if (!link.should_pull(them.m_writeTime, link.get_lastpushtime(), them.m_writeHost)) {
            link.set_pulltime(them.m_writeTime, them.m_writeHost);
            return TVErrC_okFileNotChanged;
        }
        const TVAppStatusSetter status(C_SyncingStatus, true, TVDatabase::C_SaveStatusDelayMicro);
        log("Getting data...");
        TVDate theirCopyOfUs = TVDate::C_Blank;
        for (TVExternalDB* theirLink : them.m_external)
            if (theirLink->get_name() == link.get_name()) {
                theirCopyOfUs = theirLink->get_pulltime(host);
                break;
            }
        log("They merged data that we wrote at " + when(theirCopyOfUs));

        const TVDate& ourPush = link.get_lastpushtime();
        const TVDate& ourReplace = link.get_lastreptime();
        bool replace = false;
        if (can_replace) {
            if (ourPush.is_ok() && theirCopyOfUs.is_ok() && ourPush == theirCopyOfUs) {
                log("Replacing... They got our most recent write.");
                replace = true;
            } else if (!ourPush.is_ok()) {
                log("Replacing... We have not written yet.");
                replace = true;
            } else if (ourReplace.is_ok() && ourReplace > ourPush) {
                log("Our last replace " + when(ourReplace));
                log("Replacing... We replaced more recently than we wrote");
                replace = true;
            }
        }
        // Anything of ours the peer may lack rules a replace out: changes
        // since the last full write; a later write; anything changed or
        // merged in since the links last got all of this database; and,
        // over restarts, any object changed since we last wrote to the link
        // or took its whole file.
        if (m_db.db_has_changed_since(d->m_lastFullWrite) ||
            (d->m_latestWrite.is_ok() && !(d->m_latestWrite < them.m_writeTime)) ||
            (replace && holds_unwritten(link))) {
            log("Another DB was written more recently at " + when(d->m_latestWrite) +
                " so merging.");
            replace = false;
        }
        // A file cut between two objects reads as a whole one; the objects
        // it lacks would go with a replace. Deleted objects stay in a file
        // as tombstones, so a live one of ours that theirs lacks altogether
        // means we merge (at worst an object deleted long ago comes back).
        if (replace && !holds_all_of_ours(*other)) {
            log("Their data lacks objects of ours, so merging.");
            replace = false;
        }
        if (replace) {
            log("Replacing...");
            details += "Loaded new data file written at " + them.m_writeTime.to_string("%C") + ".\n";
            other.reset();
            result = m_db.replace_file(data, link.get_name());
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            if (result != TVErrC_ok) {
                TVCloudService::reset_all();
                return TVErrC_ok;
            }
            d->m_syncState = 2;
            TV_PASS_ON(m_db.pull_complete());
            d->m_linkWrite = d->m_lastFullWrite;
            return TVErrC_okFileChanged;
        }
        TV_PASS_ON(merge(*other, details));
        link.set_pulltime(them.m_writeTime, them.m_writeHost);
        d->m_latestWrite.set_latest(them.m_writeTime);
        m_db.set_last_structure_change(m_db.get_last_update());
        TV_PASS_ON(m_db.initialise(true));
        TV_PASS_ON(m_db.pull_complete());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

namespace {

// Which object an object is, on every device: its create id and create
// time. Its id is only where it sits in one copy. The moment alone, not
// its printed form: printing every create time was most of a merge's cost.
using Identity = std::tuple<int, int, int, int, int>;

Identity identity(const TVDBObject& object)
{
    const TVDate& made = object.get_create_time();
    return Identity(object.get_create_id(), made.get_year(), made.get_day_of_year(),
                    made.get_second_of_day(), made.get_microsecond());
}

} // namespace

bool TVDBSync::holds_all_of_ours(const TVDatabase& other) const
{
    std::set<Identity> theirs;
    for (const TVDBObject* object : other.d->m_objects)
        theirs.insert(identity(*object));
    for (const TVDBObject* object : d->m_objects)
        if (!object->is_deleted() && theirs.count(identity(*object)) == 0)
            return false;
    return true;
}

bool TVDBSync::holds_unwritten(const TVExternalDB& link) const
{
    // Changed or merged in since the links last got all of this database.
    for (const TVDBObject* object : d->m_objects)
        if (object->has_changed_since(d->m_linkWrite))
            return true;
    TVDate since = link.get_lastpushtime();
    if (link.get_lastreptime().is_ok() && (!since.is_ok() || since < link.get_lastreptime()))
        since = link.get_lastreptime();
    const auto later = [&since](const TVDBObject& object) {
        return !since.is_ok() || since < object.get_modify_time();
    };
    if (since.is_ok() && later(m_db))
        return true;
    for (const TVDBObject* object : d->m_objects)
        if (later(*object))
            return true;
    return false;
}

// The peer's scratch database is ours to take from: the objects that come
// in are moved over, not copied. A version read there is what a copy
// through the serial form would make here, the file version being ours.
//
// Two passes. The first decides, for each of their objects, what it is
// here, and moves any object of ours that sits on the id of a new one of
// theirs: while only our objects are here, so that the references that
// follow the move are ours alone, never those of an object of theirs
// that already came in. The second takes their objects in.
int TVDBSync::merge(TVDatabase& other, std::string& details)
{
    try {
        TVDatabase::TVDatabaseImpl& them = *other.d;
        log("Merging...");
        details += "Merged my data with data written at " + them.m_writeTime.to_string(C_LogDate) +
                   ".\n";
        d->m_syncState = 3;
        int added = 0;
        int updated = 0;
        int collisions = 0;
        const size_t count = static_cast<size_t>(them.m_objects.size());
        // What was taken is ours, however the merge ends: it leaves the
        // scratch database's array, which frees only the rest.
        std::vector<bool> taken(count, false);
        struct Handover {
            TVDatabase::TVDatabaseImpl& them;
            const std::vector<bool>& taken;
            bool done = false;
            ~Handover() { release(); }
            void release()
            {
                if (done)
                    return;
                done = true;
                TVPtrArray<TVDBObject> left(true);
                for (int i = 0; i < them.m_objects.size(); ++i)
                    if (!taken[static_cast<size_t>(i)])
                        left.add(them.m_objects[i]);
                them.m_objects.release_all();
                them.m_map.clear();
                for (TVDBObject* object : left)
                    them.m_objects.add(object);
                left.release_all();
            }
        } handover{them, taken};

        // First pass: each of theirs is new here (null) or a version of
        // one of ours.
        std::vector<TVDBObject*> mine(count, nullptr);
        std::map<Identity, TVDBObject*> byIdentity; // made at the first need
        bool raised = false;
        for (size_t i = 0; i < count; ++i) {
            const TVDBObject* theirs = them.m_objects[static_cast<int>(i)];
            TVDBObject* local = m_db.get_object_by_id(theirs->get_id());
            if (local != nullptr && identity(*local) == identity(*theirs)) {
                mine[i] = local;
                continue;
            }
            // Not at the same id here: ours may have been renumbered
            // before, when two devices gave one id to two objects.
            if (byIdentity.empty())
                for (TVDBObject* object : d->m_objects)
                    byIdentity.emplace(identity(*object), object);
            const auto found = byIdentity.find(identity(*theirs));
            if (found != byIdentity.end()) {
                mine[i] = found->second;
                continue;
            }
            ++(local == nullptr ? added : collisions);
            if (!raised) {
                // Ids at or above all of theirs stay free for their objects.
                for (const TVDBObject* object : them.m_objects)
                    d->m_uniqueId = std::max(d->m_uniqueId, object->get_id() + 1);
                d->m_uniqueId = std::max(d->m_uniqueId, them.m_uniqueId);
                raised = true;
            }
            // On a collision theirs keeps its id (the objects that come
            // with it may refer to it) and ours moves.
            if (local != nullptr)
                TV_PASS_ON(m_db.change_id(*local, m_db.allocate_id()));
        }

        // Second pass: take them in.
        std::unordered_map<const TVDBObject*, int> position; // made at the first need
        const auto take = [&](size_t index) {
            TVDBObject* object = them.m_objects[static_cast<int>(index)];
            taken[index] = true;
            object->set_parent_ptr(nullptr, &m_db);
            return object;
        };
        for (size_t i = 0; i < count; ++i) {
            const TVDBObject* theirs = them.m_objects[static_cast<int>(i)];
            TVDBObject* local = mine[i];
            if (local == nullptr) {
                const int id = theirs->get_id();
                TVDBObject* object = take(i);
                d->m_objects.add(object);
                d->m_map[id] = object;
                if (!position.empty())
                    position[object] = d->m_objects.size() - 1;
                // The stamps stay the other database's; the next write takes it.
                object->mark_update();
                TV_PASS_ON(m_db.update_vars(id, true));
                continue;
            }
            if (!(local->get_modify_time() < theirs->get_modify_time()))
                continue; // the same version, or ours is the later: it stands
            if (position.empty())
                for (int at = 0; at < d->m_objects.size(); ++at)
                    position[d->m_objects[at]] = at;
            const auto at = position.find(local);
            if (at == position.end())
                continue;
            TVDBObject* object = take(i);
            // Renumbered here: the new version takes our number for it.
            if (object->get_id() != local->get_id()) {
                const TVDate modified = object->get_modify_time();
                object->set_id(local->get_id(), object->get_create_time(), false);
                object->set_modify_time(modified);
            }
            // The old version may still be held by a window: it is kept
            // until the objects are next dropped.
            const int index = at->second;
            d->m_retired.add(d->m_objects.replace(index, object));
            position.erase(at);
            position[object] = index;
            d->m_map[object->get_id()] = object;
            object->mark_update();
            ++updated;
        }
        handover.release();
        d->m_journal.invalidate();
        if (m_db.get_modify_time() < other.get_modify_time()) {
            TV_PASS_ON(m_db.pull_db_data(other));
            ++updated;
        }
        m_db.resolve_containers();
        log("New Entries: " + std::to_string(added));
        log("Updated Entries: " + std::to_string(updated));
        log("Collisions: " + std::to_string(collisions));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
