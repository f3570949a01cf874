#include "LibCore/log/tvdebug.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "LibCore/log/tvdebugscope.h"
#include "TestSupport/tvtestclock.h"

namespace {

const long C_Start = 1767225600; // 2026-01-01 00:00:00 GMT
const int C_HalfSecond = 500000;
const int C_QuarterSecond = 250000;

// Thread numbers as a test hands them out; 0 is the main thread.
thread_local int t_threadNumber = 0;
int test_thread_number()
{
    return t_threadNumber;
}

class DebugTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TVDebug::release();
        debug = tvdebug();
        debug->set_log_stream(&trace);
    }
    void TearDown() override { TVDebug::release(); }

    std::vector<std::string> trace_lines() const
    {
        std::vector<std::string> lines;
        std::istringstream in(trace.str());
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }

    const TVStackFrame* finished(const std::string& name, const TVDebug* record = nullptr) const
    {
        for (const TVStackFrame& frame : (record != nullptr ? record : debug)->get_finished()) {
            if (frame.get_name() == name)
                return &frame;
        }
        return nullptr;
    }

    // A table row as it should read, padded by hand.
    static std::string row(const std::string& name, bool rightAligned, const std::string& calls,
                           const std::string& total, const std::string& third)
    {
        const std::string pad(49 - name.size(), ' ');
        return "| " + (rightAligned ? pad + name : name + pad) + " | " +
               std::string(3 - calls.size(), ' ') + calls + " | " + total + " | " + third + " |";
    }

    TestClock clock{C_Start};
    std::ostringstream trace;
    TVDebug* debug = nullptr;
};

// Throws from inside a traced scope.
void traced_then_throw()
{
    TVDebugScope scope("traced_then_throw", false, false, true);
    throw std::runtime_error("out");
}

} // namespace

TEST_F(DebugTest, NestedCallsAreTracedWithTheirTimesAtTheirDepth)
{
    debug->enter_function("outer", false, false);
    clock.advance(1);
    debug->enter_function("inner", false, false);
    debug->jprintf("step %d", 1);
    clock.advance(2);
    debug->leave_function();
    clock.advance(0, C_HalfSecond);
    debug->leave_function();

    const std::vector<std::string> expected = {
        "outer",
        "| inner",
        "| | step 1",
        "| | ",
        "| | Duration: 2.00000",
        "| | Self:     2.00000",
        "| | ---- inner (3)",
        "| ",
        "| Duration: 3.50000",
        "| Self:     1.50000",
        "| ---- outer (3)",
    };
    EXPECT_EQ(trace_lines(), expected);
    EXPECT_EQ(debug->get_depth(), 0);
}

TEST_F(DebugTest, FinishedFramesKeepCountsTimesAndBothEdges)
{
    // outer calls inner twice, other calls inner once.
    {
        TVDebugScope outer("outer", true, false, true);
        for (int i = 0; i < 2; ++i) {
            TVDebugScope inner("inner", true, false, true);
            clock.advance(0, C_QuarterSecond);
        }
        clock.advance(1);
    }
    {
        TVDebugScope other("other", true, false, true);
        TVDebugScope inner("inner", true, false, true);
        clock.advance(2);
    }

    const TVStackFrame* inner = finished("inner");
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->get_count(), 3);
    EXPECT_DOUBLE_EQ(inner->get_total(), 2.5);
    EXPECT_DOUBLE_EQ(inner->get_self(), 2.5);
    ASSERT_EQ(inner->get_callers().size(), 2u);
    EXPECT_EQ(inner->get_callers()[0].get_name(), "outer");
    EXPECT_EQ(inner->get_callers()[0].get_calls(), 2);
    EXPECT_DOUBLE_EQ(inner->get_callers()[0].get_spent(), 0.5);
    EXPECT_EQ(inner->get_callers()[1].get_name(), "other");
    EXPECT_DOUBLE_EQ(inner->get_callers()[1].get_spent(), 2.0);

    const TVStackFrame* outer = finished("outer");
    ASSERT_NE(outer, nullptr);
    EXPECT_EQ(outer->get_count(), 1);
    EXPECT_DOUBLE_EQ(outer->get_total(), 1.5);
    EXPECT_DOUBLE_EQ(outer->get_self(), 1.0);
    ASSERT_EQ(outer->get_calls().size(), 1u);
    EXPECT_EQ(outer->get_calls()[0].get_calls(), 2);
    EXPECT_TRUE(outer->get_callers().empty());
    // Quiet frames are profiled but write nothing.
    EXPECT_EQ(trace.str(), "");
}

