#include "LibDatabase/db/tvdatabasehost.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvupdatecounter.h"

#include <mutex>
#include <set>

namespace {
const TVDatabaseHost s_host;
const bool s_installed = (TVDBHost::install(&s_host), true);

std::mutex& live_lock()
{
    static std::mutex lock;
    return lock;
}

std::set<const TVDatabase*>& live_databases()
{
    static std::set<const TVDatabase*> live;
    return live;
}
} // namespace

const TVDatabaseHost* TVDatabaseHost::instance()
{
    return &s_host;
}

void TVDatabaseHost::born(const TVDatabase* db)
{
    const std::lock_guard<std::mutex> lock(live_lock());
    live_databases().insert(db);
}

void TVDatabaseHost::gone(const TVDatabase* db)
{
    const std::lock_guard<std::mutex> lock(live_lock());
    live_databases().erase(db);
}

long TVDatabaseHost::last_db_update(const TVDatabase&) const
{
    return TVUpdateCounter::get_counter(false);
}

long TVDatabaseHost::last_structure_change(const TVDatabase& db) const
{
    return db.get_last_structure_change();
}

void TVDatabaseHost::record_structure_change(TVDatabase& db, long counter) const
{
    db.set_last_structure_change(counter);
}

int TVDatabaseHost::appfileversion(const TVDatabase& db) const
{
    return db.get_appfileversion();
}

void TVDatabaseHost::object_updated(const TVDatabase* db, int id) const
{
    const std::lock_guard<std::mutex> lock(live_lock());
    if (live_databases().count(db) != 0)
        const_cast<TVDatabase*>(db)->note_changed(id);
}

const TVObjectSpec* TVDatabaseHost::objectspec(const TVDatabase& db, int id) const
{
    return db.get_objectspec_by_id(id);
}

TVDBObject* TVDatabaseHost::database_object(TVDatabase& db) const
{
    return &db;
}
