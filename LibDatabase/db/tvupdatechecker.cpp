#include "LibDatabase/db/tvupdatechecker.h"

#include "LibComms/thread/tvmutexlocker.h"
#include "LibDatabase/db/tvdbhost.h"
#include "LibDatabase/db/tvupdatecounter.h"
#include "LibCore/log/tvdump.h"

#include <ostream>
#include <string>

TVUpdateChecker::TVUpdateChecker()
    : m_lastSeen(-1), m_action(E_ActionOnChange), m_database(nullptr), m_timeout(0),
      m_lastAction(0)
{
}

void TVUpdateChecker::initialise(TVDatabase* db, E_Action action, long timeout)
{
    TVMutexLocker locker(m_mutex);
    m_database = db;
    m_action = action;
    m_timeout = timeout;
    m_lastSeen = -1;
    m_lastAction = TVUpdateCounter::clock_seconds();
}

void TVUpdateChecker::set_timeout(int seconds)
{
    TVMutexLocker locker(m_mutex);
    m_timeout = seconds;
}

void TVUpdateChecker::mark_action()
{
    TVMutexLocker locker(m_mutex);
    m_lastSeen = -2;
}

long TVUpdateChecker::current_value() const
{
    const TVDBHost* host = TVDBHost::installed();
    if (m_action == E_ActionOnRequest || host == nullptr || m_database == nullptr)
        return 0;
    if (m_action == E_ActionOnStructure)
        return host->last_structure_change(*m_database);
    return host->last_db_update(*m_database);
}

bool TVUpdateChecker::action_required()
{
    TVMutexLocker locker(m_mutex);
    if (m_database == nullptr)
        return false;
    const bool timedOut = m_timeout >= 1 && TVUpdateCounter::clock_seconds() > m_lastAction + m_timeout;
    switch (m_action) {
    case E_ActionOnChange:
    case E_ActionOnStructure:
        return timedOut || (TVDBHost::installed() != nullptr && current_value() > m_lastSeen);
    case E_ActionOnRequest:
        // mark_action leaves -2, do_action stores 0: one action per request.
        return timedOut || m_lastSeen < 0;
    default:
        return false;
    }
}

bool TVUpdateChecker::do_action()
{
    if (!action_required())
        return false;
    TVMutexLocker locker(m_mutex);
    m_lastAction = TVUpdateCounter::clock_seconds();
    m_lastSeen = current_value();
    return true;
}

void TVUpdateChecker::dump(std::ostream& out, int indent) const
{
    TVMutexLocker locker(m_mutex);
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVUpdateChecker: action " << m_action << ", last seen " << m_lastSeen
        << ", time-out " << m_timeout << " s, last action " << m_lastAction
        << (m_database == nullptr ? ", no database" : "") << '\n';
}

std::ostream& operator<<(std::ostream& out, const TVUpdateChecker& checker)
{
    checker.dump(out, 0);
    return out;
}
