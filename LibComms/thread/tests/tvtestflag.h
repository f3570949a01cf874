#ifndef TVTESTFLAG_H
#define TVTESTFLAG_H

// A one-way signal between the threads of a test. wait() gives up after a
// safety time-out so that a broken case fails instead of hanging.

#include <chrono>
#include <condition_variable>
#include <mutex>

class TestFlag
{
public:
    void set()
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_set = true;
        m_condition.notify_all();
    }

    [[nodiscard]] bool wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_condition.wait_for(lock, std::chrono::seconds(10), [this] { return m_set; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_set = false;
};

#endif
