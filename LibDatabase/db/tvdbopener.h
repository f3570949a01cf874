#ifndef TVDBOPENER_H
#define TVDBOPENER_H

// TVDBOpener: opens a file into a database and says what it found, so that
// a window only has to ask the user about it; and carries out the
// recoveries the user may then choose. No toolkit here: a test drives it
// as the load flow does.
//
// The outcomes of open, in the order they are found:
//   E_Missing         the file isn't there (unless creating)
//   E_Locked          another process holds its lock (steal not given)
//   E_Failed          the lock or the load failed otherwise; result says why
//   E_Leftovers       files of a session that ended badly stand beside it
//   E_DamagedPartial  its session file can't be opened
//   E_Damaged         it doesn't load; recovery names the file a recovery
//                     would come from (last known good, then the newest
//                     backup), empty when there is none
//   E_Opened          loaded (or already the database's file)
// Whatever the outcome, a file that doesn't load leaves the database
// unloaded, and the error stays pending for the window to show.
//
// The database and the lock (which may be null: no locking) must outlive
// the opener. Main thread only.

#include <string>

class TVDatabase;
class TVLockFile;

class TVDBOpener
{
public:
    enum E_Outcome {
        E_Opened,
        E_Missing,
        E_Locked,
        E_Failed,
        E_Leftovers,
        E_DamagedPartial,
        E_Damaged
    };

    struct Result {
        E_Outcome outcome = E_Opened;
        int result = 0;         // the error value of a failure
        std::string recovery;   // E_Damaged: where a recovery would come from
    };

    TVDBOpener(TVDatabase& db, TVLockFile* lock);

    // Locks file (taking a lock left behind only with steal) and loads it
    // (creating it, from template_file if given, with creating), keeping
    // and replaying its session file.
    Result open(const std::string& file, bool creating, const std::string& template_file,
                bool steal);

    // The user's answer to a damaged session: the session file goes (with
    // the changes since the last full save) and the main file loads.
    [[nodiscard]] int discard_session(const std::string& file, bool creating,
                                      const std::string& template_file);
    // The user's answer to the leftovers of a save a crash stopped: they
    // go, and the file loads with its session replayed. The session holds
    // every operation that finished: none is lost with the leftovers.
    [[nodiscard]] int discard_leftovers(const std::string& file, bool creating,
                                        const std::string& template_file);
    // To a damaged file: put the recovery in its place, the damaged file
    // kept as ".bak", and load it. TVErrC_FileNotExist when there is no
    // recovery.
    [[nodiscard]] int recover(const std::string& file);
    // To a damaged file the user gives up: it is kept as ".bak", and the
    // name is free for a new file.
    [[nodiscard]] int give_up(const std::string& file);

private:
    TVDatabase& m_db;
    TVLockFile* m_lock;
};

#endif // TVDBOPENER_H
