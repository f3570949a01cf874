#include "LibDate/core/tvduration.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport/tvdatetestenv.h"

namespace {

struct Fields
{
    long m_days;
    long m_seconds;
    int m_micro;
};

void expect_fields(const Fields& expected, const TVDuration& d, const std::string& what)
{
    EXPECT_EQ(expected.m_days, d.get_days()) << what;
    EXPECT_EQ(expected.m_seconds, d.get_seconds()) << what;
    EXPECT_EQ(expected.m_micro, d.get_micro()) << what;
}

std::string write_duration(const TVDuration& d)
{
    std::ostringstream out;
    out << d;
    return out.str();
}

} // namespace

using TVDurationTest = TVDateTest;

TEST_F(TVDurationTest, NormalisingCarriesAndAlignsSigns)
{
    struct Row
    {
        Fields m_in;
        Fields m_out;
    };
    const Row rows[] = {
        {{0, -1, 500000}, {0, 0, -500000}},
        {{0, 90061, 0}, {1, 3661, 0}},
        {{1, -1, 0}, {0, 86399, 0}},
        {{-1, 1, 0}, {0, -86399, 0}},
        {{0, 0, 2500000}, {0, 2, 500000}},
        {{0, 0, -2500000}, {0, -2, -500000}},
        {{0, 5, -1}, {0, 4, 999999}},
        {{1, 0, -5}, {0, 86399, 999995}}, // a zero second still borrows from the day
        {{-1, 0, 5}, {0, -86399, -999995}},
        {{2, -3 * 86400, 0}, {-1, 0, 0}},
        {{1, -86399, -1}, {0, 0, 999999}},
        {{0, 0, 0}, {0, 0, 0}},
    };
    for (const Row& row : rows) {
        TVDuration d(row.m_in.m_days, row.m_in.m_seconds, row.m_in.m_micro);
        expect_fields(row.m_out, d,
                      std::to_string(row.m_in.m_days) + "/" + std::to_string(row.m_in.m_seconds) +
                          "/" + std::to_string(row.m_in.m_micro));
    }
    expect_fields({1, 3600, 0}, TVDuration(90000), "seconds constructor");
}

TEST_F(TVDurationTest, ArithmeticAndConversions)
{
    const TVDuration dayAndHalf(1, 43200, 0);
    expect_fields({1, 43200, 0}, TVDuration(1, 0, 0) * 1.5, "1 day * 1.5");
    expect_fields({0, 3, 0}, TVDuration(0, 10, 0) * 0.25, "10 s * 0.25 rounds up");
    expect_fields({0, 1, 500000}, TVDuration(0, 0, 750000) * 2.0, "micro carries");
    expect_fields({2, 0, 0}, dayAndHalf + TVDuration(0, 43200, 0), "sum");
    expect_fields({0, -1, 0}, TVDuration(0, 5, 0) - TVDuration(0, 6, 0), "difference");
    TVDuration total(0, 50, 0);
    total += TVDuration(0, 20, 0);
    total -= TVDuration(0, 5, 0);
    EXPECT_EQ(65L, total.get_as_seconds());

    EXPECT_DOUBLE_EQ(3.0, TVDuration(3, 0, 0) / TVDuration(1, 0, 0));
    EXPECT_DOUBLE_EQ(0.0, TVDuration(3, 0, 0) / TVDuration());
    EXPECT_DOUBLE_EQ(1.5, dayAndHalf.get_as_days());
    EXPECT_DOUBLE_EQ(90.25, TVDuration(0, 90, 250000).get_as_dseconds());
    EXPECT_EQ(129600L, dayAndHalf.get_as_seconds());
    EXPECT_EQ(1L, TVDuration(0, 5399, 0).get_as_hours());
    EXPECT_EQ(2L, TVDuration(0, 5400, 0).get_as_hours());
    EXPECT_EQ(36L, dayAndHalf.get_as_hours());

    long days = 0;
    int hours = 0, minutes = 0, seconds = 0, micro = 0;
    TVDuration(2, 3 * 3600 + 4 * 60 + 5, 6).get_breakdown(days, hours, minutes, seconds, micro);
    EXPECT_EQ((std::vector<long>{2, 3, 4, 5, 6}), (std::vector<long>{days, hours, minutes, seconds, micro}));
}

TEST_F(TVDurationTest, ComparesWithDurationsAndSeconds)
{
    const TVDuration ninety(0, 90, 0);
    EXPECT_TRUE(ninety == 90L && ninety > 89L && ninety < 91L);
    EXPECT_FALSE(TVDuration(0, 90, 1) == 90L);  // the microsecond counts
    EXPECT_TRUE(TVDuration(0, 90, 1) > 90L);
    EXPECT_TRUE(TVDuration(0, -1, 0) < TVDuration(0, 0, -1));
    EXPECT_TRUE(TVDuration(1, 0, 0) > TVDuration(0, 86399, 999999));
    EXPECT_TRUE(TVDuration(-1, 0, 0) < TVDuration(0, -86399, 0));
    EXPECT_TRUE(ninety >= TVDuration(90) && ninety <= TVDuration(90));
    EXPECT_TRUE(ninety != TVDuration(91));
}

