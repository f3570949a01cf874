// The update clock, and the checker that a periodic task asks from its
// own thread whether there is work.

#include "LibDatabase/db/tvupdatechecker.h"

#include "LibDatabase/db/tvdbhost.h"
#include "TestSupport/tvdbtestnode.h"
#include "TestSupport/tvtestclock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

// Stands in for a database: its counters are those of one object, and the
// structure change is whatever an object last handed over.
struct FakeDatabase {
    TVDBTestNode m_object;
    std::atomic<long> m_structure{-1};
};

// The checker knows the database only by its TVDatabase pointer; the fake
// travels under that pointer and comes back here.
class FakeHost : public TVDBHost
{
public:
    static FakeDatabase& fake(const TVDatabase& db)
    {
        return const_cast<FakeDatabase&>(reinterpret_cast<const FakeDatabase&>(db));
    }
    long last_db_update(const TVDatabase& db) const override
    {
        return fake(db).m_object.get_last_update();
    }
    long last_structure_change(const TVDatabase& db) const override
    {
        return fake(db).m_structure;
    }
    void record_structure_change(TVDatabase& db, long counter) const override
    {
        fake(db).m_structure = counter;
    }
    int appfileversion(const TVDatabase&) const override { return 0; }
    void object_updated(const TVDatabase*, int) const override {}
};

class UpdateCheckerTest : public ::testing::Test
{
protected:
    // The database layer's own host goes back afterwards: the databases
    // of later tests hear of their objects' changes through it.
    UpdateCheckerTest() : m_previous(TVDBHost::installed()) { TVDBHost::install(&m_host); }
    ~UpdateCheckerTest() override { TVDBHost::install(m_previous); }

    TVDatabase* db() { return reinterpret_cast<TVDatabase*>(&m_db); }

    TestClock m_clock{1717329600};
    const TVDBHost* m_previous;
    FakeHost m_host;
    FakeDatabase m_db;
    TVUpdateChecker m_checker;
};

TEST_F(UpdateCheckerTest, ChangeModeActsOncePerChange)
{
    m_db.m_object.mark_update();
    m_checker.initialise(db(), TVUpdateChecker::E_ActionOnChange, 0);
    EXPECT_TRUE(m_checker.do_action());
    EXPECT_FALSE(m_checker.do_action());
    m_db.m_object.mark_changed("test", true);
    EXPECT_TRUE(m_checker.action_required());
    EXPECT_TRUE(m_checker.do_action());
    EXPECT_FALSE(m_checker.action_required());
}

TEST_F(UpdateCheckerTest, StructureModeIgnoresPlainChanges)
{
    m_checker.initialise(db(), TVUpdateChecker::E_ActionOnStructure, 0);
    m_db.m_object.set_id(1, TVDateUtils::now(), true);
    TVDBTestNode child;
    child.set_parent_ptr(nullptr, db());
    child.mark_changed("test", true);
    child.mark_structure_change();
    EXPECT_TRUE(m_checker.do_action());
    m_db.m_object.mark_changed("test", true);
    EXPECT_FALSE(m_checker.do_action());
}

TEST_F(UpdateCheckerTest, RequestModeActsOnceAfterEachMark)
{
    m_checker.initialise(db(), TVUpdateChecker::E_ActionOnRequest, 0);
    EXPECT_TRUE(m_checker.do_action()); // nothing seen yet
    EXPECT_FALSE(m_checker.do_action());
    m_db.m_object.mark_update();
    EXPECT_FALSE(m_checker.do_action());
    for (int i = 0; i < 2; ++i) {
        m_checker.mark_action();
        EXPECT_TRUE(m_checker.do_action());
        EXPECT_FALSE(m_checker.do_action());
    }
}

TEST_F(UpdateCheckerTest, TimeOutActsWithoutAnyChange)
{
    m_checker.initialise(db(), TVUpdateChecker::E_ActionOnRequest, 10);
    EXPECT_TRUE(m_checker.do_action());
    m_clock.advance(10);
    EXPECT_FALSE(m_checker.do_action()); // not later than the time-out yet
    m_clock.advance(1);
    EXPECT_TRUE(m_checker.do_action());
    EXPECT_FALSE(m_checker.do_action());
}

TEST_F(UpdateCheckerTest, NoDatabaseNeverActs)
{
    m_checker.initialise(nullptr, TVUpdateChecker::E_ActionOnRequest, 1);
    m_checker.mark_action();
    m_clock.advance(100);
    EXPECT_FALSE(m_checker.do_action());
}

// The periodic task asks from its own thread while the main thread
// changes the object: each change is seen, none twice.
TEST_F(UpdateCheckerTest, AnotherThreadSeesEveryChange)
{
    m_db.m_object.mark_update();
    m_checker.initialise(db(), TVUpdateChecker::E_ActionOnChange, 0);
    ASSERT_TRUE(m_checker.do_action());
    constexpr int C_Changes = 200;
    std::atomic<int> changed{0};
    std::atomic<int> acted{0};
    std::thread periodic([&] {
        // Until the main thread is done and its last change has been seen.
        while (changed.load() < C_Changes || m_checker.action_required())
            if (m_checker.do_action())
                ++acted;
    });
    for (int i = 0; i < C_Changes; ++i) {
        m_db.m_object.mark_update();
        ++changed;
        while (m_checker.action_required())
            std::this_thread::yield();
    }
    periodic.join();
    EXPECT_EQ(acted.load(), C_Changes);
    EXPECT_FALSE(m_checker.do_action());
}

} // namespace
