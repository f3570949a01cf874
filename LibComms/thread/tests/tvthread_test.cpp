#include "LibComms/thread/tvthread.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "LibComms/thread/tests/tvtestflag.h"
#include "LibComms/thread/tvcondvar.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdebug.h"
#include "LibCore/log/tvdebugscope.h"

#if defined(__SANITIZE_ADDRESS__)
// A thread ended by terminate() is unwound without AddressSanitizer seeing
// it, so the red zones of its frames stay marked; the sanitizer's own
// alternate signal stack is then torn down on top of them and reported as
// an overflow. Without that stack the thread's exit touches nothing stale.
extern "C" const char* __asan_default_options()
{
    return "use_sigaltstack=0";
}
#endif

#if defined(__SANITIZE_THREAD__)
// QThread wakes its own "finished" condition under a QMutex that
// ThreadSanitizer can't see, so destroying a thread that has been waited
// for looks like a race inside Qt.
extern "C" const char* __tsan_default_suppressions()
{
    return "race:QWaitCondition::~QWaitCondition\n";
}
#endif

namespace {
const int C_SafetyLimit = 10000; // ms; only a broken case waits this long

// A thread whose body the test gives.
class BodyThread : public TVThread
{
public:
    using Body = std::function<int(BodyThread&)>;
    explicit BodyThread(Body body) : m_body(std::move(body)) {}
    // The body dies before the base destructor could stop the thread.
    ~BodyThread() override { stop_thread(); }

    TVCondVar m_wake;

protected:
    int func() override { return m_body(*this); }

private:
    Body m_body;
};

// Stands in for the TVObject that run_function passes through untouched.
struct Probe
{
    int severity = 0; // 0 succeeds, 2 warns, 3 raises an error
    bool called = false;
    TestFlag started;
};

TVObject* as_object(Probe& probe)
{
    return reinterpret_cast<TVObject*>(&probe);
}

int probe_function(TVObject* object)
{
    Probe* probe = reinterpret_cast<Probe*>(object);
    probe->called = true;
    if (probe->severity == 2)
        return tvwarning(TVErrC_FileRead, TVLOCATION, "short read");
    if (probe->severity == 3)
        return tverror(TVErrC_FileOpen, TVLOCATION, "cannot open");
    return TVErrC_ok;
}

// Never returns by itself; only terminate() ends it.
int spin_until_cut_off(TVObject* object)
{
    reinterpret_cast<Probe*>(object)->started.set();
    for (;;)
        pthread_testcancel();
}

int count_of(const std::string& text, const std::string& part)
{
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}
} // namespace

class ThreadTest : public ::testing::Test
{
protected:
    void SetUp() override { get_tverror()->set_stream(nullptr, TVSevAll); }
    void TearDown() override { get_tverror()->clear_all(); }

    static int run_to_end(TVThread& thread, TVThread::E_ThreadPriority priority = TVThread::E_PriorityInherit)
    {
        EXPECT_EQ(thread.start_thread(priority), TVErrC_ok);
        EXPECT_EQ(thread.wait_thread(), TVErrC_ok);
        EXPECT_FALSE(thread.is_running());
        EXPECT_FALSE(thread.is_stopping());
        return thread.get_status();
    }

    // How many places of this thread code the newest error's trail names.
    static int thread_steps_in_trail() { return count_of(get_tverror()->get_location(), "tvthread.cpp:"); }
};

TEST_F(ThreadTest, NeverStartedThreadIsIdleAndWaitsAtOnce)
{
    BodyThread thread([](BodyThread&) { return TVErrC_ok; });
    EXPECT_FALSE(thread.is_running());
    EXPECT_EQ(thread.wait_thread(), TVErrC_ok);
    EXPECT_EQ(thread.stop_thread(), TVErrC_ok);
    EXPECT_EQ(thread.get_status(), TVErrC_ok);
}

// An error or a warning of func becomes the status, stays pending with one
// step of this code in its trail; an exception that isn't ours becomes a
// plain error and leaves nothing pending.
TEST_F(ThreadTest, FailureOfFuncBecomesTheStatus)
{
    struct Row
    {
        BodyThread::Body body;
        int status;
        int steps;
    };
    const Row rows[] = {
        {[](BodyThread&) { return tverror(TVErrC_FileOpen, TVLOCATION, "cannot open"); },
         TVErrDetails::compute_combination(TVErrC_FileOpen, TVSevError), 1},
        {[](BodyThread&) { return tvwarning(TVErrC_FileRead, TVLOCATION, "short read"); },
         TVErrDetails::compute_combination(TVErrC_FileRead, TVSevWarning), 1},
        {[](BodyThread&) -> int { throw std::runtime_error("not ours"); },
         TVErrDetails::compute_combination(TVErrC_Error, TVSevError), 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.status);
        BodyThread thread(row.body);
        EXPECT_EQ(run_to_end(thread), row.status);
        EXPECT_EQ(thread_steps_in_trail(), row.steps);
        EXPECT_EQ(tverrorvalue(), row.steps > 0 ? row.status : 0);
        get_tverror()->clear_all();
    }
}

TEST_F(ThreadTest, RunFunctionPassesObjectAndTrailsFailureThroughFuncAndRun)
{
    struct Row
    {
        int severity;
        int expectedCode;
        int expectedSteps;
    };
    for (const Row& row : {Row{0, TVErrC_ok, 0}, Row{2, TVErrC_FileRead, 2}, Row{3, TVErrC_FileOpen, 2}}) {
        SCOPED_TRACE(row.severity);
        Probe probe;
        probe.severity = row.severity;
        TVThread thread;
        ASSERT_EQ(thread.run_function(as_object(probe), probe_function, TVThread::E_PriorityInherit), TVErrC_ok);
        EXPECT_EQ(thread.wait_thread(), TVErrC_ok);
        EXPECT_TRUE(probe.called);
        EXPECT_EQ(thread.get_status(), TVErrDetails::compute_combination(row.expectedCode, row.severity));
        EXPECT_EQ(thread_steps_in_trail(), row.expectedSteps);
        get_tverror()->clear_all();
    }
}

