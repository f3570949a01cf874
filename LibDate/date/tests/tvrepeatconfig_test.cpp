#include "LibDate/date/tvrepeatconfig.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "LibCore/error/tverror.h"
#include "LibDate/date/tests/tvdateexptest.h"

// The date language's fixture, errors recorded silently, and a second
// work-day set, WEEKEND (id 1): Saturday and Sunday.
class TVRepeatConfigTest : public TVDateExpTest
{
protected:
    static constexpr int C_Weekend = 0x41;

    void SetUp() override
    {
        TVDateExpTest::SetUp();
        TVError::release();
        get_tverror()->set_stream(nullptr, TVSevAll);
        int id = 0;
        ASSERT_EQ(TVErrC_ok, m_config.add_workset("WEEKEND", C_Weekend, id));
        ASSERT_EQ(1, id);
    }

    void TearDown() override
    {
        TVError::release();
        TVDateExpTest::TearDown();
    }

    // The GMT reading of text applied to base with config.
    static std::string at(const std::string& text, const TVDate& base, const TVRepeatConfig* config)
    {
        return gmt_text(TVDateParser::parse_date(text).apply(base, config));
    }

    static std::string write(const TVObject& object)
    {
        std::ostringstream out;
        EXPECT_EQ(TVErrC_ok, object.write_class(out, 0));
        return out.str();
    }

    TVRepeatConfig m_config;
};

// Wednesday 10 and Saturday 13 March 2021 at 10:00; WEEKEND is Saturday
// and Sunday.
TEST_F(TVRepeatConfigTest, ExpressionsHonourTheSetTheyName)
{
    struct Row
    {
        const char* m_name;
        const char* m_text;
        bool m_saturday;
        bool m_withConfig;
        const char* m_gmt;
    };
    const Row rows[] = {
        {"a named set", "WorkDayFor WEEKEND", false, true, "2021-03-13 10:00:00"},
        {"names ignore case", "WorkDayFor Weekend", false, true, "2021-03-13 10:00:00"},
        {"a fixed day of the set restarts", "+1 Day FixedFor WEEKEND", false, true,
         "2021-03-13 10:00:00"},
        {"a counted step", "+2 WorkDay", true, true, "2021-03-16 10:00:00"},
        {"no tag is the default set", "WorkDay", true, true, "2021-03-15 10:00:00"},
        {"an unknown set is the default", "WorkDayFor HOLIDAY", true, true, "2021-03-15 10:00:00"},
        {"without a configuration, Monday to Friday", "WorkDayFor WEEKEND", true, false,
         "2021-03-15 10:00:00"},
    };
    for (const Row& row : rows) {
        const TVDate base = row.m_saturday ? utc(2021, 3, 13, 10) : utc(2021, 3, 10, 10);
        EXPECT_EQ(row.m_gmt, at(row.m_text, base, row.m_withConfig ? &m_config : nullptr))
            << row.m_name;
    }
    // The default set's days may change: Sunday to Thursday.
    ASSERT_EQ(TVErrC_ok, m_config.set_workset_days(TVRepeatConfig::C_DefaultSet, 0x1f));
    EXPECT_EQ("2021-03-14 10:00:00", at("WorkDay", utc(2021, 3, 12, 10), &m_config));
}

TEST_F(TVRepeatConfigTest, SetsAreNamedOnceAndNeverReused)
{
    int id = 0;
    for (const char* name : {"Night shift", "Shift2", "weekend", "", "work"}) {
        EXPECT_TRUE(istvwarn(m_config.add_workset(name, C_Weekend, id))) << name;
    }
    EXPECT_TRUE(istvwarn(m_config.add_workset("NIGHT", 0, id)));
    EXPECT_TRUE(istvwarn(m_config.remove_workset(TVRepeatConfig::C_DefaultSet)));
    EXPECT_TRUE(istvwarn(m_config.set_workset_days(7, 1)));
    EXPECT_EQ(2, m_config.get_worksets().size());

    ASSERT_EQ(TVErrC_ok, m_config.remove_workset(1));
    ASSERT_EQ(TVErrC_ok, m_config.add_workset("NIGHT", 0x3e, id));
    EXPECT_EQ(2, id);
    // A rule naming the removed set falls back to the default.
    EXPECT_EQ(TVRepeatConfig::C_DefaultSet, m_config.find_workset("WEEKEND"));
    EXPECT_EQ("", m_config.get_workset_tag(1));
    EXPECT_EQ("work", m_config.get_workset_name(1));
    EXPECT_EQ("NIGHT", m_config.get_workset_tag(2));
}

TEST_F(TVRepeatConfigTest, SerialFormRoundTripsAndRefusesBadSets)
{
    const int spanOnLevels = 2 + 1 * 8;
    m_config.set_capability(spanOnLevels);
    ASSERT_EQ(TVErrC_ok, m_config.set_workset_days(TVRepeatConfig::C_DefaultSet, 0x1f));
    const std::string text = write(m_config);
    EXPECT_EQ("{TVRepeatConfig\n!w!0 31 work\n!w!1 65 WEEKEND\n!n!2\n!c!10\n}\n", text);
    TVRepeatConfig back;
    ASSERT_EQ(TVErrC_ok, back.object_from_string(text, 0));
    EXPECT_EQ(m_config, back);
    EXPECT_EQ(text, write(back));

    for (const char* bad : {"!w!1 65 WEEK END\n", "!w!1 0 NONE\n", "!w!0 62 OTHER\n",
                            "!w!1 65 A\n!w!1 65 B\n", "!w!2 65 A\n!w!3 3 a\n"}) {
        const std::string broken = std::string("{TVRepeatConfig\n") + bad + "}\n";
        EXPECT_TRUE(istvwarn(back.object_from_string(broken, 0))) << bad;
        EXPECT_EQ(m_config, back) << bad;
    }
}
