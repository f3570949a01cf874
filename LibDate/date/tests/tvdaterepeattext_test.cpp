// The stored text of a repeat rule and its words for the user: random
// rules round-trip, older forms read to the rules they name, a text that
// doesn't read says which entry and changes nothing.

#include "LibDate/date/tvdaterepeat.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "LibDate/date/tests/tvdaterepeattest.h"

namespace {

constexpr unsigned C_Seed = 20210315;
constexpr int C_RandomRules = 1000;

const char* const C_Expressions[] = {"NEXT Monday 9:00", "+1 Week Fixed", "@TIME +2 Hour",
                                     "(Mon|Thu) 9:00",   "Tomorrow 3pm",  "2nd Friday"};

} // namespace

class TVDateRepeatTextTest : public TVDateRepeatTest
{
protected:
    int between(int low, int high)
    {
        return std::uniform_int_distribution<int>(low, high)(m_random);
    }
    bool chance() { return between(0, 1) == 0; }

    TVDate random_date()
    {
        return utc(between(2000, 2040), between(1, 12), between(1, 28), between(0, 23),
                   between(0, 59), between(0, 59));
    }

    int random_code(int type)
    {
        const int weekdayCode = TVDateRepeat::to_weekday_of_month(between(0, 5), between(0, 6));
        switch (type) {
        case TVDateRepeat::E_Weeks:
            return between(0, 6);
        case TVDateRepeat::E_Months:
            return chance() ? between(-31, 30) : weekdayCode;
        default:
            return between(0, 2) == 0
                       ? TVDateRepeat::to_weekday_of_year(between(0, 53), between(0, 6))
                   : chance() ? TVDateRepeat::to_yearday(between(-31, 30), between(0, 11))
                              : TVDateRepeat::to_yearday_weekday(between(0, 5), between(0, 6),
                                                                 between(0, 11));
        }
    }

    // A rule set as a user would, each field only where its type uses it,
    // so that the stored text carries all of it.
    TVDateRepeat random_rule()
    {
        TVDateRepeat r;
        r.set_capability(TVDateRepeat::encode_capability(between(1, 2), between(0, 1)));
        r.set_type_int(between(0, 8));
        if (r.uses_interval() && chance())
            r.set_interval(between(1, 40));
        std::vector<int> days;
        for (int i = between(0, 3); r.uses_days() && i > 0; --i)
            days.push_back(random_code(r.get_type()));
        r.set_days(days);
        std::vector<TVDuration> times;
        for (int i = between(0, 3); r.uses_at() && i > 0; --i)
            times.emplace_back(between(0, TVDate::C_DaySecs - 1));
        r.set_at_times(times);
        std::vector<TVDate> dates;
        for (int i = between(0, 3); r.uses_set() && i > 0; --i)
            dates.push_back(random_date());
        r.set_dateset(dates);
        if (r.uses_workday() && chance())
            r.set_workday(between(1, 3), between(-1, 3));
        const int type = r.get_type();
        if (r.get_range_type() == TVDateRepeat::E_RangeSpan &&
            ((type >= 1 && type <= 5) || type == 7)) {
            switch (between(0, 4)) {
            case 0:
                r.set_offset_blank();
                break;
            case 1:
                r.set_offset_duration(TVDuration(between(0, 100000)));
                break;
            case 2:
                r.set_offset_time(TVDuration(between(0, TVDate::C_DaySecs - 1)), between(0, 9));
                break;
            case 3:
                r.set_offset_as_expression();
                r.set_offset_exp(C_Expressions[between(0, 5)]);
                break;
            default:
                break;
            }
        }
        if (r.uses_expression()) {
            r.set_exp(C_Expressions[between(0, 5)]);
            r.set_offset_exp(chance() ? C_Expressions[between(0, 5)] : "");
        }
        if (r.uses_range() && chance())
            r.set_range_start(random_date(), false);
        if (r.uses_range() && chance())
            r.set_range_end(random_date(), false);
        for (int i = between(0, 2); type != 0 && i > 0; --i) {
            const TVDate from = random_date();
            if (chance())
                r.exclude_day(from);
            else
                r.exclude_range(TVDateSlot(from, from + TVDuration(between(0, 3 * 86400)), true));
        }
        return r;
    }

    // A read into a rule of the same owner (capability), as the owner reads it.
    TVDateRepeat read_back(const TVDateRepeat& like, const std::string& text)
    {
        TVDateRepeat back;
        back.set_capability(like.get_capability());
        EXPECT_EQ(TVErrC_ok, back.from_string(text)) << text << ": " << last_message();
        return back;
    }

    std::mt19937 m_random{C_Seed};
};

