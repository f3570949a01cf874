#include "LibGui/base/tvnotifylist.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LibDate/core/tvduration.h"
#include "TestSupport/tvparamtest.h"
#include "TestSupport/tvtestclock.h"

namespace {

// 2026-11-21 12:00:00 GMT.
constexpr long C_Noon = 1795262400;

const int C_Urgent = 3;  // badges
const int C_Listed = 2;  // list only
const int C_Popup = 4;   // pops up where the tray can

class NotifyListTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TVNotifyScheme::set_tray_messages(true);
        m_list.add_scheme(new TVNotifyScheme(C_Listed, "Listed", TVNotifyScheme::C_ResponseList, "", true, TVColour()));
        m_list.add_scheme(new TVNotifyScheme(C_Urgent, "Urgent", TVNotifyScheme::C_ResponseBadge, "", true, TVColour()));
        m_list.add_scheme(new TVNotifyScheme(C_Popup, "Popup", TVNotifyScheme::C_ResponsePopup, "", true, TVColour()));
    }
    void TearDown() override { TVNotifyScheme::set_tray_messages(false); }

    static TVNotifyItem item(const std::string& message, int id, int scheme = C_Urgent, double priority = 1.0)
    {
        return TVNotifyItem(message, TVId(id, -1, -1), scheme, priority, TVDate(TVDate::E_DateBlank));
    }
    std::vector<std::string> messages() const
    {
        std::vector<std::string> out;
        for (int i = 0; i < m_list.get_nitems(); ++i)
            out.push_back(m_list.get_item(i).get_message());
        return out;
    }
    std::vector<std::string> drain_new()
    {
        std::vector<std::string> out;
        while (auto popped = m_list.pop_new())
            out.push_back(popped->get_message());
        return out;
    }
    std::vector<std::string> drain_removed()
    {
        std::vector<std::string> out;
        while (auto popped = m_list.pop_removed())
            out.push_back(popped->get_message());
        return out;
    }
    // A moment that many seconds after noon.
    static TVDate after_noon(long seconds) { return TVDate(2026, 10, 20, 12, 0, 0, 0, 0) + TVDuration(seconds); }

    TestClock m_clock{C_Noon};
    TVNotifyList m_list;
};

TEST_F(NotifyListTest, OnlySchemesThatBadgeOrPopUpAddItems)
{
    m_list.add(item("listed only", 1, C_Listed));
    m_list.add(item("no such scheme", 2, 99));
    m_list.add(item("badge", 3, C_Urgent));
    m_list.add(item("popup", 4, C_Popup));
    EXPECT_EQ(messages(), (std::vector<std::string>{"badge", "popup"}));
    EXPECT_EQ(drain_new(), (std::vector<std::string>{"badge", "popup"}));
    EXPECT_EQ(m_list.pop_new(), nullptr);
}

TEST_F(NotifyListTest, EqualItemsYieldOneAndPrioritySetsTheOrder)
{
    m_list.add(item("low", 1, C_Urgent, 1.0));
    m_list.add(item("high", 2, C_Urgent, 9.0));
    m_list.add(item("low", 1, C_Urgent, 1.0));
    m_list.add(item("middle", 3, C_Urgent, 5.0));
    m_list.add(item("middle too", 4, C_Urgent, 5.0));
    EXPECT_EQ(messages(), (std::vector<std::string>{"high", "middle", "middle too", "low"}));
    EXPECT_EQ(drain_new().size(), 4u);
    EXPECT_EQ(m_list.get_badge_count(), 4);
}

TEST_F(NotifyListTest, NotifyStateIsTheHighestSchemeWithACount)
{
    std::string text = "left over";
    EXPECT_EQ(m_list.get_notify_state(text), -1);
    EXPECT_EQ(text, "");

    m_list.add(item("first", 1, C_Urgent, 5.0));
    EXPECT_EQ(m_list.get_notify_state(text), C_Urgent);
    EXPECT_EQ(text, "first");

    m_list.add(item("popup a", 2, C_Popup, 1.0));
    m_list.add(item("popup b", 3, C_Popup, 1.0));
    EXPECT_EQ(m_list.get_notify_state(text), C_Popup);
    EXPECT_EQ(text, "popup a\nAnd 2 more warnings.");
}

TEST_F(NotifyListTest, RebuildQueuesOnlyWhatChanged)
{
    m_list.add(item("stays", 1));
    m_list.add(item("goes", 2));
    drain_new();

    m_list.reset();
    m_list.add(item("stays", 1));
    m_list.add(item("arrives", 3));
    m_list.update();
    EXPECT_EQ(messages(), (std::vector<std::string>{"stays", "arrives"}));
    EXPECT_EQ(drain_new(), std::vector<std::string>{"arrives"});
    EXPECT_EQ(drain_removed(), std::vector<std::string>{"goes"});

    // A reset on its own (a window does one after a change) takes nothing
    // away: the next rebuild that finds the same reasons queues nothing.
    m_list.reset();
    m_list.reset();
    m_list.add(item("stays", 1));
    m_list.add(item("arrives", 3));
    m_list.update();
    EXPECT_EQ(m_list.get_nitems(), 2);
    EXPECT_TRUE(drain_new().empty());
    EXPECT_TRUE(drain_removed().empty());

    m_list.reset();
    m_list.update();
    EXPECT_EQ(drain_removed(), (std::vector<std::string>{"stays", "arrives"}));
    EXPECT_EQ(m_list.get_nitems(), 0);
}

