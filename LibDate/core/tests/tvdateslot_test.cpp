#include "LibDate/core/tvdateslot.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "TestSupport/tvdatetestenv.h"

class TVDateSlotTest : public TVDateTest
{
protected:
    // Wednesday 10 March 2021 at hour (and minute) GMT.
    static TVDate at(int hour, int minute = 0) { return utc(2021, 3, 10, hour, minute); }
    static TVDateSlot hours(int from, int to) { return TVDateSlot(at(from), at(to), false); }

    // "9-10", "9:30-11", or "-" for a slot that isn't there.
    static std::string text(const TVDateSlot& slot)
    {
        if (!slot.is_ok())
            return "-";
        auto clock = [](const TVDate& date) {
            std::string t = date.to_string("%k:%M");
            if (t[0] == '0')
                t.erase(0, 1);
            if (t.compare(t.size() - 3, 3, ":00") == 0)
                t.erase(t.size() - 3);
            return t;
        };
        return clock(slot.get_start()) + "-" + clock(slot.get_end());
    }
};

TEST_F(TVDateSlotTest, TouchingNestedAndCrossingSlots)
{
    struct Row
    {
        const char* m_name;
        TVDateSlot m_a;
        TVDateSlot m_b;
        bool m_intersects;
        const char* m_intersection;
        const char* m_merged; // "-" when they don't merge
        const char* m_before; // subtract: the part of a before b
        const char* m_after;  // and after it; both "x" when a and b are left alone
    };
    const Row rows[] = {
        {"apart", hours(9, 10), hours(11, 12), false, "-", "-", "x", "x"},
        {"touching", hours(9, 10), hours(10, 11), false, "-", "9-11", "x", "x"},
        {"touching the other way", hours(10, 11), hours(9, 10), false, "-", "9-11", "x", "x"},
        {"crossing", hours(9, 11), hours(10, 12), true, "10-11", "9-12", "9-10", "-"},
        {"crossing the start", hours(10, 12), hours(9, 11), true, "10-11", "9-12", "-", "11-12"},
        {"b nested in a", hours(9, 12), hours(10, 11), true, "10-11", "9-12", "9-10", "11-12"},
        {"a nested in b", hours(10, 11), hours(9, 12), true, "10-11", "9-12", "-", "-"},
        {"equal", hours(9, 10), hours(9, 10), true, "9-10", "9-10", "-", "-"},
        {"one moment on another", hours(10, 10), hours(10, 10), false, "-", "10-10", "x", "x"},
        {"a moment inside", hours(9, 11), hours(10, 10), true, "10-10", "9-11", "9-10", "10-11"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_intersects, TVDateSlot::intersects(row.m_a, row.m_b)) << row.m_name;
        EXPECT_EQ(row.m_intersects, TVDateSlot::intersects(row.m_b, row.m_a)) << row.m_name;

        TVDateSlot common;
        EXPECT_EQ(row.m_intersects, TVDateSlot::intersection(row.m_a, row.m_b, common));
        EXPECT_EQ(row.m_intersection, text(common)) << row.m_name;

        TVDateSlot a = row.m_a;
        TVDateSlot b = row.m_b;
        bool merged = TVDateSlot::merge(a, b, false);
        EXPECT_EQ(row.m_merged, merged ? text(a) : "-") << row.m_name;
        EXPECT_EQ(merged ? a : row.m_b, b) << row.m_name << ": b follows a only on a merge";

        a = row.m_a;
        b = row.m_b;
        bool subtracted = TVDateSlot::subtract(a, b);
        EXPECT_EQ(row.m_intersects, subtracted) << row.m_name;
        EXPECT_EQ(row.m_before, subtracted ? text(a) : "x") << row.m_name;
        EXPECT_EQ(row.m_after, subtracted ? text(b) : "x") << row.m_name;
        if (!subtracted) {
            EXPECT_EQ(row.m_a, a) << row.m_name;
            EXPECT_EQ(row.m_b, b) << row.m_name;
        }
    }
}

TEST_F(TVDateSlotTest, MergeKeepingLengthAddsTheDurations)
{
    // An hour and an hour and a half, overlapping: two and a half hours
    // from the earlier start.
    TVDateSlot a = hours(9, 10);
    TVDateSlot b(at(9, 30), at(11), false);
    ASSERT_TRUE(TVDateSlot::merge(a, b, true));
    EXPECT_EQ("9-11:30", text(a));
    EXPECT_EQ(a, b);
    // With a start that isn't a date, b's stands in.
    TVDateSlot open(TVDate(), at(10), false);
    TVDateSlot other = hours(9, 11);
    ASSERT_TRUE(TVDateSlot::merge(open, other, false));
    EXPECT_EQ("9-11", text(open));
}