TEST_F(TVDateRepeatTextTest, RandomRulesRoundTrip)
{
    std::cout << "[ seed     ] " << C_Seed << "\n";
    for (int i = 0; i < C_RandomRules && !HasFailure(); ++i) {
        const TVDateRepeat r = random_rule();
        const std::string text = r.to_string();
        const TVDateRepeat back = read_back(r, text);
        EXPECT_TRUE(back == r) << "rule " << i << ": " << text << "\nreads as " << back.to_string();
        EXPECT_EQ(text, back.to_string()) << "rule " << i;
        std::ostringstream streamed;
        streamed << r;
        EXPECT_EQ(text, streamed.str());
    }
}

TEST_F(TVDateRepeatTextTest, FieldsATypeDoesntUseAreLeftOut)
{
    TVDateRepeat r = rule("T=3@D=1@A=32400@W=1");
    r.set_type(TVDateRepeat::E_SetDates);
    EXPECT_EQ("T=7", r.to_string());
    // A bound the owner sets stays with the owner.
    TVDateRepeat owned = rule("T=2@B=\"1/3/2021\"@E=\"31/3/2021\"");
    owned.set_range_start(utc(2021, 2, 1), true);
    EXPECT_EQ("T=2@E=\"000000300202021000000\"", owned.to_string());
    ASSERT_EQ(TVErrC_ok, owned.from_string("T=3@D=2"));
    EXPECT_EQ(utc(2021, 2, 1), owned.get_range_start());
    EXPECT_TRUE(owned.get_range_end().is_blank());
}

