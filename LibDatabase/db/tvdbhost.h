#ifndef TVDBHOST_H
#define TVDBHOST_H

// TVDBHost: what the objects of this layer ask of their database.
//
// TVDatabase lives in the layer above (it is a TVDBObject itself), so
// TVDBObject and TVUpdateChecker hold only a TVDatabase* and can't call
// it. The database layer derives one host from this class and installs it
// once, from a static initialiser of its own, before any database exists:
//
//     namespace {
//     class Host : public TVDBHost { ... answers from TVDatabase ... };
//     const Host s_host;
//     const bool s_installed = (TVDBHost::install(&s_host), true);
//     }
//
// Without a host the questions have neutral answers (see each caller), so
// the objects work on their own, as in a free object or a test.
//
// last_db_update and last_structure_change are asked from another thread
// by TVUpdateChecker; the host must answer them without the main thread's
// help (the update counters are atomics).

class TVDatabase;
class TVDBObject;
class TVObjectSpec;

class TVDBHost
{
public:
    TVDBHost() = default;
    TVDBHost(const TVDBHost&) = delete;
    TVDBHost& operator=(const TVDBHost&) = delete;
    virtual ~TVDBHost() = default;

    // The highest update counter of the database object and its objects.
    virtual long last_db_update(const TVDatabase& db) const = 0;
    // The counter recorded by the last structure change.
    virtual long last_structure_change(const TVDatabase& db) const = 0;
    // An object's change altered what lists show; counter is its stamp.
    virtual void record_structure_change(TVDatabase& db, long counter) const = 0;
    // The application's file version that the database reads with.
    virtual int appfileversion(const TVDatabase& db) const = 0;
    // The object of that id, which names db as its database, was stamped
    // (mark_update). db may be gone (a copy outlived it): the host checks
    // before it asks it anything.
    virtual void object_updated(const TVDatabase* db, int id) const = 0;
    // The spec of that id in db; null when there is none (and here).
    virtual const TVObjectSpec* objectspec(const TVDatabase& db, int id) const;
    // db as the object of its own file, above the top-level objects; null here.
    virtual TVDBObject* database_object(TVDatabase& db) const;

    // Not owned; it must outlive every database. Null uninstalls.
    static void install(const TVDBHost* host);
    // Null when none is installed.
    static const TVDBHost* installed();
};

#endif // TVDBHOST_H
