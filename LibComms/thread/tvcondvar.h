#ifndef TVCONDVAR_H
#define TVCONDVAR_H

// A wake-up call between threads, with no memory: send_signal wakes the
// threads waiting at that moment and is lost if none is. A waiter must
// therefore look at its condition before waiting and again after every
// return, and wait with a time limit: a signal that falls between the look
// and the wait is lost, and the limit bounds what that costs.
//
// Copies are fresh and compare equal, like TVMutex.

#include <iosfwd>

#include <QMutex>
#include <QWaitCondition>

class TVCondVar
{
public:
    TVCondVar();
    TVCondVar(const TVCondVar& other);
    // Leaves this one as it is; waiters are not copied.
    TVCondVar& operator=(const TVCondVar& other);
    virtual ~TVCondVar();

    bool operator==(const TVCondVar& other) const;
    bool operator!=(const TVCondVar& other) const { return !(*this == other); }

    // Waits for at most that many milliseconds (a negative limit: no limit).
    // True if woken by send_signal, false at the time limit.
    bool wait_signal(int milliseconds);
    // Wakes every thread waiting now. Takes no lock, so it may be called
    // from any thread while holding any lock.
    void send_signal();

    virtual void dump(std::ostream& out, int indent) const;

private:
    QWaitCondition m_condition;
    QMutex m_mutex; // only what m_condition waits on; guards no data
};

std::ostream& operator<<(std::ostream& out, const TVCondVar& condVar);

#endif
