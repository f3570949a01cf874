#ifndef TVMUTEX_H
#define TVMUTEX_H

// A plain, non-recursive lock that speaks in our error values.
//
// A TVMutex guards the data of the object that holds it, not the object's
// identity: copying one gives a fresh, unlocked mutex, and any two compare
// equal. That lets a class holding a mutex copy and compare itself member by
// member without the lock getting in the way.
//
// Locking twice from the same thread deadlocks; unlocking a mutex the
// calling thread does not hold is undefined, as for QMutex.

#include <iosfwd>

#include <QMutex>

class TVMutex
{
public:
    TVMutex();
    TVMutex(const TVMutex& other);
    // Leaves this mutex as it is; the other's state is not copied.
    TVMutex& operator=(const TVMutex& other);
    virtual ~TVMutex();

    bool operator==(const TVMutex& other) const;
    bool operator!=(const TVMutex& other) const { return !(*this == other); }

    // Both always give TVErrC_ok; the int keeps the calling convention.
    int lock();
    int unlock();
    // True if the lock was taken within that many milliseconds; 0 tries once
    // and returns at once. A negative limit waits without end.
    [[nodiscard]] bool try_lock(int milliseconds);

    virtual void dump(std::ostream& out, int indent) const;

private:
    QMutex m_mutex;
};

std::ostream& operator<<(std::ostream& out, const TVMutex& mutex);

#endif