TEST_F(NotifyListTest, SnoozedItemComesBackAfterItsTime)
{
    m_list.add(item("reminder", 800));
    drain_new();
    m_list.snooze("reminder", TVId(800, -1, -1), after_noon(600));
    EXPECT_EQ(m_list.get_nitems(), 0);
    EXPECT_EQ(drain_removed(), std::vector<std::string>{"reminder"});

    m_clock.advance(599);
    m_list.add(item("reminder", 800));
    EXPECT_EQ(m_list.get_nitems(), 0);
    // Same object, other message: not held back.
    m_list.add(item("other", 800));
    EXPECT_EQ(messages(), std::vector<std::string>{"other"});

    m_clock.advance(1);
    m_list.add(item("reminder", 800));
    EXPECT_EQ(messages(), (std::vector<std::string>{"other", "reminder"}));
    EXPECT_EQ(m_list.get_nsnoozed(), 0);
}

TEST_F(NotifyListTest, FutureItemsAreListedButNotBadged)
{
    m_list.add(TVNotifyItem("next", TVId(800, -1, -1), C_Urgent, 1.0, after_noon(3600)));
    EXPECT_EQ(m_list.get_nitems(), 1);
    EXPECT_EQ(m_list.get_badge_count(), 0);
    m_clock.advance(3600);
    EXPECT_EQ(m_list.get_badge_count(), 1);
}

TEST(NotifySchemeTest, ResponsesNormaliseToWhatThePlatformCanDo)
{
    struct Row {
        bool m_trayMessages;
        bool m_canList;
        int m_asked;
        int m_kept;
        std::vector<int> m_offered;
    };
    const Row rows[] = {
        {true, true, 80, 80, {100, 80, 60, 40, 20}},
        {false, true, 80, 60, {100, 60, 40, 20}},
        {true, false, 40, 20, {100, 80, 60, 20}},
        {false, false, 60, 60, {100, 60, 20}},
        {false, false, 100, 100, {100, 60, 20}},
    };
    for (const Row& row : rows) {
        TVNotifyScheme::set_tray_messages(row.m_trayMessages);
        TVNotifyScheme scheme(7, "Seven", row.m_asked, "", row.m_canList, TVColour(255, 0, 0));
        EXPECT_EQ(scheme.get_response(), row.m_kept) << row.m_asked;
        scheme.set_response(row.m_asked);
        EXPECT_EQ(scheme.get_response(), row.m_kept) << row.m_asked;
        const TVIdString offered = scheme.get_responses();
        std::vector<int> values;
        for (const TVIdEntry& entry : offered)
            values.push_back(entry.get_id().get_id());
        EXPECT_EQ(values, row.m_offered);
    }
    TVNotifyScheme::set_tray_messages(false);
    EXPECT_EQ(TVNotifyScheme::response_text(40), "Show in the notification list");
    EXPECT_EQ(TVNotifyScheme::response_text(20), "Don't show a warning");
    EXPECT_EQ(TVNotifyScheme(12, "", 20, "", true, TVColour()).scheme_name(), "NotifyScheme12");
}

class NotifySettingsTest : public TVParamTest
{
};

TEST_F(NotifySettingsTest, ResponsesAndTrayFlagSurviveAWriteAndARead)
{
    TVParam* param = make_param({});
    param->add_config_file(user_file());
    ASSERT_EQ(param->parse(nullptr), TVErrC_ok);

    TVNotifyList written;
    written.add_scheme(new TVNotifyScheme(5, "Five", 60, "", true, TVColour()));
    written.add_scheme(new TVNotifyScheme(6, "Six", 100, "", true, TVColour()));
    written.get_scheme_id(5)->set_response(40);
    written.set_usetray(false);
    ASSERT_EQ(written.write_settings(), TVErrC_ok);

    TVNotifyList read;
    read.add_scheme(new TVNotifyScheme(5, "Five", 60, "", true, TVColour()));
    read.add_scheme(new TVNotifyScheme(6, "Six", 20, "", true, TVColour()));
    read.add_scheme(new TVNotifyScheme(7, "Seven", 60, "", true, TVColour()));
    ASSERT_EQ(read.initialise(), TVErrC_ok);
    EXPECT_EQ(read.get_scheme_id(5)->get_response(), 40);
    EXPECT_EQ(read.get_scheme_id(6)->get_response(), 100);
    EXPECT_EQ(read.get_scheme_id(7)->get_response(), 60); // never stored
    EXPECT_FALSE(read.get_usetray());

    TVParam::release();
    TVNotifyList fresh;
    ASSERT_EQ(fresh.initialise(), TVErrC_ok);
    EXPECT_TRUE(fresh.get_usetray());
}

} // namespace
