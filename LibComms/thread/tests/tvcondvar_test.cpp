#include "LibComms/thread/tvcondvar.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {
const int C_ShortLimit = 20;   // ms; nobody signals in these cases
const int C_SafetyLimit = 10000; // ms; only a broken case waits this long
} // namespace

TEST(CondVarTest, WaitEndsAtItsLimitAndAnEarlierSignalIsLost)
{
    TVCondVar condVar;
    EXPECT_FALSE(condVar.wait_signal(0));
    condVar.send_signal(); // nobody waits yet
    EXPECT_FALSE(condVar.wait_signal(C_ShortLimit));
}

TEST(CondVarTest, SignalWakesEveryWaiter)
{
    const int C_Waiters = 3;
    TVCondVar condVar;
    std::atomic<int> done{0};
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < C_Waiters; ++i) {
        waiters.emplace_back([&] {
            if (condVar.wait_signal(C_SafetyLimit))
                ++woken;
            ++done;
        });
    }
    // A signal that falls before a waiter waits is lost, so keep sending
    // until all have returned.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(2 * C_SafetyLimit);
    while (done < C_Waiters && std::chrono::steady_clock::now() < deadline) {
        condVar.send_signal();
        std::this_thread::yield();
    }
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(woken, C_Waiters);
}
