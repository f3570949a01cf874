#include "LibDate/core/tvdate.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "LibDate/core/tvdatedetails.h"
#include "TestSupport/tvdatetestenv.h"

namespace {

std::string write_date(const TVDate& date)
{
    std::ostringstream out;
    out << date;
    return out.str();
}

TVDate read_date(const std::string& text, std::string* rest = nullptr)
{
    std::istringstream in(text);
    TVDate date(TVDate::E_DateZero);
    in >> date;
    if (rest != nullptr) {
        in.clear();
        std::getline(in, *rest);
    }
    return date;
}

} // namespace

// ---- Formatting -------------------------------------------------------------

struct FormatRow
{
    const char* m_code;
    const char* m_expected;
};

class TVDateFormatTest : public TVDateTest
{
protected:
    void expect_codes(const TVDate& date, const std::vector<FormatRow>& rows)
    {
        for (const FormatRow& row : rows)
            EXPECT_EQ(row.m_expected, date.to_string(row.m_code)) << "code " << row.m_code;
    }
};

TEST_F(TVDateFormatTest, EveryCodeInGmt)
{
    // Monday 15 March 2021, day 74 of the year; weeks from Monday put
    // 4 January at the start of week 1, so 15 March is in week 11.
    TVDate date = utc(2021, 3, 15, 12, 34, 56, 789012);
    expect_codes(date, {{"%D", "15/03/21"}, {"%E", "15/03/21"}, {"%T", "12:34:56"},
                        {"%t", "12:34:56"}, {"%i", "12:34"},    {"%a", "Mon"},
                        {"%A", "Monday"},   {"%b", "Mar"},      {"%B", "March"},
                        {"%d", "15"},       {"%e", "15"},       {"%H", "12"},
                        {"%I", "12"},       {"%j", "074"},      {"%k", "12"},
                        {"%l", "12"},       {"%m", "03"},       {"%M", "34"},
                        {"%n", "\n"},       {"%p", "PM"},       {"%P", "pm"},
                        {"%s", "1615811696"}, {"%S", "56"},     {"%u", "1"},
                        {"%U", "56.789012"}, {"%w", "1"},       {"%W", "011"},
                        {"%y", "21"},       {"%Y", "2021"},     {"%z", ""},
                        {"%Z", "GMT"}});
    // Saturday 1 January 2000, a morning: week 0, 12-hour forms padded.
    TVDate morning = utc(2000, 1, 1, 9, 5, 7);
    expect_codes(morning, {{"%e", " 1"}, {"%I", "09"}, {"%l", " 9"}, {"%p", "AM"},
                           {"%P", "am"}, {"%j", "001"}, {"%W", "000"}, {"%u", "6"},
                           {"%w", "6"}, {"%s", "946717507"}, {"%U", "07.000000"},
                           {"%y", "00"}});
    // Midnight is 12 AM and noon 12 PM on the 12-hour clock.
    expect_codes(utc(2021, 3, 15, 0, 0, 0), {{"%I", "12"}, {"%p", "AM"}, {"%t", "00:00"}});
}

TEST_F(TVDateFormatTest, EveryZoneDependentCodeEastWithSouthernSummer)
{
    use_zone(C_SydneyZone);
    // 12:34:56 GMT is 23:34:56 AEDT (GMT+11) the same day.
    TVDate summer = local(utc(2021, 3, 15, 12, 34, 56));
    EXPECT_EQ(72001, summer.get_timezone());
    expect_codes(summer, {{"%d", "15"}, {"%H", "23"}, {"%I", "11"}, {"%l", "11"},
                          {"%p", "PM"}, {"%T", "23:34:56"}, {"%j", "074"}, {"%a", "Mon"},
                          {"%s", "1615811696"}, {"%z", ""}, {"%Z", "GMT+10 DST"}});
    // 1 July 2021 (a Thursday) 00:00 GMT is 10:00 AEST, winter.
    TVDate winter = local(utc(2021, 7, 1));
    EXPECT_EQ(72000, winter.get_timezone());
    expect_codes(winter, {{"%H", "10"}, {"%a", "Thu"}, {"%j", "182"}, {"%Z", "GMT+10"},
                          {"%s", "1625097600"}});
    // Late evening GMT is already the next day in Sydney.
    expect_codes(local(utc(2021, 12, 31, 20, 0, 0)), {{"%Y", "2022"}, {"%j", "001"},
                                                       {"%H", "07"}, {"%a", "Sat"}});
}

