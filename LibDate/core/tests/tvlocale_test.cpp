#include "LibDate/core/tvlocale.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport/tvdatetestenv.h"

using TVLocaleTest = TVDateTest;

TEST_F(TVLocaleTest, DayFormatOptionsSetFormatsAndStyle)
{
    struct Row
    {
        const char* m_name;
        const char* m_day;
        const char* m_short;
        int m_style;
    };
    const Row rows[TVLocale::C_OptionCount] = {
        {"dd/mm/yy", "%d/%m/%y", "%d/%m", 1},       {"dd/mmm/yyyy", "%d/%b/%Y", "%d/%b", 1},
        {"dd-mm-yy", "%d-%m-%y", "%d-%m", 1},       {"dd-mmm-yyyy", "%d-%b-%Y", "%d-%b", 1},
        {"mm/dd/yy", "%m/%d/%y", "%m/%d", 0},       {"mm-dd-yy", "%m-%d-%y", "%m-%d", 0},
        {"mmm dd, yyyy", "%b %d, %Y", "%b %d", 0},  {"yyyy-mm-dd", "%Y-%m-%d", "%m-%d", 2},
        {"yyyy-mmm-dd", "%Y-%b-%d", "%b-%d", 2},    {"yyyy/mm/dd", "%Y/%m/%d", "%m-%d", 2},
        {"yyyy/mmm/dd", "%Y/%b/%d", "%b-%d", 2},
    };
    TVLocale* locale = tvlocale();
    for (int i = 0; i < TVLocale::C_OptionCount; ++i) {
        EXPECT_STREQ(rows[i].m_name, TVLocale::C_Option[i].m_name);
        locale->set_day_format(i);
        EXPECT_EQ(rows[i].m_day, locale->day_format(false)) << i;
        EXPECT_EQ(rows[i].m_short, locale->day_format(true)) << i;
        EXPECT_EQ(rows[i].m_style, locale->get_date_style()) << i;
        EXPECT_EQ(i, locale->get_format_number());
        EXPECT_EQ(std::string("%a ") + rows[i].m_day + " %H:%M:%S %z", locale->date_format());
    }
    locale->set_day_format(6);
    EXPECT_EQ("Mar 15, 2021", utc(2021, 3, 15).to_string("%D"));
    locale->set_day_format(TVLocale::C_OptionCount);
    EXPECT_EQ("%d/%m/%y", locale->day_format(false));
    locale->set_day_format(-1);
    EXPECT_EQ(0, locale->get_format_number());
}

TEST_F(TVLocaleTest, ClockChoiceRebuildsTheDateFormat)
{
    TVLocale* locale = tvlocale();
    locale->set_24hour_clock(false);
    EXPECT_FALSE(locale->is_24hour_clock());
    EXPECT_EQ("%I:%M:%S %p %z", locale->time_format(false));
    EXPECT_EQ("%I:%M %p %z", locale->time_format(true));
    EXPECT_EQ("%a %d/%m/%y %I:%M:%S %p %z", locale->date_format());
    locale->set_date_format("%Y");
    EXPECT_EQ("%Y", locale->date_format());
    locale->set_24hour_clock(true);
    EXPECT_EQ("%H:%M %z", locale->time_format(true));
    EXPECT_EQ("%a %d/%m/%y %H:%M:%S %z", locale->date_format());
}

TEST_F(TVLocaleTest, NamesAndTheirNumbers)
{
    TVLocale* locale = tvlocale();
    EXPECT_EQ("Wed", locale->weekday_name(3, true));
    EXPECT_EQ("Saturday", locale->weekday_name(6, false));
    EXPECT_EQ("Sep", locale->month_name(8, true));
    EXPECT_EQ("December", locale->month_name(11, false));
    for (int bad : {-1, 7, 12}) {
        EXPECT_EQ("", locale->weekday_name(bad, true));
        if (bad != 7) {
            EXPECT_EQ("", locale->month_name(bad, false));
        }
    }
    struct Row
    {
        const char* m_text;
        int m_weekday, m_month;
    };
    const Row rows[] = {
        {"monDAY", 1, -1}, {"sun", 0, -1}, {"MAY", -1, 4}, {"september", -1, 8},
        {"Sept", -1, -1},  {"", -1, -1},   {"lundi", -1, -1},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.m_weekday, locale->weekday_number(row.m_text)) << row.m_text;
        EXPECT_EQ(row.m_month, locale->month_number(row.m_text)) << row.m_text;
    }
}

