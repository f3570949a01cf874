#ifndef TVDBSYNC_H
#define TVDBSYNC_H

// TVDBSync: keeping a database and its shared copies (TVExternalDB links)
// together. There is no server and no log of operations: each device
// writes a whole export of its database to its own file in the shared
// place (push), and reads the other devices' files (pull). All decisions
// are made on the reading side from the times the two files carry:
// ignore the other file, replace this database by it (only with nothing
// unsaved here, and only when the peer holds everything we wrote), or
// merge it object by object, the later modify time winning. Objects are
// the same object on every device by their create id and create time; a
// deletion spreads only by a replace.
//
// What each step logs goes to the database service's log (TVLog, under
// TVDatabase::C_DatabaseService), which the user can read.
//
// A view of one database, made where it is needed; the database must
// outlive it. Runs on the database's thread; holds no lock while it works
// on objects (the cloud services take their own).

#include "LibDatabase/db/tvdatabase.h"

#include <string>

class TVExternalDB;

class TVDBSync
{
public:
    explicit TVDBSync(TVDatabase& db);

    // TVDatabase's link operations and questions; see tvdatabase.h.
    [[nodiscard]] int add_external(int type, const std::string& name, int mode,
                                   TVExternalDB*& out);
    bool is_syncing() const;
    bool needs_push() const;
    bool has_ext_data() const;
    int cloud_state() const;
    std::string merge_details() const;

    // Writes the database to every link (manual ones with
    // include_manual); a link that fails with a warning doesn't stop the
    // others, an error does.
    [[nodiscard]] int push_all(bool include_manual, bool force);
    // The whole export to one link, when it can take one (or with force).
    [[nodiscard]] int push(TVExternalDB& link, bool force);
    // Reads the links in order until one does more than find nothing new;
    // a replace only with can_replace.
    [[nodiscard]] int pull_all(bool can_replace);
    // One link: TVErrC_ok (nothing to read, or merged, or ignored),
    // TVErrC_okFileChanged (replaced: every link object was rebuilt),
    // TVErrC_okFileNotChanged (nothing new), or a failure. details gets
    // what the user is told.
    [[nodiscard]] int pull(TVExternalDB& link, bool can_replace, std::string& details);

private:
    // Takes other's objects in: new ones, later versions, collisions.
    [[nodiscard]] int merge(TVDatabase& other, std::string& details);
    // Some object here changed or came in since the links last got all of
    // this database, or, over restarts, changed after we last wrote to the
    // link or took its whole file (any object, when we did neither).
    bool holds_unwritten(const TVExternalDB& link) const;
    // Every live object here is in other, deleted or not, by its identity.
    bool holds_all_of_ours(const TVDatabase& other) const;
    void log(const std::string& text) const;

    TVDatabase& m_db;
    TVDatabase::TVDatabaseImpl* d;
};

#endif // TVDBSYNC_H
