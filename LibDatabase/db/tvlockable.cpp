#include "LibDatabase/db/tvlockable.h"

#include "LibComms/thread/tvmutex.h"
#include "LibComms/thread/tvmutexlocker.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"

#include <ostream>
#include <string>

int TVLockable::TVErrC_ObjectNotLocked = tv_builtin_code("TVLockable::TVErrC_ObjectNotLocked");
int TVLockable::TVErrC_ObjectLocked = tv_builtin_code("TVLockable::TVErrC_ObjectLocked");

struct TVLockable::TVLockableImpl {
    int m_lockId = -1;
    bool m_free = true;
    // Mutable: the queries read the pair under the lock too.
    mutable TVMutex m_mutex;
};

TVLockable::TVLockable() : d(new TVLockableImpl) {}

TVLockable::TVLockable(const TVLockable&) : d(new TVLockableImpl) {}

TVLockable& TVLockable::operator=(const TVLockable&)
{
    return *this;
}

TVLockable::~TVLockable() = default;

int TVLockable::lock(int id)
{
    {
        TVMutexLocker locker(d->m_mutex);
        if (d->m_free) {
            d->m_free = false;
            d->m_lockId = id;
            return TVErrC_ok;
        }
    }
    // Reported outside the mutex: a handler may ask this object again.
    return tvwarning(TVErrC_ObjectLocked, TVLOCATION, "Could not lock for ID %d", id);
}

int TVLockable::unlock()
{
    {
        TVMutexLocker locker(d->m_mutex);
        if (!d->m_free) {
            d->m_free = true;
            d->m_lockId = -1;
            return TVErrC_ok;
        }
    }
    return tvwarning(TVErrC_ObjectNotLocked, TVLOCATION, "Object already unlocked.");
}

bool TVLockable::is_locked() const
{
    TVMutexLocker locker(d->m_mutex);
    return !d->m_free;
}

int TVLockable::get_lock_id() const
{
    TVMutexLocker locker(d->m_mutex);
    return d->m_lockId;
}

void TVLockable::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVLockable: " << (is_locked() ? "locked by " : "free")
        << (is_locked() ? std::to_string(get_lock_id()) : std::string()) << '\n';
}

std::ostream& operator<<(std::ostream& out, const TVLockable& lockable)
{
    lockable.dump(out, 0);
    return out;
}
