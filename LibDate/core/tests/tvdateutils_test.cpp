#include "LibDate/core/tvdateutils.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport/tvdatetestenv.h"

using TVDateUtilsTest = TVDateTest;

namespace {

// Zones of the tests: twice the offset in seconds, DST one further from 0.
const int C_Gmt10 = 72000;
const int C_Gmt10Dst = 72001;
const int C_Gmt5West = -36000;
const int C_Gmt5WestDst = -36001;
const int C_Gmt530 = 2 * (5 * 3600 + 30 * 60);

} // namespace

TEST_F(TVDateUtilsTest, ZoneOffsetsAndFlags)
{
    struct Row
    {
        int m_zone;
        int m_withDst, m_withoutDst;
        bool m_isDst;
    };
    const Row rows[] = {
        {0, 0, 0, false},
        {1, 3600, 0, true},
        {C_Gmt10, 36000, 36000, false},
        {C_Gmt10Dst, 39600, 36000, true},
        {C_Gmt5West, -18000, -18000, false},
        {C_Gmt5WestDst, -14400, -18000, false}, // negative odd: no DST by zone_is_dst
        {C_Gmt530, 19800, 19800, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_withDst, TVDateUtils::zone_to_seconds(row.m_zone, true)) << row.m_zone;
        EXPECT_EQ(row.m_withoutDst, TVDateUtils::zone_to_seconds(row.m_zone, false)) << row.m_zone;
        EXPECT_EQ(row.m_isDst, TVDateUtils::zone_is_dst(row.m_zone)) << row.m_zone;
    }

    struct ToZone
    {
        long m_seconds;
        bool m_isDst, m_removeDst;
        int m_zone;
    };
    const ToZone toZone[] = {
        {36000, false, false, C_Gmt10}, {39600, true, true, C_Gmt10Dst},
        {-14400, true, true, C_Gmt5WestDst}, {0, true, false, 1},
        {3600, true, true, 1}, {90000, false, false, 0}, {-86401, false, false, 0},
    };
    for (const ToZone& row : toZone)
        EXPECT_EQ(row.m_zone, TVDateUtils::seconds_to_zone(row.m_seconds, row.m_isDst, row.m_removeDst))
            << row.m_seconds;

    struct Flag
    {
        int m_zone;
        bool m_set;
        int m_result;
    };
    const Flag flags[] = {
        {C_Gmt10, true, C_Gmt10Dst},      {C_Gmt10Dst, true, C_Gmt10Dst},
        {C_Gmt5West, true, C_Gmt5WestDst}, {0, true, 1},
        {C_Gmt10Dst, false, C_Gmt10},     {C_Gmt10, false, C_Gmt10},
        {C_Gmt5WestDst, false, C_Gmt5WestDst}, // kept: the counterpart of zone_is_dst
    };
    for (const Flag& row : flags)
        EXPECT_EQ(row.m_result, TVDateUtils::set_dst_flag(row.m_zone, row.m_set)) << row.m_zone;

    EXPECT_TRUE(TVDateUtils::zones_equivalent(C_Gmt10, C_Gmt10Dst));
    EXPECT_TRUE(TVDateUtils::zones_equivalent(C_Gmt5West, C_Gmt5WestDst));
    EXPECT_TRUE(TVDateUtils::zones_equivalent(1, -1));
    EXPECT_FALSE(TVDateUtils::zones_equivalent(C_Gmt10, C_Gmt10 - 2));
}

