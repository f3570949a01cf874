#ifndef TVMUTEXLOCKER_H
#define TVMUTEXLOCKER_H

// Holds a TVMutex for the length of a scope. The locker does not own the
// mutex, which must outlive it. It unlocks at its end only if it actually
// took the lock, so a failed try leaves the mutex to whoever holds it.

#include <iosfwd>

class TVMutex;

class TVMutexLocker
{
public:
    // No mutex; set_mutex gives it one.
    TVMutexLocker();
    // Blocks until the mutex is taken.
    explicit TVMutexLocker(TVMutex& mutex);
    // Tries for at most that many milliseconds; is_locked tells the outcome.
    TVMutexLocker(TVMutex& mutex, int milliseconds);
    TVMutexLocker(const TVMutexLocker&) = delete;
    TVMutexLocker& operator=(const TVMutexLocker&) = delete;
    // Unlocks if held; never throws.
    virtual ~TVMutexLocker();

    // Releases any mutex this locker holds, then blocks until it holds this one.
    void set_mutex(TVMutex& mutex);
    bool is_locked() const { return m_locked; }

    void dump(std::ostream& out, int indent) const;

private:
    void release();

    TVMutex* m_mutex; // not owned; may be null
    bool m_locked;    // true only while this locker holds m_mutex
};

std::ostream& operator<<(std::ostream& out, const TVMutexLocker& locker);

#endif