TEST_F(DebugTest, FrameLeftByAnExceptionIsStillClosed)
{
    debug->enter_function("caller", true, false);
    clock.advance(1);
    EXPECT_THROW(traced_then_throw(), std::runtime_error);
    EXPECT_EQ(debug->get_depth(), 1);
    debug->leave_function();

    EXPECT_EQ(debug->get_depth(), 0);
    const TVStackFrame* thrown = finished("traced_then_throw");
    ASSERT_NE(thrown, nullptr);
    EXPECT_EQ(thrown->get_count(), 1);
    ASSERT_EQ(thrown->get_callers().size(), 1u);
    EXPECT_EQ(thrown->get_callers()[0].get_name(), "caller");
    EXPECT_EQ(trace_lines().back(), "| | ---- traced_then_throw (1)");
}

TEST_F(DebugTest, ScopeThatEntersNothingLeavesTheStackAlone)
{
    {
        TVDebugScope idle("idle", false, true, true);  // skip if idle: no caller
        EXPECT_FALSE(idle.is_entered());
    }
    {
        TVDebugScope caller("caller", true, false, true);
        {
            TVDebugScope disabled("disabled", false, false, false);
            TVDebugScope unnamed(nullptr, false, false, true);
            EXPECT_FALSE(disabled.is_entered() || unnamed.is_entered());
        }
        EXPECT_EQ(debug->get_depth(), 1);  // their ends didn't close the caller
        TVDebugScope busy("busy", true, true, true);
        EXPECT_EQ(debug->get_depth(), 2);
    }
    ASSERT_EQ(debug->get_finished().size(), 2u);
    EXPECT_NE(finished("busy"), nullptr);
    // A leave with nothing on the stack changes nothing.
    debug->leave_function();
    EXPECT_EQ(debug->get_finished().size(), 2u);
}

TEST_F(DebugTest, ProfileHasARowPerFunctionWithItsCallersAndCalleesBelow)
{
    {
        TVDebugScope outer("outer", true, false, true);
        clock.advance(0, C_HalfSecond);
        for (int i = 0; i < 2; ++i) {
            TVDebugScope inner("inner", true, false, true);
            clock.advance(0, C_QuarterSecond);
        }
    }
    debug->display_profile();

    const std::string rule(79, '=');
    const std::vector<std::string> expected = {
        rule,
        row("inner", false, "2", "0.50000", "0.50000"),
        row("outer", true, "2", "0.50000", "0.25000"),
        row("outer", false, "1", "1.00000", "0.50000"),
        row("inner", true, "2", "0.50000", "0.25000"),
        rule,
    };
    EXPECT_EQ(trace_lines(), expected);
    for (const std::string& line : trace_lines())
        EXPECT_EQ(line.size(), 79u) << line;
}

TEST_F(DebugTest, ThreadFunctionSendsEachThreadToItsOwnRecord)
{
    debug->set_thread_fn(&test_thread_number);
    debug->set_log_stream(nullptr);
    const int C_Threads = 4;
    const int C_Calls = 500;
    std::vector<std::thread> threads;
    for (int number = 1; number <= C_Threads; ++number) {
        threads.emplace_back([number] {
            t_threadNumber = number;
            const std::string name = "work" + std::to_string(number);
            for (int i = 0; i < C_Calls; ++i)
                TVDebugScope scope(name.c_str(), false, false, true);
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_TRUE(debug->get_finished().empty());
    int linked = 0;
    for (const TVDebug* record = debug->get_next(); record != nullptr; record = record->get_next())
        ++linked;
    EXPECT_EQ(linked, C_Threads);
    for (int number = 1; number <= C_Threads; ++number) {
        const TVDebug* record = debug->find_record(number);
        ASSERT_NE(record, nullptr) << number;
        ASSERT_EQ(record->get_finished().size(), 1u) << number;
        EXPECT_EQ(record->get_finished()[0].get_name(), "work" + std::to_string(number));
        EXPECT_EQ(record->get_finished()[0].get_count(), C_Calls);
    }
    EXPECT_EQ(debug->find_record(C_Threads + 1), nullptr);
}
