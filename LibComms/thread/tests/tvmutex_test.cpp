#include "LibComms/thread/tvmutex.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "LibComms/thread/tvcondvar.h"
#include "LibComms/thread/tvmutexlocker.h"

TEST(MutexTest, FailedTryLeavesHeldMutexToItsHolder)
{
    TVMutex mutex;
    mutex.lock();

    bool lockerHeld = true;
    bool stillHeld = false;
    std::thread other([&] {
        {
            TVMutexLocker locker(mutex, 0);
            lockerHeld = locker.is_locked();
        }
        // Had the locker unlocked at its end, this try would succeed.
        stillHeld = !mutex.try_lock(0);
    });
    other.join();

    EXPECT_FALSE(lockerHeld);
    EXPECT_TRUE(stillHeld);
    mutex.unlock();
    EXPECT_TRUE(mutex.try_lock(0));
    mutex.unlock();
}

TEST(MutexTest, LockerKeepsCountExactUnderContention)
{
    const int C_Threads = 4;
    const int C_Rounds = 20000;
    TVMutex mutex;
    long counter = 0;
    std::vector<std::thread> workers;
    for (int t = 0; t < C_Threads; ++t) {
        workers.emplace_back([&] {
            for (int i = 0; i < C_Rounds; ++i) {
                TVMutexLocker locker(mutex);
                ++counter;
            }
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_EQ(counter, long(C_Threads) * C_Rounds);
}

TEST(MutexTest, SetMutexMovesLockerFromOneMutexToTheNext)
{
    TVMutex first;
    TVMutex second;
    {
        TVMutexLocker locker;
        EXPECT_FALSE(locker.is_locked());
        locker.set_mutex(first);
        EXPECT_TRUE(locker.is_locked());
        EXPECT_FALSE(first.try_lock(0));

        locker.set_mutex(second);
        EXPECT_TRUE(first.try_lock(0)) << "first was not released";
        first.unlock();
        EXPECT_FALSE(second.try_lock(0));
    }
    EXPECT_TRUE(second.try_lock(0)) << "second was not released at the end";
    second.unlock();
}

TEST(MutexTest, CopiesAreFreshAndCompareEqual)
{
    TVMutex held;
    held.lock();

    TVMutex copy(held);
    EXPECT_TRUE(copy.try_lock(0)) << "a copy must not inherit the lock";
    copy.unlock();
    EXPECT_TRUE(copy == held);

    // Assigning over a held mutex must not drop its holder's lock.
    held = TVMutex();
    EXPECT_FALSE(held.try_lock(0));
    held.unlock();

    EXPECT_TRUE(TVCondVar() == TVCondVar());
}