TEST_F(TVDateFormatTest, EveryZoneDependentCodeWestWithDaylightSaving)
{
    use_zone(C_NewYorkZone);
    // 15 March 2021 is EDT (since 14 March): 12:34:56 GMT is 08:34:56.
    TVDate summer = local(utc(2021, 3, 15, 12, 34, 56));
    EXPECT_EQ(-36001, summer.get_timezone());
    // A negative zone's DST flag is not named by %Z: zone_is_dst is false
    // for negative odd zones.
    expect_codes(summer, {{"%H", "08"}, {"%I", "08"}, {"%l", " 8"}, {"%p", "AM"},
                          {"%d", "15"}, {"%Z", "GMT-05"}, {"%z", ""}});
    // Sunday 10 January 2021, 17:05:09 GMT is 12:05:09 EST.
    TVDate winter = local(utc(2021, 1, 10, 17, 5, 9));
    EXPECT_EQ(-36000, winter.get_timezone());
    expect_codes(winter, {{"%H", "12"}, {"%a", "Sun"}, {"%u", "7"}, {"%w", "0"}, {"%W", "001"},
                          {"%j", "010"}, {"%s", "1610298309"}, {"%Z", "GMT-05"}});
    // 02:00 GMT on 1 January is still New Year's Eve in New York.
    expect_codes(local(utc(2021, 1, 1, 2, 0, 0)), {{"%Y", "2020"}, {"%d", "31"}, {"%H", "21"}});
}

TEST_F(TVDateFormatTest, ZoneShownOnlyWhenNotLocal)
{
    // 23:30 in GMT+10 is 13:30 GMT the same day and prints as 23:30.
    TVDate east(2021, 2, 14, 23, 30, 0, 0, 72000);
    EXPECT_EQ(utc(2021, 3, 15, 13, 30, 0).get_second_of_day(), east.get_second_of_day());
    EXPECT_EQ(utc(2021, 3, 15).get_day_of_year(), east.get_day_of_year());
    EXPECT_EQ("23:30", east.to_string("%H:%M"));
    EXPECT_EQ("23:30:00 GMT+10", east.to_string("%T"));
    EXPECT_EQ("23:30 GMT+10|GMT+10", east.to_string("%H:%M %z|%z"));
    EXPECT_EQ("05:30 GMT+05:30", TVDate(2021, 0, 0, 5, 30, 0, 0, 2 * 19800).to_string("%i"));
    EXPECT_EQ("12:34:56", utc(2021, 3, 15, 12, 34, 56).to_string("%T"));
}

TEST_F(TVDateFormatTest, RelativeFormsDependOnDistanceFromNow)
{
    // Weeks from Monday; the date is Monday 15 March 2021, 12:34:56.
    TVDate date = utc(2021, 3, 15, 12, 34, 56);
    struct Row
    {
        const char* m_now;
        const char* m_F;
        const char* m_c;
        const char* m_C;
    };
    const Row rows[] = {
        {"today", "Mon", "Mon", "12:34:56"},
        {"same week", "Mon ", "Mon", "Mon  12:34:56"},
        {"same year", "Mon 15/03", "15/03", "Mon 15/03 12:34:56"},
        {"other year", "Mon 15/03/21", "15/03/21", "Mon 15/03/21 12:34:56"},
    };
    const long nows[] = {C_DefaultNow + 3600, C_DefaultNow + 2 * 86400, C_DefaultNow + 15 * 86400,
                         C_DefaultNow + 365 * 86400};
    for (size_t i = 0; i < 4; ++i) {
        set_now(nows[i], 0);
        EXPECT_EQ(rows[i].m_F, date.to_string("%F")) << rows[i].m_now;
        EXPECT_EQ(rows[i].m_c, date.to_string("%c")) << rows[i].m_now;
        EXPECT_EQ(rows[i].m_C, date.to_string("%C")) << rows[i].m_now;
    }
    // Week 0 always shows the year, even seen from the same day.
    TVDate newYear = utc(2021, 1, 1, 8, 0, 0);
    set_now(newYear.get_time_t(), 0);
    EXPECT_EQ("Fri 01/01/21", newYear.to_string("%F"));
    // A whole minute drops the seconds in %t and %C.
    set_now(C_DefaultNow, 0);
    EXPECT_EQ("12:34", utc(2021, 3, 15, 12, 34, 0).to_string("%C"));
}