TEST_F(ThreadTest, StopRequestAndSignalEndLoopingWorker)
{
    TestFlag looping;
    std::atomic<bool> sawStopAtStart{true};
    BodyThread worker([&](BodyThread& self) {
        sawStopAtStart = self.is_stopping();
        looping.set();
        while (!self.is_stopping())
            self.m_wake.wait_signal(C_SafetyLimit);
        return TVErrC_ok;
    });
    worker.mark_stop(); // an old request that start_thread must clear
    ASSERT_EQ(worker.start_thread(), TVErrC_ok);
    ASSERT_TRUE(looping.wait());
    EXPECT_FALSE(sawStopAtStart);

    worker.mark_stop();
    // A signal that falls before the worker waits is lost; keep waking it.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(2 * C_SafetyLimit);
    while (worker.is_running() && std::chrono::steady_clock::now() < deadline) {
        worker.m_wake.send_signal();
        std::this_thread::yield();
    }
    EXPECT_EQ(worker.wait_thread(), TVErrC_ok);
    EXPECT_FALSE(worker.is_running());
    EXPECT_FALSE(worker.is_stopping());
    EXPECT_EQ(worker.get_status(), TVErrC_ok);
}

TEST_F(ThreadTest, FinishedThreadRunsAgainWhenRestarted)
{
    std::atomic<int> runs{0};
    BodyThread thread([&](BodyThread&) { return ++runs == 1 ? tvwarning(TVErrC_FileRead, TVLOCATION, "once") : TVErrC_ok; });
    EXPECT_NE(run_to_end(thread), TVErrC_ok);
    EXPECT_EQ(run_to_end(thread), TVErrC_ok);
    EXPECT_EQ(runs, 2);
}

TEST_F(ThreadTest, ThreadIdIsZeroOutsideAndOwnNumberInside)
{
    EXPECT_EQ(TVThread::thread_id(), 0);
    int plainId = -1;
    std::thread plain([&] { plainId = TVThread::thread_id(); });
    plain.join();
    EXPECT_EQ(plainId, 0);

    std::atomic<int> firstId{-1};
    std::atomic<int> secondId{-1};
    BodyThread first([&](BodyThread&) { firstId = TVThread::thread_id(); return TVErrC_ok; });
    BodyThread second([&](BodyThread&) { secondId = TVThread::thread_id(); return TVErrC_ok; });
    run_to_end(second);
    run_to_end(first);
    EXPECT_GT(firstId, 0);
    EXPECT_EQ(secondId, firstId + 1) << "numbers follow the order of creation";
}

TEST_F(ThreadTest, PriorityMapsToToolkitPriority)
{
    struct Row
    {
        int ours;
        QThread::Priority toolkit;
    };
    for (const Row& row : {Row{0, QThread::InheritPriority}, Row{1, QThread::TimeCriticalPriority},
                           Row{2, QThread::LowestPriority}, Row{3, QThread::IdlePriority},
                           Row{4, QThread::InheritPriority}, Row{-1, QThread::InheritPriority}}) {
        SCOPED_TRACE(row.ours);
        std::atomic<int> seen{-1};
        BodyThread thread([&](BodyThread& self) {
            seen = self.priority();
            return TVErrC_ok;
        });
        run_to_end(thread, static_cast<TVThread::E_ThreadPriority>(row.ours));
        EXPECT_EQ(seen, row.toolkit);
    }
}

TEST_F(ThreadTest, StopThreadCutsOffWorkerThatIgnoresStopRequest)
{
    Probe probe;
    TVThread worker;
    ASSERT_EQ(worker.run_function(as_object(probe), spin_until_cut_off), TVErrC_ok);
    ASSERT_TRUE(probe.started.wait());
    worker.mark_stop();
    EXPECT_EQ(worker.stop_thread(), TVErrC_ok);
    EXPECT_FALSE(worker.is_running());
    EXPECT_FALSE(worker.is_stopping());
}

TEST_F(ThreadTest, DestroyingRunningThreadCutsItOff)
{
    // The toolkit would end the process if the thread outlived its object.
    Probe probe;
    auto worker = std::make_unique<TVThread>();
    ASSERT_EQ(worker->run_function(as_object(probe), spin_until_cut_off), TVErrC_ok);
    ASSERT_TRUE(probe.started.wait());
    worker.reset();
}

TEST_F(ThreadTest, FrameEnteredOnWorkerLandsInWorkersOwnRecord)
{
    TVDebug::release();
    tvdebug()->set_log_stream(nullptr);
    std::atomic<int> workerId{-1};
    BodyThread worker([&](BodyThread&) {
        workerId = TVThread::thread_id();
        TVDebugScope scope("worker_body", true, false, true);
        return TVErrC_ok;
    });
    EXPECT_EQ(run_to_end(worker), TVErrC_ok);

    const TVDebug* own = tvdebug()->find_record(workerId);
    ASSERT_NE(own, nullptr);
    ASSERT_EQ(own->get_finished().size(), 1u);
    EXPECT_EQ(own->get_finished()[0].get_name(), "worker_body");
    EXPECT_TRUE(tvdebug()->get_finished().empty()) << "the main thread's record stays empty";
    TVDebug::release();
}
