#ifndef TVTHREAD_H
#define TVTHREAD_H

// Base of every long-lived worker. A derived class overrides func, the body
// that runs on the new thread; a class that can't derive hands a plain
// function and its object to run_function instead.
//
// Ending a thread, the ordinary way: the worker's func looks at is_stopping
// in its loop; the owner calls mark_stop, wakes the worker (usually through
// a TVCondVar) and then wait_thread. stop_thread is the hard way and is
// only for a worker that can't be reached.
//
// Which thread may call what: the owner (the thread that created the
// object, in practice the main thread) starts, stops, waits and destroys;
// mark_stop and is_stopping may be called from any thread; func runs on the
// new thread. get_status means something after wait_thread has returned.
//
// Threads are created on the main thread only: the running count behind
// the thread numbers has no lock.

#include <atomic>
#include <iosfwd>

#include <QThread>

#include "LibComms/thread/tvmutex.h"

class TVObject;

class TVThread : public QThread
{
public:
    // The toolkit priority a thread starts with. A value outside the list
    // inherits the starting thread's priority, like E_PriorityInherit.
    enum E_ThreadPriority : int {
        E_PriorityInherit = 0,
        E_PriorityTimeCritical = 1,
        E_PriorityLowest = 2,
        E_PriorityIdle = 3
    };

    // What run_function runs: gets the object it was given, returns an
    // error value.
    using Function = int (*)(TVObject*);

    // "Could not start a new thread." Nothing here raises it; it is there
    // for callers that find a thread did not come up.
    static int TVErrC_ThreadStart;

    TVThread();
    TVThread(const TVThread&) = delete;
    TVThread& operator=(const TVThread&) = delete;
    // Terminates a thread still running (see stop_thread). A derived class
    // whose func uses its own members must end the thread in its own
    // destructor: those members are gone by the time this one runs.
    ~TVThread() override;

    // Clears the status, the stop request and any function; a thread still
    // running is terminated first unless constructing. The thread keeps its
    // number.
    void set_defaults(bool constructing);

    // Clears a pending stop request and starts the thread. A thread already
    // running is left as it is. Gives TVErrC_ok.
    [[nodiscard]] int start_thread(E_ThreadPriority priority = E_PriorityInherit);
    // Keeps function and object (not owned; the object must outlive the
    // thread) for the default func, then starts as start_thread. A thread
    // already running is left as it is, function and all.
    [[nodiscard]] int run_function(TVObject* object, Function function,
                                   E_ThreadPriority priority = E_PriorityInherit);

    // Terminates a running thread, waits until it is gone and clears the
    // stop request. The worker is cut off wherever it is, locks and all;
    // blocks for as long as the worker has termination disabled.
    int stop_thread();
    // Blocks with no time limit until the thread has finished; at once if it
    // is not running. Gives TVErrC_ok. Never call it from the thread itself.
    int wait_thread();

    // Asks the worker to end; it sees the request through is_stopping.
    void mark_stop();
    bool is_stopping() const;
    bool is_running() const;
    // The error value the last func gave; TVErrC_ok before the first run.
    int get_status() const;

    // Lets stop_thread cut off the calling thread again after it had
    // disabled that; call it from the worker.
    static void allow_forced_cancellation();

    // The number of the calling thread if it is a TVThread; 0 for the main
    // thread and any other thread. Numbers start at 1 and are never reused.
    static int thread_id();

    virtual void dump(std::ostream& out, int indent) const;

protected:
    // On the new thread: runs func, adds this place to the trail of a
    // failure, keeps the value as the status and clears the stop request.
    // No exception leaves it.
    void run() override;

    // The body of the thread. By default calls the function given to
    // run_function with its object, or gives TVErrC_ok if there is none.
    // Errors come back by value or as a thrown TVErrDetails.
    virtual int func();

private:
    static int m_threadIdCount;

    // Written on the thread, read by others; atomic so that a read while
    // the thread runs is merely early, not a race.
    std::atomic<int> m_status;
    bool m_stop;           // guarded by m_lock
    mutable TVMutex m_lock;
    int m_threadId;
    Function m_function;   // set only while the thread isn't running
    TVObject* m_object;    // not owned
};

std::ostream& operator<<(std::ostream& out, const TVThread& thread);

#endif