TEST_F(TVDurationTest, TextCountsHoursPastADay)
{
    struct Row
    {
        TVDuration m_d;
        bool m_withSeconds;
        const char* m_text;
        const char* m_dayText;
    };
    const Row rows[] = {
        {TVDuration(90), false, "00:01:30", "00:01:30"},
        {TVDuration(36 * 3600), false, "36:00", "1 day 12:00"},
        {TVDuration(36 * 3600), true, "36:00:00", "1 day 12:00:00"},
        {TVDuration(0, 5, 250), false, "00:00:05.000250", "00:00:05.000250"},
        {TVDuration(0, 0, 250), false, "00:00:00.000250", "00:00:00.000250"},
        {TVDuration(3, 0, 0), true, "72:00:00", "3 days 00:00:00"},
        {TVDuration(0, -90, 0), false, "-00:01:30", "-00:01:30"},
        {TVDuration(-2, -3600, 0), false, "-49:00", "-01:00"}, // no days in front
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_text, row.m_d.to_string(row.m_withSeconds));
        EXPECT_EQ(row.m_dayText, row.m_d.to_string_day(row.m_withSeconds));
    }
}

TEST_F(TVDurationTest, StreamFormHasFixedFields)
{
    struct Row
    {
        TVDuration m_d;
        const char* m_text;
    };
    const Row rows[] = {
        {TVDuration(1, 3661, 0), "0000000100003661@"},
        {TVDuration(1, 3661, 5), "0000000100003661000005@"},
        {TVDuration(0, -5, -999999), "00000000-0000005-999999@"},
        {TVDuration(-12, -1, 0), "-0000012-0000001@"},
        {TVDuration(), "0000000000000000@"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_text, write_duration(row.m_d));
        std::istringstream in(row.m_text);
        TVDuration back(7, 7, 7);
        in >> back;
        EXPECT_EQ(row.m_d, back) << row.m_text;
        EXPECT_EQ(std::char_traits<char>::eof(), in.peek()) << "the @ is consumed";
    }
    // Another ending stays in the stream; nothing at all fails.
    std::istringstream in("0000000100003661;x");
    TVDuration d;
    in >> d;
    EXPECT_EQ(TVDuration(1, 3661, 0), d);
    EXPECT_EQ(';', in.get());
    std::istringstream bad("x");
    EXPECT_FALSE(static_cast<bool>(bad >> d));
    EXPECT_EQ(TVDuration(), d);
}

TEST_F(TVDurationTest, StreamFormRoundTripsRandomDurations)
{
    const unsigned seed = 86400;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<long> days(-1000000, 1000000);
    std::uniform_int_distribution<long> seconds(-200000, 200000);
    std::uniform_int_distribution<int> micro(-3000000, 3000000);
    for (int i = 0; i < 2000; ++i) {
        TVDuration d(days(random), seconds(random), i % 3 == 0 ? 0 : micro(random));
        std::string text = write_duration(d);
        std::istringstream in(text + text);
        TVDuration first, second;
        in >> first >> second;
        ASSERT_EQ(d, first) << text;
        ASSERT_EQ(d, second) << text;
        ASSERT_EQ(text, write_duration(first));
    }
}

TEST_F(TVDurationTest, EntryFormReadsNumbersAndUnits)
{
    tvlocale()->set_workhours(8.0);
    struct Row
    {
        const char* m_text;
        long m_seconds;
        int m_micro;
    };
    const Row rows[] = {
        {"1:30", 5400, 0},       {"1:2:3", 3723, 0},       {"90M", 5400, 0},
        {"2H", 7200, 0},         {"1h30m", 5400, 0},       {"1h 30m", 5400, 0},
        {"45s", 45, 0},          {"1D", 8 * 3600, 0},      {"2d 1h", 17 * 3600, 0},
        {"1:2:3:4", 3723, 4},    {"1:2:3:4:5", 3723 + 5 * 8 * 3600, 4},
        {"", 600, 0},            {"soon", 600, 0},         {"250000U", 600, 0},
        {"3X", 600, 0},          {"3X 2", 2 * 3600, 0},    {"10S 500000U", 10, 500000},
        // "." is a token of its own: "1.5H" is 1 (hours), . (0, minutes)
        // and then 5 with the unit H, which replaces the hours.
        {"1.5H", 5 * 3600, 0},
    };
    for (const Row& row : rows) {
        TVDuration d(9, 9, 9);
        EXPECT_TRUE(d.from_string(row.m_text, 600));
        EXPECT_EQ(TVDuration(0, row.m_seconds, row.m_micro), d) << '"' << row.m_text << '"';
    }
    tvlocale()->set_workhours(7.5);
    EXPECT_EQ(TVDuration(0, 27000, 0), TVDateUtils::read_duration("1D"));
    EXPECT_EQ(TVDuration(), TVDateUtils::read_duration("nothing"));
}