TEST_F(TVDateRepeatTextTest, OlderFormsReadToTheRulesTheyName)
{
    struct Row
    {
        const char* m_text;
        const char* m_rule;
    };
    const Row rows[] = {
        {"REPEAT_DAYS(7)", "T=2@N=7"},
        {"repeat_weekday(Mon, fri)", "T=3@D=1,5"},
        {"REPEAT_WEEKDAY(mon tue wed)", "T=3@D=1,2,3"},
        {"REPEAT_MONTHDAY(1 2 4 12)", "T=4@D=0,1,3,11"},
        {"REPEAT_YEARDAY(3 Jun 12 Sep)", "T=5@D=1102,1711"},
        {"T=9999", "T=8"},
        {"  T=3 @ D=1  ", "T=3@D=1"},
        {"", "T=0"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_rule, rule(row.m_text).to_string()) << row.m_text;
}

TEST_F(TVDateRepeatTextTest, TextThatDoesntReadNamesTheEntryAndChangesNothing)
{
    struct Row
    {
        const char* m_text;
        const char* m_message;
    };
    const Row rows[] = {
        {"T=x", "T=x should be of the form \"T=[0-6]\""},
        {"T=12", "T=12 should be of the form \"T=[0-6]\""},
        {"T=3@C=q", "C=q should be of the form \"C=\""},
        {"T=3@N=two", "N=two should be of the form \"N=N\""},
        {"T=3@W=", "W= should be of the form \"W=N\""},
        {"T=3@D=1,,2", "D=1,,2 should be of the form \"D=D[,D]\""},
        {"T=3@A=9:00", "A=9:00 should be of the form \"A=D[,D]\""},
        {"T=7@S=tomorrow", "S=tomorrow should be of the form \"S=D\""},
        {"T=2@B=\"FOO\"", "B=\"FOO\" should be of the form \"B=\"DATE\"\""},
        {"T=2@E=\"3/3/2021", "E=\"3/3/2021 should be of the form \"E=\"DATE\"\""},
        {"T=6@Z=NEXT Monday", "Z=NEXT Monday should be of the form \"Z=\"EXPRESSION\"\""},
        {"T=2@X=FOO", "X=FOO should be of the form \"X=E[,E]\""},
        {"T=2@X=1/1/0800", "X=1/1/0800 should be of the form \"X=E[,E]\""},
        {"REPEAT_DAYS(x)", "REPEAT_DAYS(x) should be of the form \"REPEAT_DAYS(D)\""},
        {"REPEAT_WEEKDAY(mon funday)",
         "REPEAT_WEEKDAY(mon funday) should be of the form \"REPEAT_WEEKDAY(mon tue wed)\""},
        {"REPEAT_MONTHDAY(1 32)",
         "REPEAT_MONTHDAY(1 32) should be of the form \"REPEAT_MONTHDAY(1 2 4 12)\""},
        {"REPEAT_YEARDAY(3 Jun 12)",
         "REPEAT_YEARDAY(3 Jun 12) should be of the form \"REPEAT_YEARDAY(3 Jun 12 Sep)\""},
        {"T=3@Q=1", "I do not understand Q=1 in T=3@Q=1"},
        {"T=3@@D=1", "I do not understand  in T=3@@D=1"},
        {"REPEAT_HOURLY(1)", "I do not understand REPEAT_HOURLY in REPEAT_HOURLY(1)"},
    };
    for (const Row& row : rows) {
        TVDateRepeat r = rule("T=4@D=14@A=32400");
        EXPECT_TRUE(istvwarn(r.from_string(row.m_text))) << row.m_text;
        EXPECT_EQ(TVErrC_InvalidValue, get_tverror()->get_code()) << row.m_text;
        EXPECT_EQ(row.m_message, last_message());
        EXPECT_EQ("T=4@D=14@A=32400", r.to_string()) << row.m_text;
        TVDateRepeat streamed;
        std::istringstream in(row.m_text);
        EXPECT_TRUE((in >> streamed).fail()) << row.m_text;
    }
}

TEST_F(TVDateRepeatTextTest, ExclusionsReadAsDaysRangesAndMoments)
{
    TVDateRepeat r = rule("T=2");
    ASSERT_EQ(TVErrC_ok, r.set_exclude("3/3/2021, 6/3/2021 9:00 - 7/3/2021,10/3/2021 12:00"));
    EXPECT_EQ("03 Mar 2021,06 Mar 2021 09:00:00-07 Mar 2021,10 Mar 2021 12:00:00",
              r.get_exclude_string());
    struct Row
    {
        TVDate m_date;
        bool m_excluded;
    };
    const Row rows[] = {
        {utc(2021, 3, 3), true},
        {utc(2021, 3, 3, 23, 59, 59), true},
        {utc(2021, 3, 4), false},
        {utc(2021, 3, 6, 8, 59, 59), false},
        {utc(2021, 3, 7, 23, 59, 59), true},
        {utc(2021, 3, 10, 12), true},
        {utc(2021, 3, 10, 12, 0, 1), false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_excluded, r.is_excluded(row.m_date)) << gmt_text(row.m_date);
    EXPECT_TRUE(istvwarn(r.set_exclude("3/3/2021-4/3/2021-5/3/2021")));
    EXPECT_EQ(3, r.get_exclude().size());
}

TEST_F(TVDateRepeatTextTest, RulesInWords)
{
    struct Row
    {
        int m_rangeType;
        const char* m_rule;
        const char* m_words;
    };
    const Row rows[] = {
        {1, "T=0", "Not repeating."},
        {1, "T=8", "When I Choose."},
        {1, "T=2", "Every day."},
        {1, "T=1@N=5400", "Every 90 minutes."},
        {1, "T=1@N=7200", "Every 2 hours."},
        {1, "T=3@N=2@D=1,4@A=32400,61200@W=2",
         "Every 2 weeks on Mon, Thu at 09:00, 17:00 only on work days."},
        {1, "T=4@D=52,95,-1,-2,0",
         "Every month on 2nd Tue, last Fri, last day, 2nd-last day, 1st."},
        {1, "T=5@D=1102,2174,5101,299",
         "Every year on 3 Jun, 4th Thu in Nov, Mon week 11, last day in Feb."},
        {1, "T=2@W=11", "Every day on next WEEKEND day."},
        {1, "T=2@W=1000000000", "Every day if work days available."},
        {1, "T=6@Z=\"NEXT Monday 9:00\"", "NEXT Monday 9:00."},
        {1, "T=2@B=\"1/3/2021\"@E=\"31/3/2021 17:00\"@X=17 Mar 2021",
         "Every day. From 01 Mar 2021 to 31 Mar 2021 17:00 excluding 17 Mar 2021."},
        {1, "T=2@X=17 Mar 2021,18 Mar 2021 09:00:00",
         "Every day. Excluding 17 Mar 2021, 18 Mar 2021 09:00:00."},
        {2, "T=2", "Every day. End of last repeat."},
        {2, "T=2@O=-161210", "Every day. 1 day after at 17:00."},
        {2, "T=2@O=-61210", "Every day. At 17:00."},
        {2, "T=2@O=3610", "Every day. Due date at 01:00 after start."},
        {3, "T=2@O=3610", "Every day. Due date at 01:00 before end."},
        {2, "T=2@O=2", "Every day."},
    };
    for (const Row& row : rows) {
        TVDateRepeat r;
        r.set_capability(row.m_rangeType);
        ASSERT_EQ(TVErrC_ok, r.from_string(row.m_rule)) << row.m_rule;
        EXPECT_EQ(row.m_words, r.to_natural(&m_config)) << row.m_rule;
    }
    EXPECT_EQ("On Mon, Thu", rule("T=3@D=1,4").get_days_str());
    EXPECT_EQ("Only on work days.", rule("T=2@W=2").workday_to_natural(nullptr, false));
}

TEST_F(TVDateRepeatTextTest, SerialFormCarriesTheText)
{
    TVDateRepeat r = rule("T=3@N=2@D=1,4@A=32400@Y=\"x\"@X=17 Mar 2021");
    std::string text;
    ASSERT_EQ(TVErrC_ok, r.object_to_string(text, 0));
    EXPECT_EQ("{TVDateRepeat\n!r!T=3@N=2@D=1,4@A=32400@X=17 Mar 2021\n}\n", text);
    TVDateRepeat back;
    ASSERT_EQ(TVErrC_ok, back.object_from_string(text, 0));
    EXPECT_EQ(r.to_string(), back.to_string());
}
