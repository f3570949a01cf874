#ifndef TVDATABASEHOST_H
#define TVDATABASEHOST_H

// TVDatabaseHost: how the objects below the database reach it (TVDBHost),
// installed for the process when this layer is linked. An object stamped
// tells its database, so that the change journal knows what to write; the
// journal can be trusted only while this host is the one installed (a test
// may install its own).
//
// The databases alive are registered here: a copy of an object may
// outlive its database and still be stamped, and must not reach it then.
// Any thread may stamp; the registry is guarded.

#include "LibDatabase/db/tvdbhost.h"

class TVDatabaseHost : public TVDBHost
{
public:
    static const TVDatabaseHost* instance();
    static void born(const TVDatabase* db);
    static void gone(const TVDatabase* db);

    // The change question comes from TVUpdateChecker's thread, so it is
    // answered by the process-wide counter, which is atomic: with one
    // database per process it is the database's own clock, at worst early
    // by a tick.
    long last_db_update(const TVDatabase& db) const override;
    long last_structure_change(const TVDatabase& db) const override;
    void record_structure_change(TVDatabase& db, long counter) const override;
    int appfileversion(const TVDatabase& db) const override;
    void object_updated(const TVDatabase* db, int id) const override;
    const TVObjectSpec* objectspec(const TVDatabase& db, int id) const override;
    TVDBObject* database_object(TVDatabase& db) const override;
};

#endif // TVDATABASEHOST_H