TEST_F(TVDateSlotTest, ConstructionSwapsOnlyWhenAsked)
{
    EXPECT_EQ("9-10", text(TVDateSlot(at(10), at(9), true)));
    TVDateSlot unordered(at(10), at(9), false);
    EXPECT_EQ(at(10), unordered.get_start());
    EXPECT_EQ(at(9), unordered.get_end());
    EXPECT_EQ(TVDateSlot(at(9), at(9), false), TVDateSlot(at(9)));
}

TEST_F(TVDateSlotTest, WithinAndWithinRange)
{
    const TVDateSlot open(at(10), TVDate(TVDate::E_DateBlank), false);
    const TVDateSlot noStart(TVDate(), at(10), false);
    struct Row
    {
        const char* m_name;
        TVDateSlot m_slot;
        TVDate m_date;
        bool m_within;
        bool m_withinRange;
    };
    const Row rows[] = {
        {"start is inside", hours(9, 10), at(9), true, true},
        {"end is inside", hours(9, 10), at(10), true, true},
        {"after the end", hours(9, 10), at(10, 1), false, false},
        {"a blank end holds a year later", open, utc(2022, 3, 10), true, true},
        {"a blank end doesn't hold the day before", open, at(9), false, false},
        {"no start: within is false", noStart, at(8), false, true},
        {"no start, after the end", noStart, at(11), false, false},
        {"a blank date is in no slot", open, TVDate(TVDate::E_DateBlank), false, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_within, row.m_slot.within(row.m_date)) << row.m_name;
        EXPECT_EQ(row.m_withinRange, TVDateSlot::withinRange(row.m_date, row.m_slot))
            << row.m_name;
    }
}

TEST_F(TVDateSlotTest, CorrectExpandAndExtend)
{
    TVDateSlot half(TVDate(), at(10), false);
    EXPECT_TRUE(half.correct());
    EXPECT_EQ("10-10", text(half));
    TVDateSlot none;
    EXPECT_FALSE(none.correct());

    EXPECT_EQ("9-12", text(TVDateSlot::expand(hours(11, 12), hours(9, 10))));
    EXPECT_EQ("11-12", text(TVDateSlot::expand(hours(11, 12), TVDateSlot())));

    TVDateSlot grown;
    grown.extend(at(11));
    EXPECT_EQ("11-11", text(grown));
    grown.extend(at(9));
    grown.extend(TVDate(TVDate::E_DateBlank));
    EXPECT_EQ("9-11", text(grown));
}

TEST_F(TVDateSlotTest, StreamFormReadsBackAndWritesTheSameBytes)
{
    struct Row
    {
        const char* m_name;
        TVDateSlot m_slot;
        char m_mark;
    };
    const Row rows[] = {
        {"a moment writes &", TVDateSlot(at(9)), '&'},
        {"a span writes =", hours(9, 10), '='},
        {"zones and micro", TVDateSlot(TVDate(2021, 2, 9, 9, 0, 0, 5, 72001), at(11), false), '='},
        {"blank", TVDateSlot::C_Blank, '&'},
    };
    for (const Row& row : rows) {
        std::ostringstream out;
        out << row.m_slot;
        EXPECT_NE(std::string::npos, out.str().find(row.m_mark)) << row.m_name;
        std::istringstream in(out.str());
        TVDateSlot read;
        in >> read;
        EXPECT_FALSE(in.fail()) << row.m_name;
        EXPECT_EQ(row.m_slot, read) << row.m_name;
        std::ostringstream again;
        again << read;
        EXPECT_EQ(out.str(), again.str()) << row.m_name;
    }
}

TEST_F(TVDateSlotTest, StreamFormReadsASpanInSecondsAndRefusesOtherMarks)
{
    std::ostringstream start;
    start << at(10);
    TVDateSlot slot;
    std::istringstream forward(start.str() + "+3600");
    forward >> slot;
    EXPECT_EQ("10-11", text(slot));
    std::istringstream backward(start.str() + "+-3600");
    backward >> slot;
    EXPECT_EQ("9-10", text(slot));
    std::istringstream wrong(start.str() + "#3600");
    wrong >> slot;
    EXPECT_TRUE(wrong.fail());
    EXPECT_TRUE(slot.get_end().is_invalid());
}

TEST_F(TVDateSlotTest, TextForms)
{
    const TVDateSlot span = hours(9, 10);
    EXPECT_EQ("2021-03-10 09:00 to 2021-03-10 10:00", span.to_string("%Y-%m-%d %H:%M"));
    EXPECT_EQ("2021-03-10 09:00", TVDateSlot(at(9)).to_string("%Y-%m-%d %H:%M"));
    EXPECT_EQ("2021-03-10 09:00",
              TVDateSlot(at(9), TVDate(), false).to_string("%Y-%m-%d %H:%M"));
    // Now is Monday 15 March: the 10th lies in the week before, so "%C"
    // shows weekday and short date; the end on the same day only its time.
    EXPECT_EQ("Wed 10/03 09:00 to 10:00", span.to_string("%C"));
    EXPECT_EQ("Wed 10/03 09:00 to Thu 11/03 10:00",
              TVDateSlot(at(9), utc(2021, 3, 11, 10), false).to_string("%C"));
}

