#include "LibComms/thread/tvthread.h"

#include <exception>
#include <ostream>
#include <string>

#include "LibComms/thread/tvmutexlocker.h"
#include "LibComms/thread/tvtsan_p.h"
#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdebug.h"
#include "LibCore/log/tvdump.h"

int TVThread::TVErrC_ThreadStart = tv_builtin_code("TVThread::TVErrC_ThreadStart");

// 0 is what thread_id gives for threads that aren't ours, so ours start at 1.
int TVThread::m_threadIdCount = 1;

namespace {
QThread::Priority qt_priority(TVThread::E_ThreadPriority priority)
{
    switch (priority) {
    case TVThread::E_PriorityTimeCritical:
        return QThread::TimeCriticalPriority;
    case TVThread::E_PriorityLowest:
        return QThread::LowestPriority;
    case TVThread::E_PriorityIdle:
        return QThread::IdlePriority;
    default:
        return QThread::InheritPriority;
    }
}
} // namespace

TVThread::TVThread()
    : m_status(TVErrC_ok), m_stop(false), m_threadId(m_threadIdCount++), m_function(nullptr), m_object(nullptr)
{
    set_defaults(true);
}

TVThread::~TVThread()
{
    // QThread gives up the whole process if destroyed while running.
    if (isRunning())
        stop_thread();
}

void TVThread::set_defaults(bool constructing)
{
    if (!constructing && isRunning())
        stop_thread();
    m_status = TVErrC_ok;
    {
        TVMutexLocker locker(m_lock);
        m_stop = false;
    }
    m_function = nullptr;
    m_object = nullptr;
}

int TVThread::start_thread(E_ThreadPriority priority)
{
    // Set before the worker can trace, so its frames land in its own record.
    tvdebug()->set_thread_fn(&TVThread::thread_id);
    if (isRunning())
        return TVErrC_ok;
    {
        TVMutexLocker locker(m_lock);
        m_stop = false;
    }
    start(qt_priority(priority));
    return TVErrC_ok;
}

int TVThread::run_function(TVObject* object, Function function, E_ThreadPriority priority)
{
    // Changing the function under a running thread would race with func.
    if (isRunning())
        return TVErrC_ok;
    m_function = function;
    m_object = object;
    return start_thread(priority);
}

int TVThread::stop_thread()
{
    if (isRunning()) {
        terminate();
        // terminate only asks; the thread is gone when wait returns.
        wait();
        TVMutexLocker locker(m_lock);
        m_stop = false;
    }
    return TVErrC_ok;
}

int TVThread::wait_thread()
{
    if (isRunning())
        wait();
    // Whatever the thread did is now visible here.
    tv_tsan_acquire(this);
    return TVErrC_ok;
}

void TVThread::mark_stop()
{
    TVMutexLocker locker(m_lock);
    m_stop = true;
}

bool TVThread::is_stopping() const
{
    TVMutexLocker locker(m_lock);
    return m_stop;
}

bool TVThread::is_running() const
{
    return isRunning();
}

int TVThread::get_status() const
{
    return m_status;
}

void TVThread::allow_forced_cancellation()
{
    setTerminationEnabled(true);
}

int TVThread::thread_id()
{
    const TVThread* thread = dynamic_cast<const TVThread*>(QThread::currentThread());
    return thread != nullptr ? thread->m_threadId : 0;
}

void TVThread::run()
{
    int status = TVErrC_ok;
    try {
        try {
            status = func();
            if (istvwarn(status))
                tvsysinfo_append(TVLOCATION, "");
        } catch (const TVErrDetails&) {
            status = get_tverror()->get_value();
            tvsysinfo_append(TVLOCATION, "");
        }
    } catch (const std::exception&) {
        // A foreign exception (or a handler that threw) would end the
        // process from here. Keep a fault the thread already had, else
        // record a plain error; the stack is left alone because another
        // thread may be using it. Only std exceptions are caught: the
        // unwinding by which terminate() ends a thread must pass.
        if (!istvwarn(status))
            status = TVErrDetails::compute_combination(TVErrC_Error, TVSevError);
    }
    m_status = status;
    {
        TVMutexLocker locker(m_lock);
        m_stop = false;
    }
    tv_tsan_release(this);
}

int TVThread::func()
{
    if (m_function == nullptr)
        return TVErrC_ok;
    try {
        const int result = m_function(m_object);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVThread::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVThread Object:\n";
    out << pad << " thread id = " << m_threadId << "\n";
    out << pad << " running = " << is_running() << "\n";
    out << pad << " stopping = " << is_stopping() << "\n";
    out << pad << " status = " << m_status << "\n";
    out << pad << " function set = " << (m_function != nullptr) << "\n";
    m_lock.dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const TVThread& thread)
{
    thread.dump(out, 0);
    return out;
}
