#include "LibDate/core/tvdatedetails.h"

#include <gtest/gtest.h>

#include <string>

#include "TestSupport/tvdatetestenv.h"

namespace {

// The Gregorian rule, written out here independently of the code under test.
bool calendar_leap(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

const int C_Saturday = 6;

} // namespace

class TVDateDetailsTest : public TVDateTest
{
protected:
    // Details of a calendar day (month and day from 1) at noon in GMT.
    static TVDateDetails day(int year, int month, int dayOfMonth)
    {
        return TVDateDetails(utc(year, month, dayOfMonth, 12, 0, 0), TVDate::C_GMT);
    }
};

TEST_F(TVDateDetailsTest, WholeGregorianCycleAgreesWithTheCalendar)
{
    // 1 January 2000 was a Saturday; each year moves the weekday on by its
    // length, and 400 years later the cycle closes on a Saturday again.
    int weekday = C_Saturday;
    long cycleDays = 0;
    for (int year = 2000; year < 2400; ++year) {
        int length = calendar_leap(year) ? 366 : 365;
        TVDateDetails jan1 = day(year, 1, 1);
        ASSERT_EQ(weekday, jan1.m_dayWeek) << year;
        ASSERT_EQ(length, TVDateUtils::days_in_year(year)) << year;
        ASSERT_EQ(calendar_leap(year) ? 29 : 28, TVDateUtils::days_in_month(1, year)) << year;
        // 29 February exists only in leap years; otherwise it is 1 March.
        TVDateDetails feb29 = day(year, 2, 29);
        ASSERT_EQ(calendar_leap(year) ? 1 : 2, feb29.m_month) << year;
        ASSERT_EQ(calendar_leap(year) ? 28 : 0, feb29.m_dayMonth) << year;
        // 31 December is the last day, and the next one is 1 January.
        TVDateDetails dec31 = day(year, 12, 31);
        ASSERT_EQ(length - 1, dec31.m_dayYear) << year;
        dec31.m_dayMonth += 1;
        dec31.recalculate();
        ASSERT_EQ(year + 1, dec31.m_year);
        ASSERT_EQ(0, dec31.m_dayYear);
        weekday = (weekday + length) % 7;
        cycleDays += length;
    }
    EXPECT_EQ(146097, cycleDays);
    EXPECT_EQ(C_Saturday, weekday);
    EXPECT_EQ(C_Saturday, day(2400, 1, 1).m_dayWeek);
    EXPECT_EQ(146097, (utc(2400, 1, 1) - utc(2000, 1, 1)).get_days());
}

TEST_F(TVDateDetailsTest, WeekdaysOfKnownDays)
{
    struct Row
    {
        int m_year, m_month, m_day;
        int m_weekday;
        const char* m_what;
    };
    const Row rows[] = {
        {1582, 10, 15, 5, "first Gregorian day, a Friday"},
        {1600, 1, 1, 6, "proleptic Saturday"},
        {1900, 1, 1, 1, "Monday"},
        {1969, 7, 20, 0, "Moon landing, a Sunday"},
        {1970, 1, 1, 4, "the epoch, a Thursday"},
        {2000, 2, 29, 2, "Tuesday"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_weekday, day(row.m_year, row.m_month, row.m_day).m_dayWeek) << row.m_what;
}

TEST_F(TVDateDetailsTest, WeekNumbersStartOnTheLocalesFirstDay)
{
    // Count, day by day through 2021, the week starts passed since 1 January
    // (a Friday), for weeks from Monday and from Sunday.
    for (int firstday : {1, 0}) {
        tvlocale()->set_firstday(firstday);
        int week = 0;
        int weekday = 5;
        for (int d = 0; d < 365; ++d) {
            if (d > 0 && weekday == firstday)
                ++week;
            TVDateDetails details = day(2021, 1, d + 1);
            ASSERT_EQ(week, details.m_weekYear) << "firstday " << firstday << " day " << d;
            if (details.m_dayMonth == 0) {
                ASSERT_EQ(0, details.m_weekMonth) << "the 1st is in week 0";
            }
            weekday = (weekday + 1) % 7;
        }
    }
    // Sunday 14 March 2021: week 10 from Mondays, week 11 from Sundays.
    tvlocale()->set_firstday(1);
    EXPECT_EQ("010", utc(2021, 3, 14).to_string("%W"));
    tvlocale()->set_firstday(0);
    EXPECT_EQ("011", utc(2021, 3, 14).to_string("%W"));
    EXPECT_EQ("000", utc(2022, 1, 1).to_string("%W"));
}

TEST_F(TVDateDetailsTest, FieldsOutOfRangeComeBackIntoRange)
{
    TVDateDetails d = day(2021, 3, 15);
    d.m_hour = -1;
    d.recalculate();
    EXPECT_EQ(13, d.m_dayMonth); // 14 March, 23:00
    EXPECT_EQ(23, d.m_hour);
    d.m_month = -3;
    d.m_dayMonth = 40;
    d.recalculate();
    EXPECT_EQ(2020, d.m_year); // 41 October 2020 = 10 November
    EXPECT_EQ(10, d.m_month);
    EXPECT_EQ(9, d.m_dayMonth);
    d.m_dayMonth = -1 - 146097; // 400 years and a day back
    d.recalculate();
    EXPECT_EQ(1620, d.m_year);
    EXPECT_EQ(9, d.m_month);
    EXPECT_EQ(30, d.m_dayMonth);
    d.add_seconds(3 * 3600);
    EXPECT_EQ(10, d.m_month); // 1 November 1620, 02:00
    EXPECT_EQ(2, d.m_hour);

    // A negative micro borrows a second and keeps its remainder modulo 60,
    // the way this has always worked.
    TVDateDetails m = day(2021, 3, 15);
    m.m_micro = -1;
    m.recalculate();
    EXPECT_EQ(59, m.m_second);
    EXPECT_EQ(11, m.m_hour);
    EXPECT_EQ(999999 % 60, m.m_micro);
    // A positive excess of micro is carried only alongside a second to carry.
    TVDateDetails p = day(2021, 3, 15);
    p.m_micro = 2500000;
    p.recalculate();
    EXPECT_EQ(2500000, p.m_micro);
    p.m_second = 60;
    p.recalculate();
    EXPECT_EQ(2, p.m_second); // 60 s and 2.5 s make 1 min 2.5 s
    EXPECT_EQ(1, p.m_minute);
    EXPECT_EQ(500000, p.m_micro);
}

TEST_F(TVDateDetailsTest, NthAndLastWeekdayOfAMonth)
{
    struct Row
    {
        int m_weekday, m_occurrence, m_month, m_year;
        int m_wantMonth, m_wantDay; // calendar day, from 1
    };
    const Row rows[] = {
        {1, 1, 2, 2021, 2, 8},  // 2nd Monday of March 2021
        {1, 0, 2, 2021, 2, 1},  // 1st Monday: 1 March itself
        {5, 5, 3, 2021, 3, 30}, // last Friday of April 2021
        {1, 5, 1, 2021, 1, 22}, // last Monday of a 28-day February starting on Monday
        {1, 4, 1, 2021, 2, 1},  // a 5th Monday of that February runs into March
        {3, 5, 1, 2020, 1, 26}, // last Wednesday of February 2020
        {6, 5, 4, 2021, 4, 29}, // last Saturday of May 2021
    };
    for (const Row& row : rows) {
        TVDateDetails d = day(2000, 1, 1);
        d.set_weekdayno(row.m_weekday, row.m_occurrence, row.m_month, row.m_year);
        EXPECT_EQ(row.m_wantMonth, d.m_month) << row.m_weekday << "/" << row.m_occurrence;
        EXPECT_EQ(row.m_wantDay - 1, d.m_dayMonth) << row.m_weekday << "/" << row.m_occurrence;
        EXPECT_EQ(row.m_weekday, d.m_dayWeek);
    }
}

TEST_F(TVDateDetailsTest, WeekdayWithinTheWeekOfADay)
{
    // Sunday in the week of Monday 15 March 2021.
    tvlocale()->set_firstday(1);
    TVDateDetails d = day(2000, 1, 1);
    d.set_weekday(0, 14, 2, 2021);
    EXPECT_EQ(20, d.m_dayMonth); // 21 March
    tvlocale()->set_firstday(0);
    d.set_weekday(0, 14, 2, 2021);
    EXPECT_EQ(13, d.m_dayMonth); // 14 March
    d.set_weekday(5, 14, 2, 2021);
    EXPECT_EQ(18, d.m_dayMonth); // Friday 19 March
}

TEST_F(TVDateDetailsTest, DayOfYearWalksTheMonths)
{
    TVDateDetails d = day(2020, 6, 1);
    d.set_dayyear(59);
    EXPECT_EQ(1, d.m_month); // 29 February 2020
    EXPECT_EQ(28, d.m_dayMonth);
    d.set_dayyear(366);
    EXPECT_EQ(2021, d.m_year);
    EXPECT_EQ(0, d.m_dayYear);
    d.set_dayyear(4000); // beyond 100 months: nothing changes
    EXPECT_EQ(2021, d.m_year);
    EXPECT_EQ(0, d.m_dayYear);
}

TEST_F(TVDateDetailsTest, LocalDatesChangeOffsetWithTheSeasons)
{
    // Sydney: moving from 23:34:56 AEDT on 15 March to 14 April (AEST) keeps
    // the clock reading, so the GMT moment moves by 30 days and one hour.
    use_zone(C_SydneyZone);
    TVDateDetails d(utc(2021, 3, 15, 12, 34, 56), TVDate::C_LocalTime);
    EXPECT_EQ(72001, d.m_timeZone);
    EXPECT_TRUE(d.m_isDST);
    d.m_dayMonth += 30;
    d.recalculate();
    EXPECT_EQ(72000, d.m_timeZone);
    EXPECT_FALSE(d.m_isDST);
    TVDate moved = d.get_date(TVDate::C_OriginalTime);
    EXPECT_EQ("2021-04-14 13:34:56", gmt_text(moved));
    EXPECT_EQ(72000, moved.get_timezone());

    // New York: noon EST on Saturday 13 March, plus a day, is noon EDT.
    use_zone(C_NewYorkZone);
    TVDateDetails w(utc(2021, 3, 13, 17, 0, 0), TVDate::C_LocalTime);
    EXPECT_EQ(12, w.m_hour);
    w.m_dayMonth += 1;
    TVDate sunday = w.get_date(TVDate::C_OriginalTime);
    EXPECT_EQ("2021-03-14 16:00:00", gmt_text(sunday));
    EXPECT_EQ(-36001, sunday.get_timezone());
    EXPECT_TRUE(TVDateUtils::date_is_local(sunday));

    // A zone that isn't local keeps its label.
    TVDateDetails fixed(utc(2021, 3, 15), 72000);
    fixed.m_month += 1;
    EXPECT_EQ(72000, fixed.get_date(TVDate::C_OriginalTime).get_timezone());
}

TEST_F(TVDateDetailsTest, GetDateLabelsTheResult)
{
    use_zone(C_SydneyZone);
    tvlocale()->set_timezone(-7200);
    TVDateDetails d(utc(2021, 7, 1, 0, 0, 0), 72000); // 10:00 AEST
    struct Row
    {
        int m_zone;
        int m_label;
    };
    const Row rows[] = {
        {TVDate::C_LocalTime, 72000}, {TVDate::C_OriginalTime, 72000},
        {TVDate::C_DefaultTime, -7200}, {36000, 36000}, {123456, 72000},
    };
    for (const Row& row : rows) {
        TVDate date = d.get_date(row.m_zone);
        EXPECT_EQ("2021-07-01 00:00:00", gmt_text(date)) << row.m_zone;
        EXPECT_EQ(row.m_label, date.get_timezone()) << row.m_zone;
    }
}
