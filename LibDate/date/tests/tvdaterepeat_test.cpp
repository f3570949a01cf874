#include "LibDate/date/tvdaterepeat.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/date/tests/tvdaterepeattest.h"

namespace {

std::string trim(const std::string& text)
{
    return tv_clean_string(text, true, true, true, true);
}

TVDate gmt(const std::string& text)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second);
    return TVDate(year, month - 1, day - 1, hour, minute, second, 0, TVDate::C_GMT);
}

} // namespace

// Every row of the golden table (tvdaterepeat_golden.txt): the rule read from
// its stored text gives, from the row's date on, the occurrences that the
// calendar says.
TEST_F(TVDateRepeatTest, GoldenTableFromTheCalendar)
{
    std::ifstream table(TV_DATE_REPEAT_GOLDEN);
    ASSERT_TRUE(table.good()) << TV_DATE_REPEAT_GOLDEN;
    int rows = 0;
    for (std::string line; std::getline(table, line);) {
        if (trim(line).empty() || line[0] == '#')
            continue;
        const std::vector<std::string> fields = tv_tokenise(line + "|", '|');
        ASSERT_GE(fields.size(), 5u) << line;
        const std::string name = trim(fields[0]);
        TVDateRepeat repeat = rule(trim(fields[1]));
        std::vector<TVDateSlot> slots;
        repeat.generate_slots(TVDateSlot(),
                              TVDateSlot(gmt(trim(fields[2])), TVDate::C_Blank, false),
                              std::stoi(fields[3]), &m_config, slots);
        EXPECT_EQ(trim(fields[4]), starts(slots)) << name << ": " << trim(fields[1]);
        ++rows;
    }
    EXPECT_GE(rows, 30);
}

TEST_F(TVDateRepeatTest, RulesThatCantStepStop)
{
    const TVDate monday = utc(2021, 3, 1, 9);
    // Not repeating has no next date.
    EXPECT_TRUE(rule("T=0").next_date(monday, &m_config).is_blank());
    // The one date of the set is excluded: no progress, the start comes back.
    TVDateRepeat excluded = rule("T=7@S=000009000302021000000@X=01 Apr 2021");
    EXPECT_EQ(monday, excluded.next_date(monday, &m_config));
    // Every second for months, all excluded: the guard ends the walk.
    TVDateRepeat buried = rule("T=1@X=01 Mar 2021-31 Dec 2021");
    EXPECT_EQ(monday, buried.next_date(monday, &m_config));
    // A limit of 0 gives the seed alone.
    std::vector<TVDateSlot> slots;
    TVDateRepeat daily = rule("T=2@A=32400");
    daily.generate_slots(TVDateSlot(monday), TVDateSlot(monday, TVDate::C_Blank, false), 0,
                         &m_config, slots);
    EXPECT_EQ("2021-03-01 09:00:00", starts(slots));
}

// Ends of the slots a span rule makes from a seed of 09:00 to 10:00.
TEST_F(TVDateRepeatTest, SpansEndAsTheOffsetSays)
{
    struct Row
    {
        const char* m_name;
        int m_rangeType;
        const char* m_rule;
        const char* m_spans; // the two slots after the seed
    };
    const Row rows[] = {
        {"an hour after the start", 2, "T=2@A=32400@O=3610",
         "2021-03-02 09:00:00 - 2021-03-02 10:00:00, 2021-03-03 09:00:00 - 2021-03-03 10:00:00"},
        {"the next day at 17:00", 2, "T=2@A=32400@O=-161210",
         "2021-03-02 09:00:00 - 2021-03-03 17:00:00, 2021-03-03 09:00:00 - 2021-03-04 17:00:00"},
        {"from the last repeat", 2, "T=2@A=32400",
         "2021-03-01 10:00:00 - 2021-03-02 09:00:00, 2021-03-02 09:00:00 - 2021-03-03 09:00:00"},
        {"no end", 2, "T=2@A=32400@O=2",
         "2021-03-02 09:00:00 - blank, 2021-03-03 09:00:00 - blank"},
        {"by expression", 2, "T=2@A=32400@O=1@Y=\"@TIME +2 Hour\"",
         "2021-03-02 09:00:00 - 2021-03-02 11:00:00, 2021-03-03 09:00:00 - 2021-03-03 11:00:00"},
        {"moments only", 1, "T=2@A=32400@O=3610",
         "2021-03-02 09:00:00 - 2021-03-02 09:00:00, 2021-03-03 09:00:00 - 2021-03-03 09:00:00"},
    };
    const TVDateSlot seed(utc(2021, 3, 1, 9), utc(2021, 3, 1, 10), false);
    for (const Row& row : rows) {
        TVDateRepeat repeat;
        repeat.set_capability(TVDateRepeat::encode_capability(row.m_rangeType, 0));
        ASSERT_EQ(TVErrC_ok, repeat.from_string(row.m_rule)) << row.m_name;
        std::vector<TVDateSlot> slots;
        repeat.generate_slots(seed, TVDateSlot(seed.get_start(), TVDate::C_Blank, false), 3,
                              &m_config, slots);
        ASSERT_EQ(3u, slots.size()) << row.m_name;
        slots.erase(slots.begin());
        EXPECT_EQ(row.m_spans, spans(slots)) << row.m_name;
    }
}

