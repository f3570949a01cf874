#include "LibComms/thread/tvmutex.h"

#include <ostream>

#include "LibComms/thread/tvtsan_p.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

TVMutex::TVMutex() : m_mutex(QMutex::NonRecursive)
{
}

TVMutex::TVMutex(const TVMutex&) : m_mutex(QMutex::NonRecursive)
{
}

TVMutex& TVMutex::operator=(const TVMutex&)
{
    return *this;
}

TVMutex::~TVMutex() = default;

bool TVMutex::operator==(const TVMutex&) const
{
    return true;
}

int TVMutex::lock()
{
    m_mutex.lock();
    tv_tsan_acquire(&m_mutex);
    return TVErrC_ok;
}

int TVMutex::unlock()
{
    tv_tsan_release(&m_mutex);
    m_mutex.unlock();
    return TVErrC_ok;
}

bool TVMutex::try_lock(int milliseconds)
{
    if (!m_mutex.tryLock(milliseconds))
        return false;
    tv_tsan_acquire(&m_mutex);
    return true;
}

void TVMutex::dump(std::ostream& out, int indent) const
{
    // Whether it is held can't be read without racing the holder, so a
    // mutex shows only that it is there.
    out << TVDump::indent_string(indent) << "TVMutex Object:\n";
}

std::ostream& operator<<(std::ostream& out, const TVMutex& mutex)
{
    mutex.dump(out, 0);
    return out;
}
