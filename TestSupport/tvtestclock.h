#ifndef TVTESTCLOCK_H
#define TVTESTCLOCK_H

// TestClock: puts "now" in the test's hands for as long as it lives. It
// starts at start (seconds since 1970) and moves only when told.

#include <atomic>

#include "LibDate/core/tvdateutils.h"

class TestClock
{
public:
    explicit TestClock(long start)
    {
        set(start, 0);
        TVDateUtils::set_clock(&read);
    }
    ~TestClock() { TVDateUtils::set_clock(nullptr); }
    TestClock(const TestClock&) = delete;
    TestClock& operator=(const TestClock&) = delete;

    void set(long seconds, int micro)
    {
        s_micros = static_cast<long long>(seconds) * 1000000 + micro;
    }
    void advance(long seconds, int micro = 0)
    {
        s_micros += static_cast<long long>(seconds) * 1000000 + micro;
    }

private:
    static void read(long& seconds, int& micro)
    {
        const long long now = s_micros;
        seconds = static_cast<long>(now / 1000000);
        micro = static_cast<int>(now % 1000000);
    }

    // Read from whatever thread asks for the time.
    static inline std::atomic<long long> s_micros{0};
};

#endif