TEST_F(TVDateUtilsTest, ZoneTexts)
{
    tvlocale()->set_timezone(C_Gmt10);
    struct Row
    {
        int m_zone, m_original;
        const char* m_text;
    };
    const Row rows[] = {
        {0, 0, "GMT"},
        {-1, 0, "GMT"},
        {1, 0, "GMT DST"},
        {C_Gmt10, 0, "GMT+10"},
        {C_Gmt10Dst, 0, "GMT+10 DST"},
        {C_Gmt530, 0, "GMT+05:30"},
        {-2 * (3 * 3600 + 1800), 0, "GMT-03:30"},
        {2 * (5 * 3600 + 30 * 60 + 15), 0, "GMT+05:30:15"},
        {2 * (3600 + 15), 0, "GMT+01"}, // seconds without minutes are not shown
        {C_Gmt5WestDst, 0, "GMT-05"},
        {TVDate::C_LocalTime, 0, "Local Time"},
        {TVDate::C_OriginalTime, C_Gmt10Dst, "Keep (GMT+10 DST)"},
        {TVDate::C_OriginalTime, TVDate::C_LocalTime, "Keep (Local Time)"},
        {TVDate::C_OriginalTime, TVDate::C_OriginalTime, "Keep"},
        {TVDate::C_DefaultTime, 0, "GMT+10"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_text, TVDateUtils::zone_to_string(row.m_zone, row.m_original)) << row.m_zone;
    tvlocale()->set_timezone(TVDate::C_OriginalTime);
    EXPECT_EQ("Keep", TVDateUtils::zone_to_string(TVDate::C_DefaultTime, 0));
}

TEST_F(TVDateUtilsTest, SymbolicZonesExpand)
{
    use_zone(C_NewYorkZone);
    TVDate july(2021, 181, 0, 0, C_Gmt10); // 1 July, labelled GMT+10
    TVDate january(2021, 9, 0, 0, TVDate::C_OriginalTime);
    struct Row
    {
        int m_zone;
        TVDate m_date;
        int m_localeZone;
        int m_expanded;
    };
    const Row rows[] = {
        {C_Gmt530, july, TVDate::C_LocalTime, C_Gmt530},
        {TVDate::C_OriginalTime, july, TVDate::C_LocalTime, C_Gmt10},
        {TVDate::C_DefaultTime, july, -7200, -7200},
        {TVDate::C_DefaultTime, july, TVDate::C_LocalTime, C_Gmt5WestDst},
        {TVDate::C_LocalTime, january, -7200, C_Gmt5West},
        {123456, july, -7200, -7200}, // out of range: taken as symbolic
        // "Keep" all the way down ends as local time.
        {TVDate::C_OriginalTime, january, TVDate::C_OriginalTime, C_Gmt5West},
    };
    for (const Row& row : rows) {
        tvlocale()->set_timezone(row.m_localeZone);
        EXPECT_EQ(row.m_expanded, TVDateUtils::expand_timezone(row.m_zone, row.m_date))
            << row.m_zone << " locale " << row.m_localeZone;
    }
}

TEST_F(TVDateUtilsTest, DaylightSavingComesFromTheZoneRules)
{
    struct Row
    {
        const TVZoneScenario* m_zone;
        int m_year, m_month, m_day; // calendar, from 1
        bool m_dst;
    };
    const Row rows[] = {
        {&C_NewYorkZone, 2021, 3, 13, false}, {&C_NewYorkZone, 2021, 3, 14, true},
        {&C_NewYorkZone, 2021, 11, 6, true},  {&C_NewYorkZone, 2021, 11, 7, false},
        {&C_SydneyZone, 2021, 4, 3, true},    {&C_SydneyZone, 2021, 4, 4, false},
        {&C_SydneyZone, 2021, 10, 2, false},  {&C_SydneyZone, 2021, 10, 3, true},
        {&C_GmtZone, 2021, 7, 1, false},
    };
    for (const Row& row : rows) {
        use_zone(*row.m_zone);
        EXPECT_EQ(row.m_dst, TVDateUtils::date_is_dst(row.m_day - 1, row.m_month - 1, row.m_year))
            << row.m_zone->m_name << " " << row.m_month << "/" << row.m_day;
    }

    use_zone(C_SydneyZone);
    EXPECT_TRUE(TVDateUtils::date_is_local(local(utc(2021, 1, 1))));
    EXPECT_FALSE(TVDateUtils::date_is_local(TVDate(2021, 0, 0, 0, 0, 0, 0, C_Gmt10)));
    EXPECT_FALSE(TVDateUtils::date_is_local(utc(2021, 1, 1)));
}

TEST_F(TVDateUtilsTest, LocalIsDstIsAskedOnceUntilTheCachesAreCleared)
{
    use_zone(C_NewYorkZone);
    set_now(1625097600, 0); // 1 July 2021
    EXPECT_TRUE(TVDateUtils::local_is_dst());
    setenv("TZ", "EST5", 1); // no summer time at all
    tzset();
    EXPECT_TRUE(TVDateUtils::local_is_dst());
    TVDateUtils::clear_caches();
    EXPECT_FALSE(TVDateUtils::local_is_dst());
}

TEST_F(TVDateUtilsTest, RoundingKeepsTheDatesOwnZone)
{
    use_zone(C_SydneyZone);
    tvlocale()->set_firstday(1);
    // Wednesday 17 March 2021, 15:45:30.5 AEDT.
    TVDate date = local(utc(2021, 3, 17, 4, 45, 30, 500000));
    struct Row
    {
        const char* m_name;
        TVDate m_result;
        const char* m_local; // the result as read on a Sydney clock
    };
    const Row rows[] = {
        {"round_hour", TVDateUtils::round_hour(date), "2021-03-17 15:00:00.000000"},
        {"round_minute", TVDateUtils::round_minute(date), "2021-03-17 15:45:00.000000"},
        {"start_day", TVDateUtils::start_day(date), "2021-03-17 00:00:00.000000"},
        {"end_day", TVDateUtils::end_day(date), "2021-03-17 23:59:59.000000"},
        {"start_week", TVDateUtils::start_week(date), "2021-03-15 00:00:00.000000"},
        {"end_week", TVDateUtils::end_week(date), "2021-03-21 23:59:59.000000"},
        {"start_month", TVDateUtils::start_month(date), "2021-03-01 00:00:00.000000"},
        {"end_month", TVDateUtils::end_month(date), "2021-03-31 23:59:59.000000"},
        {"start_year", TVDateUtils::start_year(date), "2021-01-01 00:00:00.000000"},
        {"end_year", TVDateUtils::end_year(date), "2021-12-31 23:59:59.000000"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_local, row.m_result.to_string("%Y-%m-%d %H:%M:%U")) << row.m_name;
        EXPECT_EQ(C_Gmt10Dst, row.m_result.get_timezone()) << row.m_name;
    }
    // The end of April is in winter time: 23:59:59 AEST is 13:59:59 GMT.
    TVDate april = TVDateUtils::end_month(local(utc(2021, 4, 1)));
    EXPECT_EQ("2021-04-30 13:59:59", gmt_text(april));
    EXPECT_EQ(C_Gmt10, april.get_timezone());
    // February of a leap year ends on the 29th.
    EXPECT_EQ("2020-02-29 23:59:59", gmt_text(TVDateUtils::end_month(utc(2020, 2, 10))));
    // Weeks from Sunday.
    tvlocale()->set_firstday(0);
    EXPECT_EQ("2021-03-14", TVDateUtils::start_week(date).to_string("%Y-%m-%d"));
    EXPECT_TRUE(TVDateUtils::start_day(TVDate::C_Blank).is_blank());

    TVDate plain = TVDateUtils::ignore_zone(date);
    EXPECT_EQ("2021-03-17 15:45:30", gmt_text(plain));
    EXPECT_EQ(0, plain.get_timezone());
    EXPECT_EQ(500000, plain.get_microsecond());
}

TEST_F(TVDateUtilsTest, CalendarHelpersNormaliseMonthsAndDays)
{
    struct Row
    {
        int m_year, m_month, m_day;
        int m_outYear, m_dayOfYear;
    };
    const Row rows[] = {
        {2021, 0, -1, 2020, 365},  {2021, 12, 0, 2022, 0},   {2021, -13, 0, 2019, 334},
        {2020, 1, 28, 2020, 59},   {2021, 1, 28, 2021, 59},  {2021, 0, 730, 2023, 0},
        {0, 0, -1, -1, 364},       {-4, 1, 28, -4, 59}, // proleptic leap year
    };
    for (const Row& row : rows) {
        int year = 0, dayOfYear = 0;
        TVDateUtils::calc_yearday(row.m_year, row.m_month, row.m_day, year, dayOfYear);
        EXPECT_EQ(row.m_outYear, year) << row.m_year << "/" << row.m_month << "/" << row.m_day;
        EXPECT_EQ(row.m_dayOfYear, dayOfYear) << row.m_year << "/" << row.m_month << "/" << row.m_day;
    }
    int year = 0, month = 0, day = 0;
    TVDateUtils::breakdown_yearday(365, 2020, year, month, day);
    EXPECT_EQ(2020, year); // 31 December of a leap year
    EXPECT_EQ(11, month);
    EXPECT_EQ(30, day);
    TVDateUtils::breakdown_yearday(-1, 2021, year, month, day);
    EXPECT_EQ(2020, year);
    EXPECT_EQ(30, day);
    EXPECT_EQ(31, TVDateUtils::days_in_month(-1, 2021)); // December 2020
    EXPECT_EQ(29, TVDateUtils::days_in_month(13, 2019)); // February 2020
}

TEST_F(TVDateUtilsTest, TokensSplitByKind)
{
    using Tokens = std::vector<std::string>;
    struct Row
    {
        const char* m_text;
        Tokens m_tokens;
    };
    const Row rows[] = {
        {"12ab 3\t\n:x", {"12", "AB", " ", "3", " ", ":", "X"}},
        {"1.5h", {"1", ".", "5", "H"}},
        {"  Tomorrow+3pm", {" ", "TOMORROW", "+", "3", "PM"}},
        {"(Mon|Thu)", {"(", "MON", "|", "THU", ")"}},
        {"", {}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_tokens, TVDateUtils::split_tokens(row.m_text)) << row.m_text;
}
