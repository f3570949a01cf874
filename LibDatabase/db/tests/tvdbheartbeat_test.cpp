// The periodic update's decisions, as a table: when it runs, and what a
// run does, for the states a window can be in.

#include "LibDatabase/db/tvdbheartbeat.h"

#include "LibDate/core/tvdateutils.h"

#include <gtest/gtest.h>

namespace {

using Gate = TVDBHeartbeat::Gate;
using Pass = TVDBHeartbeat::Pass;

Gate gate_with(void (*change)(Gate&))
{
    Gate gate;
    change(gate);
    return gate;
}

TEST(HeartbeatTest, RunsUnlessHeldAndOverdueBreaksTheHoldsOfEditingAndMinimising)
{
    const struct {
        const char* name;
        Gate gate;
        bool run;
        bool clearUiPause;
    } rows[] = {
        {"a quiet window", Gate{}, true, true},
        {"not loaded", gate_with([](Gate& g) { g.loaded = false; }), false, false},
        {"paused", gate_with([](Gate& g) { g.paused = true; }), false, false},
        {"already updating", gate_with([](Gate& g) { g.updating = true; }), false, false},
        {"the user acting, no pause asked", gate_with([](Gate& g) { g.interacting = true; }), true,
         false},
        {"the user acting with the pause asked",
         gate_with([](Gate& g) { g.interacting = g.uiPause = true; }), false, false},
        {"the pause asked, the user gone quiet", gate_with([](Gate& g) { g.uiPause = true; }),
         true, true},
        {"an object being edited", gate_with([](Gate& g) { g.edited = true; }), false, true},
        {"edited but overdue", gate_with([](Gate& g) { g.edited = g.overdue = true; }), true,
         true},
        {"minimised", gate_with([](Gate& g) { g.minimised = true; }), false, true},
        {"minimised but overdue", gate_with([](Gate& g) { g.minimised = g.overdue = true; }), true,
         true},
        {"overdue yet paused", gate_with([](Gate& g) { g.paused = g.overdue = true; }), false,
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TVDBHeartbeat::GateAnswer answer = TVDBHeartbeat::gate(row.gate);
        EXPECT_EQ(answer.run, row.run);
        EXPECT_EQ(answer.clearUiPause, row.clearUiPause);
    }
}

TEST(HeartbeatTest, FullPassWaitsForQuietAndTheDetailPeriodAndNeverRacesASync)
{
    using L = TVDatabase::E_RecalcLevel;
    const struct {
        const char* name;
        Pass pass;
        L level;
        bool full, detailDue, autosave, verify, repeatSoon;
    } rows[] = {
        {"quiet, period over", {false, false, false, false}, L::E_RecalcChanged, true, false, true,
         true, false},
        {"quiet, within the period", {true, false, false, false}, L::E_RecalcAll, false, false,
         true, false, false},
        {"user acting", {false, true, false, false}, L::E_RecalcAll, false, false, false, false,
         false},
        {"asked for, user acting", {true, true, true, false}, L::E_RecalcChanged, true, false,
         false, true, false},
        {"quiet but syncing", {false, false, false, true}, L::E_RecalcAll, false, true, false,
         false, true},
        {"asked for while syncing", {true, false, true, true}, L::E_RecalcAll, false, true, false,
         false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TVDBHeartbeat::Plan plan = TVDBHeartbeat::plan(row.pass);
        EXPECT_EQ(plan.level, row.level);
        EXPECT_EQ(plan.full, row.full);
        EXPECT_EQ(plan.detailDue, row.detailDue);
        EXPECT_EQ(plan.autosave, row.autosave);
        EXPECT_EQ(plan.verify, row.verify);
        EXPECT_EQ(plan.repeatSoon, row.repeatSoon);
    }
}

TEST(HeartbeatTest, OverdueAfterTenMinutesOrBeforeAnyUpdate)
{
    const TVDate start(2024, 5, 1, 12, 0, 0, 0, 0);
    EXPECT_TRUE(TVDBHeartbeat::is_overdue(TVDateUtils::invalid_date(), start));
    EXPECT_FALSE(TVDBHeartbeat::is_overdue(start, start + TVDuration(600L)));
    EXPECT_TRUE(TVDBHeartbeat::is_overdue(start, start + TVDuration(601L)));
}

} // namespace