TEST_F(TVDateFormatTest, EmptyFormatAndNonDates)
{
    TVDate date = utc(2021, 3, 15, 12, 34, 56);
    EXPECT_EQ(date.to_string(tvlocale()->date_format()), date.to_string(""));
    EXPECT_EQ("Mon 15/03/21 12:34:56", date.to_string(""));
    tvlocale()->set_24hour_clock(false);
    EXPECT_EQ("Mon 15/03/21 12:34:56 PM", date.to_string(""));
    for (const char* format : {"", "%Y", "%D %H:%M:%U", "plain"}) {
        EXPECT_EQ("", TVDate(TVDate::E_DateBlank).to_string(format));
        EXPECT_EQ("", TVDate().to_string(format));
    }
    EXPECT_EQ("0000", TVDate(TVDate::E_DateZero).to_string("%Y"));
}

// ---- Comparison and bounds --------------------------------------------------

TEST_F(TVDateTest, BlankAndInvalidSortAfterEveryRealDate)
{
    const TVDate real = utc(2021, 3, 15);
    const TVDate later = utc(2021, 3, 16);
    const TVDate blank(TVDate::E_DateBlank);
    const TVDate invalid;
    struct Row
    {
        const char* m_name;
        TVDate m_a, m_b;
        bool m_lt, m_le, m_gt, m_ge;
    };
    const Row rows[] = {
        {"real<later", real, later, true, true, false, false},
        {"later>real", later, real, false, false, true, true},
        {"equal", real, real, false, true, false, true},
        {"real<blank", real, blank, true, true, false, false},
        {"blank>real", blank, real, false, false, true, true},
        {"invalid>real", invalid, real, false, false, true, true},
        {"blank,blank", blank, blank, false, false, true, true},
        {"blank,invalid", blank, invalid, false, false, true, true},
        {"far future<blank", utc(9997, 12, 31), blank, true, true, false, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_lt, row.m_a < row.m_b) << row.m_name;
        EXPECT_EQ(row.m_le, row.m_a <= row.m_b) << row.m_name;
        EXPECT_EQ(row.m_gt, row.m_a > row.m_b) << row.m_name;
        EXPECT_EQ(row.m_ge, row.m_a >= row.m_b) << row.m_name;
        EXPECT_EQ(row.m_lt, compare_tvdates(row.m_a, row.m_b)) << row.m_name;
    }
}

TEST_F(TVDateTest, SameMomentInTwoZonesIsNeitherEqualNorOrdered)
{
    TVDate gmt = utc(2021, 3, 15, 13, 30, 0);
    TVDate east = gmt;
    east.set_timezone(72000);
    EXPECT_FALSE(gmt == east);
    EXPECT_TRUE(gmt != east);
    EXPECT_FALSE(gmt < east);
    EXPECT_FALSE(east < gmt);
    EXPECT_TRUE(gmt <= east && east <= gmt);
    EXPECT_EQ(0, (east - gmt).get_as_seconds());
}