TEST_F(TVLocaleTest, LocalNamesServeOnlyWithTheFlagClear)
{
    TVLocale* locale = tvlocale();
    const std::vector<std::string> daysShort = {"dim", "lun", "mar", "mer", "jeu", "ven", "sam"};
    const std::vector<std::string> daysFull = {"dimanche", "lundi", "mardi", "mercredi",
                                               "jeudi",    "vendredi", "samedi"};
    const std::vector<std::string> monthsShort = {"janv", "févr", "mars", "avr",  "mai", "juin",
                                                  "juil", "août", "sept", "oct", "nov", "déc"};
    const std::vector<std::string> monthsFull = {
        "janvier", "février", "mars",      "avril",   "mai",      "juin",
        "juillet", "août",    "septembre", "octobre", "novembre", "décembre"};
    EXPECT_FALSE(locale->set_local_names(daysShort, daysFull, monthsShort, {"janvier"}));
    ASSERT_TRUE(locale->set_local_names(daysShort, daysFull, monthsShort, monthsFull));

    EXPECT_EQ(-1, locale->weekday_number("Lundi"));
    EXPECT_EQ("Monday", locale->weekday_name(1, false));
    locale->set_defaultlocale(false);
    EXPECT_EQ("lundi", locale->weekday_name(1, false));
    EXPECT_EQ("août", locale->month_name(7, true));
    EXPECT_EQ(1, locale->weekday_number("Lundi"));
    EXPECT_EQ(1, locale->weekday_number("Monday")); // English still understood
    EXPECT_EQ(1, locale->month_number("février"));
    EXPECT_EQ("lun 15 mars 2021", utc(2021, 3, 15).to_string("%a %d %B %Y"));

    EXPECT_EQ("Mon. 3 March 2021", locale->clean_date_string("lun. 3 mars 2021"));
    EXPECT_EQ("1 February, Sunday", locale->clean_date_string("1 Février, DIMANCHE"));
    EXPECT_EQ("next lundis", locale->clean_date_string("next lundis"));
}

TEST_F(TVLocaleTest, Ordinals)
{
    struct Row
    {
        int m_number;
        const char* m_text;
    };
    const Row rows[] = {
        {1, "1st"},   {2, "2nd"},    {3, "3rd"},     {4, "4th"},     {11, "11th"}, {13, "13th"},
        {22, "22nd"}, {101, "101st"}, {112, "112th"}, {0, "0th"},     {-1, "-1st"}, {-11, "-11th"},
    };
    for (const Row& row : rows) {
        std::string text = row.m_text;
        EXPECT_EQ(text, tvlocale()->get_ordinal(row.m_number, true));
        EXPECT_EQ(text.substr(text.size() - 2), tvlocale()->get_ordinal(row.m_number, false));
    }
}

TEST_F(TVLocaleTest, NumbersFollowTheSeparators)
{
    TVLocale* locale = tvlocale();
    EXPECT_EQ("1,234,567.89", locale->to_string(1234567.891, 2, true));
    EXPECT_EQ("1234567.9", locale->to_string(1234567.891, 1, false));
    EXPECT_EQ("-1,234.5", locale->to_string(-1234.5, 1, true));
    EXPECT_EQ("999", locale->to_string(999.4, 0, true));
    EXPECT_EQ("-1,234,567", locale->to_string(-1234567L, true));
    EXPECT_EQ("123456", locale->to_string(123456, false));
    EXPECT_EQ("-$1,234.50", locale->to_currency(-1234.5));
    EXPECT_EQ("$0.00", locale->to_currency(-0.001));
    EXPECT_EQ("1234.5", locale->clean_number(" $ 1,234.5 "));
    EXPECT_DOUBLE_EQ(1234.5, locale->to_double("$1,234.50"));
    EXPECT_EQ(1234L, locale->to_long("1,234"));
    EXPECT_EQ(0, locale->to_int("abc"));

    locale->set_group_separator(".");
    locale->set_decimal_separator(",");
    locale->set_currency("€");
    EXPECT_EQ("1.234,50", locale->to_string(1234.5, 2, true));
    EXPECT_EQ("€1.234,50", locale->to_currency(1234.5));
    EXPECT_DOUBLE_EQ(1234.5, locale->to_double("€ 1.234,50"));
    EXPECT_EQ(-1234, locale->to_int("-1.234"));
    locale->set_decimal_separator("");
    EXPECT_EQ(",", locale->get_decimal_separator());
}

TEST_F(TVLocaleTest, ZonesAndOtherFields)
{
    TVLocale* locale = tvlocale();
    for (const char* text : {"GMT", "GMT+10", "GMT+10 DST", "GMT-03:30", "GMT+05:30:15", "GMT DST",
                             "Local Time", "Keep"}) {
        ASSERT_TRUE(locale->set_timezone_str(text)) << text;
        EXPECT_EQ(text, locale->get_timezone_str());
    }
    EXPECT_EQ(-25200, (locale->set_timezone_str("GMT-03:30"), locale->get_timezone()));
    for (const char* bad : {"GMT+1", "EST", "GMT+10:3", "GMT+13", "GMT+01:02:03:04", ""}) {
        EXPECT_FALSE(locale->set_timezone_str(bad)) << bad;
        EXPECT_EQ(-25200, locale->get_timezone()) << bad;
    }
    locale->set_timezone(TVDate::C_DefaultTime); // the default can't name itself
    EXPECT_EQ(TVDate::C_LocalTime, locale->get_timezone());
    locale->set_local_timezone(-36001);
    EXPECT_EQ(-36000, locale->get_local_timezone());
    locale->set_local_timezone(TVDate::C_LocalTime);
    EXPECT_EQ(-36000, locale->get_local_timezone());

    locale->set_firstday(8);
    EXPECT_EQ(1, locale->get_firstday());
    locale->set_firstday(-1);
    EXPECT_EQ(6, locale->get_firstday());

}