TEST_F(TVDateRepeatTest, GenerateFillsTheGlobalRangeAndThePast)
{
    // Mondays at 9:00 since 1 February; the seed is Monday 1 March.
    TVDateRepeat mondays = rule("T=3@D=1@A=32400@B=\"1/2/2021\"");
    const TVDateSlot seed(utc(2021, 3, 1, 9));
    TVDateRepeat::set_global_range(TVDateSlot(utc(2021, 3, 1), utc(2021, 3, 31), false), 3);
    ASSERT_EQ(TVErrC_ok, mondays.generate(false, seed, &m_config));
    EXPECT_EQ(2, mondays.get_state());
    EXPECT_EQ("2021-03-01 09:00:00, 2021-03-08 09:00:00, 2021-03-15 09:00:00",
              starts(mondays.get_slots()));
    EXPECT_EQ("2021-02-01 09:00:00, 2021-02-08 09:00:00, 2021-02-15 09:00:00, "
              "2021-02-22 09:00:00",
              starts(mondays.get_old_slots()));

    // Generated slots stay until forced or the rule changes.
    TVDateRepeat::set_global_range(TVDateSlot(utc(2021, 3, 1), utc(2021, 3, 31), false), 1);
    ASSERT_EQ(TVErrC_ok, mondays.generate(false, seed, &m_config));
    EXPECT_EQ(3u, mondays.get_slots().size());
    ASSERT_EQ(TVErrC_ok, mondays.generate(true, seed, &m_config));
    EXPECT_EQ(1u, mondays.get_slots().size());

    TVDateRepeat copy;
    EXPECT_FALSE(copy.load_slots(mondays));
    copy = rule(mondays.to_string());
    EXPECT_TRUE(copy.load_slots(mondays));
    EXPECT_EQ(mondays.get_slots(), copy.get_slots());

    // Not repeating keeps the seed alone, whatever the range.
    TVDateRepeat once;
    ASSERT_EQ(TVErrC_ok, once.generate(false, seed, &m_config));
    EXPECT_EQ("2021-03-01 09:00:00", starts(once.get_slots()));
}

TEST_F(TVDateRepeatTest, SeedSlotsGiveDayTimeAndSpan)
{
    struct Row
    {
        const char* m_name;
        int m_rangeType;
        const char* m_rule;
        TVDate m_start;
        TVDate m_end;
        bool m_takeDay;
        const char* m_result;
    };
    const TVDate wednesday = utc(2021, 3, 3, 14, 30);
    const Row rows[] = {
        {"weekday and time", 1, "T=3@D=1@A=32400", wednesday, wednesday, true, "T=3@D=3@A=52200"},
        {"a listed day stays listed", 1, "T=3@D=1,3@A=32400", wednesday, wednesday, true,
         "T=3@D=1,3@A=52200"},
        {"the day only when asked", 1, "T=3@D=1", wednesday, wednesday, false, "T=3@D=1@A=52200"},
        {"several times stay", 1, "T=2@A=32400,61200", wednesday, wednesday, true,
         "T=2@A=32400,61200"},
        {"a weekday of the month stays one", 1, "T=4@D=52", utc(2021, 3, 17), utc(2021, 3, 17),
         true, "T=4@D=63@A=0"},
        {"a day of the month", 1, "T=4@D=0", utc(2021, 3, 17), utc(2021, 3, 17), true,
         "T=4@D=16@A=0"},
        {"a day of the year", 1, "T=5", wednesday, wednesday, true, "T=5@D=502@A=52200"},
        {"the span's length", 2, "T=2", utc(2021, 3, 1, 9), utc(2021, 3, 1, 10, 30), false,
         "T=2@A=32400@O=5410"},
        {"an end by time stays", 2, "T=2@O=-161210", utc(2021, 3, 1, 9), utc(2021, 3, 1, 10, 30),
         false, "T=2@A=32400@O=-161210"},
    };
    for (const Row& row : rows) {
        TVDateRepeat repeat;
        repeat.set_capability(TVDateRepeat::encode_capability(row.m_rangeType, 0));
        ASSERT_EQ(TVErrC_ok, repeat.from_string(row.m_rule)) << row.m_name;
        repeat.apply_seed_slot(TVDateSlot(row.m_start, row.m_end, false), row.m_takeDay);
        EXPECT_EQ(row.m_result, repeat.to_string()) << row.m_name;
    }
}

TEST_F(TVDateRepeatTest, ChangesUndoTheCompiledState)
{
    TVDateRepeat repeat = rule("T=2@A=32400");
    EXPECT_EQ(0, repeat.get_state());
    EXPECT_EQ(utc(2021, 3, 2, 9), repeat.next_date(utc(2021, 3, 1, 9), &m_config));
    EXPECT_EQ(1, repeat.get_state());
    repeat.set_interval(2);
    EXPECT_EQ(0, repeat.get_state());
    EXPECT_EQ(utc(2021, 3, 3, 9), repeat.next_date(utc(2021, 3, 1, 9), &m_config));
    // Work-day names come from the configuration the rule is used with.
    repeat.set_workday(TVDateRepeat::E_WorkFixed, 1);
    EXPECT_EQ(utc(2021, 3, 6, 9), repeat.next_date(utc(2021, 3, 2, 9), &m_config));
    EXPECT_EQ(utc(2021, 3, 4, 9), repeat.next_date(utc(2021, 3, 2, 9), nullptr));
}

TEST_F(TVDateRepeatTest, SanityCheckMendsWhatMeansNothing)
{
    TVDateRepeat repeat = rule("T=3@N=-2@D=1,9,1,-1@A=32400,90000,32400");
    EXPECT_FALSE(repeat.sanity_check());
    EXPECT_EQ("T=3@D=1@A=32400", repeat.to_string());
    EXPECT_TRUE(repeat.sanity_check());
    TVDateRepeat years = rule("T=5@D=1102,2500,5101,5541,99");
    EXPECT_FALSE(years.sanity_check());
    EXPECT_EQ("T=5@D=1102,5101,99", years.to_string());
}
