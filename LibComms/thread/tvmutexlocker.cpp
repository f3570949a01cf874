#include "LibComms/thread/tvmutexlocker.h"

#include <ostream>

#include "LibComms/thread/tvmutex.h"
#include "LibCore/log/tvdump.h"

TVMutexLocker::TVMutexLocker() : m_mutex(nullptr), m_locked(false)
{
}

TVMutexLocker::TVMutexLocker(TVMutex& mutex) : m_mutex(&mutex), m_locked(false)
{
    m_mutex->lock();
    m_locked = true;
}

TVMutexLocker::TVMutexLocker(TVMutex& mutex, int milliseconds)
    : m_mutex(&mutex), m_locked(mutex.try_lock(milliseconds))
{
}

TVMutexLocker::~TVMutexLocker()
{
    // A destructor must not throw, whatever unlocking might do.
    try {
        release();
    } catch (...) {
    }
}

void TVMutexLocker::set_mutex(TVMutex& mutex)
{
    release();
    m_mutex = &mutex;
    m_mutex->lock();
    m_locked = true;
}

void TVMutexLocker::release()
{
    if (m_mutex != nullptr && m_locked) {
        m_locked = false;
        m_mutex->unlock();
    }
}

void TVMutexLocker::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVMutexLocker Object:\n";
    out << pad << " has mutex = " << (m_mutex != nullptr) << "\n";
    out << pad << " locked = " << m_locked << "\n";
}

std::ostream& operator<<(std::ostream& out, const TVMutexLocker& locker)
{
    locker.dump(out, 0);
    return out;
}