TEST_F(TVDateSlotTest, CompactForm)
{
    EXPECT_EQ("20210310", hours(9, 10).to_compact_string());
    EXPECT_EQ("2021031020210312", TVDateSlot(at(9), utc(2021, 3, 12), false).to_compact_string());
    EXPECT_EQ("20210312", TVDateSlot(TVDate(), utc(2021, 3, 12), false).to_compact_string());
    EXPECT_EQ("", TVDateSlot().to_compact_string());

    struct Row
    {
        const char* m_name;
        const char* m_text;
        const char* m_start;
        const char* m_end;
    };
    const Row rows[] = {
        {"one day", "20210310", "2021-03-10 00:00:00", "2021-03-10 23:59:59"},
        {"nine characters are still one day", "202103101", "2021-03-10 00:00:00",
         "2021-03-10 23:59:59"},
        {"a run of days", "2021031020210312", "2021-03-10 00:00:00", "2021-03-12 23:59:59"},
        {"a leap day", "20200229", "2020-02-29 00:00:00", "2020-02-29 23:59:59"},
    };
    for (const Row& row : rows) {
        TVDateSlot slot;
        EXPECT_TRUE(slot.from_compact_string(row.m_text)) << row.m_name;
        EXPECT_EQ(row.m_start, gmt_text(slot.get_start())) << row.m_name;
        EXPECT_EQ(row.m_end, gmt_text(slot.get_end())) << row.m_name;
    }
    TVDateSlot kept = hours(9, 10);
    EXPECT_FALSE(kept.from_compact_string("2021031"));
    EXPECT_EQ(hours(9, 10), kept);
}

TEST_F(TVDateSlotTest, SlotSeriesDividesFromTheStartOfTheDay)
{
    std::vector<TVDateSlot> series =
        TVDateSlot::slot_series(at(15), utc(2021, 3, 12), 4);
    ASSERT_EQ(4u, series.size());
    const char* expected[][2] = {{"2021-03-10 00:00:00", "2021-03-10 12:00:00"},
                                 {"2021-03-10 12:00:00", "2021-03-11 00:00:00"},
                                 {"2021-03-11 00:00:00", "2021-03-11 12:00:00"},
                                 {"2021-03-11 12:00:00", "2021-03-12 00:00:00"}};
    for (size_t i = 0; i < series.size(); ++i) {
        EXPECT_EQ(expected[i][0], gmt_text(series[i].get_start())) << i;
        EXPECT_EQ(expected[i][1], gmt_text(series[i].get_end())) << i;
    }
    // Thirds of a second: the pieces meet exactly and the last ends on time.
    std::vector<TVDateSlot> thirds = TVDateSlot::slot_series(at(0), TVDate(2021, 2, 9, 0, 0, 1, 0, 0), 3);
    ASSERT_EQ(3u, thirds.size());
    EXPECT_EQ(333333, thirds[0].get_end().get_microsecond());
    EXPECT_EQ(thirds[0].get_end(), thirds[1].get_start());
    EXPECT_EQ(TVDate(2021, 2, 9, 0, 0, 1, 0, 0), thirds[2].get_end());
    EXPECT_TRUE(TVDateSlot::slot_series(at(15), utc(2021, 3, 12), 0).empty());
    EXPECT_TRUE(TVDateSlot::slot_series(at(15), utc(2021, 3, 9), 2).empty());
}

TEST_F(TVDateSlotTest, DayWeekMonthAndYearSlots)
{
    const TVDate date = at(15, 30); // Wednesday; weeks begin on Monday
    struct Row
    {
        const char* m_name;
        TVDateSlot m_slot;
        const char* m_start;
        const char* m_end;
    };
    const Row rows[] = {
        {"day", TVDateUtils::day_slot(date), "2021-03-10 00:00:00", "2021-03-10 23:59:59"},
        {"week", TVDateUtils::week_slot(date), "2021-03-08 00:00:00", "2021-03-14 23:59:59"},
        {"month", TVDateUtils::month_slot(date), "2021-03-01 00:00:00", "2021-03-31 23:59:59"},
        {"year", TVDateUtils::year_slot(date), "2021-01-01 00:00:00", "2021-12-31 23:59:59"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_start, gmt_text(row.m_slot.get_start())) << row.m_name;
        EXPECT_EQ(row.m_end, gmt_text(row.m_slot.get_end())) << row.m_name;
    }
}
