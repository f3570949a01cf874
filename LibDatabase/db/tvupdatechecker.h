#ifndef TVUPDATECHECKER_H
#define TVUPDATECHECKER_H

// TVUpdateChecker: lets a periodic task, on any thread, ask whether its
// database has given it work since it last acted.
//
// The one object of the engine meant to be asked from another thread:
// every operation holds the checker's own mutex. It reads the database's
// counters through the installed TVDBHost (tvdbhost.h); with no database
// or no host, nothing is ever required. The database is not owned and must
// outlive the checker's use.
//
// Time is whole seconds of TVDateUtils' clock, so a test can hold it.

#include "LibComms/thread/tvmutex.h"

#include <iosfwd>

class TVDatabase;

class TVUpdateChecker
{
public:
    enum E_Action {
        E_ActionOnChange = 0,    // any change of data
        E_ActionOnStructure = 1, // a change of what lists show
        E_ActionOnRequest = 2,   // only after mark_action()
    };

    TVUpdateChecker();
    TVUpdateChecker(const TVUpdateChecker&) = delete;
    TVUpdateChecker& operator=(const TVUpdateChecker&) = delete;
    virtual ~TVUpdateChecker() = default;

    // Forgets what was seen. The time-out (seconds, 0 for none) counts from
    // now.
    void initialise(TVDatabase* db, E_Action action, long timeout);
    void set_timeout(int seconds);
    // Forces the next do_action to act, whatever the mode.
    void mark_action();
    // Whether the time-out has run out or the mode's counter moved past the
    // value seen at the last action.
    bool action_required();
    // As action_required; when true, also records now and the counter's
    // value as seen. The caller then does the work.
    bool do_action();

    virtual void dump(std::ostream& out, int indent) const;

private:
    // The mode's counter; 0 in E_ActionOnRequest. Caller holds m_mutex.
    long current_value() const;

    long m_lastSeen;
    int m_action;
    TVDatabase* m_database; // not owned
    long m_timeout;
    long m_lastAction; // seconds since 1970
    mutable TVMutex m_mutex;
};

std::ostream& operator<<(std::ostream& out, const TVUpdateChecker& checker);

#endif // TVUPDATECHECKER_H