TEST_F(TVDateTest, LatestAndEarliestWidenABound)
{
    const TVDate a = utc(2021, 3, 15);
    TVDate b = utc(2021, 3, 16);
    b.set_timezone(72000);
    const TVDate blank(TVDate::E_DateBlank);
    struct Row
    {
        TVDate m_start, m_other, m_latest, m_earliest;
    };
    const Row rows[] = {
        {a, b, b, a}, {b, a, b, a}, {blank, a, a, a}, {TVDate(), b, b, b}, {a, blank, a, a},
        {blank, blank, blank, blank},
    };
    for (const Row& row : rows) {
        TVDate latest = row.m_start;
        latest.set_latest(row.m_other);
        EXPECT_EQ(row.m_latest, latest) << write_date(row.m_start) << " " << write_date(row.m_other);
        TVDate earliest = row.m_start;
        earliest.set_earliest(row.m_other);
        EXPECT_EQ(row.m_earliest, earliest);
    }
}

// ---- Construction and arithmetic --------------------------------------------

TEST_F(TVDateTest, OutOfRangeNumbersNormaliseByTheCalendar)
{
    struct Row
    {
        TVDate m_made;
        const char* m_expected;
    };
    const Row rows[] = {
        {TVDate(2021, 0, -1, 0, 0, 0, 0, 0), "2020-12-31 00:00:00"},
        {TVDate(1900, 1, 28, 0, 0, 0, 0, 0), "1900-03-01 00:00:00"}, // 1900 is not leap
        {TVDate(2000, 1, 28, 0, 0, 0, 0, 0), "2000-02-29 00:00:00"},
        {TVDate(2021, 12, 0, 0, 0, 0, 0, 0), "2022-01-01 00:00:00"},
        {TVDate(2021, -1, 0, 0, 0, 0, 0, 0), "2020-12-01 00:00:00"},
        {TVDate(2021, 0, 365, 0, 0, 0, 0, 0), "2022-01-01 00:00:00"},
        {TVDate(2020, 0, 0, 25, 61, 61, 0, 0), "2020-01-02 02:02:01"},
        {TVDate(2020, 0, 0, 0, 0, -1, 0, 0), "2019-12-31 23:59:59"},
        {TVDate(2020, 0, 0, 0, 0, 0, 1500000, 0), "2020-01-01 00:00:01"},
        {TVDate(2021, 0, 0, 0, 30, 0, 0, 72000), "2020-12-31 14:30:00"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_expected, gmt_text(row.m_made));
    EXPECT_EQ(500000, TVDate(2020, 0, 0, 0, 0, 0, 1500000, 0).get_microsecond());
}

TEST_F(TVDateTest, SpansBetweenDatesFollowTheCalendar)
{
    struct Row
    {
        TVDate m_later, m_earlier;
        long m_days, m_seconds;
    };
    const Row rows[] = {
        {utc(2000, 1, 1), utc(1900, 1, 1), 36524, 0}, // 24 leap years: 1900 isn't one
        {utc(2021, 3, 15), utc(2020, 3, 15), 365, 0},
        {utc(2020, 3, 15), utc(2019, 3, 15), 366, 0},
        {utc(2020, 3, 1), utc(2020, 2, 28), 2, 0},
        {utc(2401, 1, 1), utc(2001, 1, 1), 146097, 0},
        {utc(2021, 1, 1, 0, 0, 1), utc(2020, 12, 31, 23, 0, 0), 0, 3601},
        {utc(1, 1, 1), TVDate(TVDate::E_DateZero), 366, 0}, // year 0 is leap
    };
    for (const Row& row : rows) {
        TVDuration span = row.m_later - row.m_earlier;
        EXPECT_EQ(row.m_days, span.get_days()) << gmt_text(row.m_later);
        EXPECT_EQ(row.m_seconds, span.get_seconds()) << gmt_text(row.m_later);
        EXPECT_EQ(row.m_later, row.m_earlier + span);
        EXPECT_EQ(row.m_earlier, row.m_later - span);
        EXPECT_EQ(-span, row.m_earlier - row.m_later);
    }
    EXPECT_EQ(TVDuration(366, 0, 0), utc(1, 1, 1).get_duration());
    TVDate blank(TVDate::E_DateBlank);
    blank += TVDuration(5, 0, 0);
    EXPECT_TRUE(blank.is_blank());
}

TEST_F(TVDateTest, TimeTIsKeptForYearsFrom1940To2030)
{
    struct Row
    {
        TVDate m_date;
        long m_timeT;
    };
    const Row rows[] = {
        {utc(2021, 3, 15, 12, 34, 56), 1615811696},
        {utc(1970, 1, 1), 0},
        {utc(1969, 12, 31, 23, 59, 59), -1},
        {utc(1940, 1, 1), -946771200}, // 10958 days before 1970
        {utc(2030, 12, 31, 23, 59, 59), 1924991999},
        {utc(1939, 12, 31, 23, 59, 59), 0},
        {utc(2031, 1, 1), 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_timeT, row.m_date.get_time_t()) << gmt_text(row.m_date);
    TVDate date;
    date.set_time_t(-1, TVDate::C_GMT);
    EXPECT_EQ("1969-12-31 23:59:59", gmt_text(date));
    date.set_time_t(1615811696, 72000);
    EXPECT_EQ("2021-03-15 12:34:56", gmt_text(date));
    EXPECT_EQ(72000, date.get_timezone());
}

TEST_F(TVDateTest, IdKeepsTheSecondAndTakesTheDefaultZone)
{
    use_zone(C_SydneyZone);
    TVDate date = utc(2021, 3, 15, 12, 34, 56, 789);
    TVId id = date.to_id();
    EXPECT_EQ(TVId(2021, 73, 45296), id);
    TVDate back;
    back.from_id(id);
    EXPECT_EQ(local(utc(2021, 3, 15, 12, 34, 56)), back);
    tvlocale()->set_timezone(-7200);
    back.from_id(id);
    EXPECT_EQ(-7200, back.get_timezone());
    back.from_id(TVDate::C_Blank.to_id());
    EXPECT_EQ(TVDate::C_Blank, back);
}

TEST_F(TVDateTest, BlankInvalidAndZeroDates)
{
    struct Row
    {
        TVDate m_date;
        bool m_blank, m_invalid, m_zero, m_ok;
    };
    const Row rows[] = {
        {TVDate(), false, true, false, false},
        {TVDate::C_Blank, true, false, false, false},
        {TVDateUtils::zero_date(), false, false, true, true},
        {utc(2021, 1, 1), false, false, false, true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_blank, row.m_date.is_blank()) << write_date(row.m_date);
        EXPECT_EQ(row.m_invalid, row.m_date.is_invalid()) << write_date(row.m_date);
        EXPECT_EQ(row.m_zero, row.m_date.is_zero()) << write_date(row.m_date);
        EXPECT_EQ(row.m_ok, row.m_date.is_ok()) << write_date(row.m_date);
        EXPECT_EQ(0, row.m_date.get_timezone());
    }
}

// ---- Parsing hook -----------------------------------------------------------

namespace {

bool fake_parser(const std::string& text, const TVRepeatConfig*, const TVDate* base, TVDate& out)
{
    if (text == "base" && base != nullptr) {
        out = *base;
        return true;
    }
    if (text == "") {
        out.set_blank();
        return true;
    }
    return false;
}

} // namespace

TEST_F(TVDateTest, FromStringGoesThroughTheParserHook)
{
    TVDate base = utc(2021, 3, 15);
    TVDate date = utc(2000, 1, 1);
    EXPECT_FALSE(date.from_string("base", nullptr, &base)); // no parser yet
    EXPECT_TRUE(date.is_invalid());

    TVDate::set_parser(&fake_parser);
    EXPECT_TRUE(date.from_string("base", nullptr, &base));
    EXPECT_EQ(base, date);
    EXPECT_TRUE(date.from_string("", nullptr, nullptr));
    EXPECT_TRUE(date.is_blank());
    EXPECT_FALSE(date.from_string("nonsense", nullptr, &base));
    EXPECT_TRUE(date.is_invalid());
    EXPECT_EQ(base, TVDate("base", nullptr, &base));
    EXPECT_EQ(base, TVDateUtils::read_date("base", nullptr, &base));
    EXPECT_TRUE(TVDate("nonsense", nullptr, &base).is_invalid());
}

// ---- Stream form ------------------------------------------------------------

TEST_F(TVDateTest, StreamFormHasFixedFields)
{
    struct Row
    {
        TVDate m_date;
        const char* m_text;
    };
    const Row rows[] = {
        {utc(2021, 3, 15, 12, 34, 56), "563412140202021000000"},
        {utc(2021, 3, 15, 12, 34, 56, 789012), "789012563412140202021000000"},
        {TVDate(2021, 2, 14, 8, 34, 56, 0, -36001), "563412140202021-36001"},
        {TVDate(TVDate::E_DateBlank), "000000000009999000000"},
        {TVDate(), "000000000009998000000"},
        {TVDate(TVDate::E_DateZero), "000000000000000000000"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_text, write_date(row.m_date));
        EXPECT_EQ(row.m_date, read_date(row.m_text)) << row.m_text;
    }
}

TEST_F(TVDateTest, StreamFormRoundTripsRandomDates)
{
    const unsigned seed = 20210315;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int i = 0; i < 2000; ++i) {
        int year = pick(1, 9997);
        TVDate date(year, pick(0, TVDateUtils::days_in_year(year) - 1), pick(0, 86399),
                    pick(0, 1) ? 0 : pick(0, 999999), pick(-43200, 43200) * 2 + pick(-1, 1) % 2);
        std::string text = write_date(date);
        TVDate back = read_date(text);
        ASSERT_EQ(date, back) << text;
        ASSERT_EQ(text, write_date(back));
    }
}

TEST_F(TVDateTest, StreamReadsOldTimeTAndQuotedForms)
{
    tvlocale()->set_timezone(TVDate::C_GMT);
    std::string rest;
    EXPECT_EQ(utc(2021, 3, 15, 12, 34, 56), read_date("1615811696 next", &rest));
    EXPECT_EQ(" next", rest);
    EXPECT_EQ(utc(1969, 12, 31, 23, 59, 59), read_date("-1"));

    // The default zone in New York takes the DST flag of the day.
    use_zone(C_NewYorkZone);
    tvlocale()->set_timezone(-36000);
    EXPECT_EQ(local(utc(2021, 7, 1)), read_date("1625097600"));
    EXPECT_EQ(local(utc(2021, 1, 10)), read_date("1610236800"));

    // A quoted expression goes to the parser; there is none installed.
    EXPECT_TRUE(read_date("\"base\"").is_invalid());
    TVDate::set_parser(&fake_parser);
    EXPECT_TRUE(read_date("\"\"x", &rest).is_blank());
    EXPECT_EQ("x", rest);

    std::istringstream empty("  ,");
    TVDate date = utc(2021, 1, 1);
    EXPECT_FALSE(static_cast<bool>(empty >> date));
    EXPECT_TRUE(date.is_invalid());

    // Month 25 of year 99999 would carry into a sixth year digit, which
    // shifts every field when written and read again.
    EXPECT_TRUE(read_date("1100002725999999").is_invalid());
    std::ostringstream written;
    written << read_date("1100002725999999");
    EXPECT_TRUE(read_date(written.str()).is_invalid());
}

// ---- Now --------------------------------------------------------------------

TEST_F(TVDateTest, NowFollowsTheTestClockAndTheDefaultZone)
{
    set_now(C_DefaultNow, 250000);
    EXPECT_EQ(utc(2021, 3, 15, 12, 34, 56), TVDateUtils::now());
    EXPECT_EQ(utc(2021, 3, 15, 12, 34, 56, 250000), TVDateUtils::unow());
    set_now(C_DefaultNow + 1, 0);
    EXPECT_EQ(utc(2021, 3, 15, 12, 34, 57), TVDateUtils::now());
    // A change of the default zone shows at once, within the same second.
    tvlocale()->set_timezone(72000);
    EXPECT_EQ(72000, TVDateUtils::now().get_timezone());
    use_zone(C_SydneyZone);
    EXPECT_EQ(72001, TVDateUtils::now().get_timezone());
}
