#ifndef TVLOCKABLE_H
#define TVLOCKABLE_H

// TVLockable: the edit lock of a stored object. One editor at a time holds
// it under an id of its choosing (a window, a thread, -1 for the engine).
//
// lock() and unlock() may be called from any thread; the record's mutex
// makes the test-and-take atomic. A lock guards the object's data, not its
// identity: a copy starts free, and assignment leaves the lock as it was.

#include <iosfwd>
#include <memory>

class TVLockable
{
public:
    static int TVErrC_ObjectNotLocked;
    static int TVErrC_ObjectLocked;

    TVLockable();
    TVLockable(const TVLockable& other);
    TVLockable& operator=(const TVLockable& other);
    virtual ~TVLockable();

    // Takes the lock for id; the warning TVErrC_ObjectLocked if anyone
    // (id itself included) holds it already.
    [[nodiscard]] int lock(int id);
    // The warning TVErrC_ObjectNotLocked if the lock is free.
    [[nodiscard]] int unlock();
    bool is_locked() const;
    // -1 while free.
    int get_lock_id() const;

    virtual void dump(std::ostream& out, int indent) const;

private:
    struct TVLockableImpl;
    std::unique_ptr<TVLockableImpl> d;
};

std::ostream& operator<<(std::ostream& out, const TVLockable& lockable);

#endif // TVLOCKABLE_H
