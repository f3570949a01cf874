#include "LibDate/date/tvdateparser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LibDate/date/tests/tvdateexptest.h"

class TVDateParserTest : public TVDateExpTest
{
};

TEST_F(TVDateParserTest, TextBecomesTerms)
{
    struct Row
    {
        const char* m_name;
        const char* m_text;
        const char* m_terms;
    };
    const Row rows[] = {
        {"empty text is blank", "  \t ", "T_Blank 0"},
        {"numeric date", "12/3/2021", "T_Day 11, T_Month 2, T_Year 2021"},
        {"month name between", "12-Mar-2021", "T_Day 11, T_Month 2, T_Year 2021"},
        {"long year first", "2021.03.12", "T_Day 11, T_Month 2, T_Year 2021"},
        {"day then month name", "12 March", "T_Day 11, T_Month 2"},
        {"month name then day", "march 12", "T_Day 11, T_Month 2"},
        {"month name, day, comma, year", "Mar 3, 2021", "T_Day 2, T_Month 2, T_Year 2021"},
        {"a month alone waits to the end", "March", "T_Month 2"},
        {"year alone", "2021", "T_Year 2021"},
        {"weekday takes its comma", "Mon, 12 March", "T_Weekday 1, T_Day 11, T_Month 2"},
        {"hour with marker", "3pm", "T_Hour 3, T_Minute 0, T_Second 0, T_Micro 0, T_PM 1"},
        {"marker after a blank", "12:00 AM",
         "T_Hour 12, T_Minute 0, T_Second 0, T_Micro 0, T_AM 1"},
        {"fraction of a second", "9:30:15.25",
         "T_Hour 9, T_Minute 30, T_Second 15, T_Micro 250000"},
        {"six digits are micro", "9;30:15.000042",
         "T_Hour 9, T_Minute 30, T_Second 15, T_Micro 42"},
        {"ordinal day and month", "1st March", "T_Day 0, T_Month 2"},
        {"ordinal weekday", "2nd Monday", "T_Weekday 51"},
        {"ordinal weekday of a named month", "2nd Mon. March", "T_Month 2, T_Weekday 51"},
        {"pending month goes before a weekday of the month", "March 5th Fri",
         "T_Month 2, T_Weekday 85"},
        {"next weekday", "NEXT Monday", "T_AddDay 7, T_Weekday 1"},
        {"last month", "last month", "T_AddMonth -1"},
        {"next work day of a set", "next WorkDayFor school", "T_WorkDay 1 @SCHOOL"},
        {"units by their first letters",
         "+1 Week -2 Days +3 Months +1 yr +90 Min +5 Sec +7 uSec +2 Hours",
         "T_AddDay 7, T_AddDay -2, T_AddMonth 3, T_AddYear 1, T_AddMinute 90, "
         "T_AddSecond 5, T_AddMicro 7, T_AddHour 2"},
        {"a clock span keeps its sign", "-1:30:15", "T_AddHour -1, T_AddMinute -30, T_AddSecond -15"},
        {"work days ahead", "+2 WorkDay", "T_WorkDay 2"},
        {"an unknown unit adds nothing", "+2 Fortnights Tomorrow", "T_Tomorrow 0"},
        {"words of the clock", "Hour 3pm Minute 5 Second 6 USecond 7 Week 10",
         "T_Hour 3, T_PM 1, T_Minute 5, T_Second 6, T_Micro 7, T_Week 9"},
        {"short words", "Now Tom Yes Tod", "T_Now 0, T_Tomorrow 0, T_Yesterday 0, T_Today 0"},
        {"zones", "UTC+10 GMT-3:30 UTC", "T_Zone 72000, T_Zone -25200, T_Zone 0"},
        {"an offset must follow the zone directly", "UTC +1 Day", "T_Zone 0, T_AddDay 1"},
        {"zone words", "DST NoDST DefaultZone Local",
         "T_Dst 1, T_Dst 0, T_Zone 90002, T_Zone 90000"},
        {"work days and fixed days", "WorkDay WorkDayFor Home Fixed FixedFor Exams",
         "T_WorkDay 0, T_WorkDay 0 @HOME, T_Fixed 0, T_Fixed 0 @EXAMS"},
        {"choice", "(Mon|Thu) 9:00",
         "T_Open 0, T_Weekday 1, T_Or 0, T_Weekday 4, T_Close 0, T_Hour 9, T_Minute 0, "
         "T_Second 0, T_Micro 0"},
        {"relative tag", "@Time +2 Hours", "T_Relative 0 @TIME, T_AddHour 2"},
        {"a separated year counts without its own blank", "2021 -1 Day",
         "T_Year 2021, T_AddDay -1"},
        // Failures of the first kind: the whole text is invalid.
        {"unknown word", "FOO", "T_Invalid 0"},
        {"unknown word after good ones", "12 March FOO", "T_Invalid 0"},
        {"a tag after a counted WORKDAYFOR is read as a word", "+2 WorkDayFor School",
         "T_Invalid 0"},
        // Failures of the second kind: what came before stays.
        {"sign without a number", "Tomorrow +", "T_Tomorrow 0"},
        {"time without minutes", "Tomorrow 9:", "T_Tomorrow 0"},
        {"date without its third number", "Tomorrow 12/3/", "T_Tomorrow 0"},
        {"a small number with no month", "Tomorrow 21 Now", "T_Tomorrow 0"},
        {"two digits alone keep nothing", "21", ""},
        {"NEXT without a unit", "Tomorrow NEXT 3", "T_Tomorrow 0"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_terms, parsed(row.m_text)) << row.m_name << ": \"" << row.m_text << "\"";
}

TEST_F(TVDateParserTest, NumericDatesFollowTheDateStyle)
{
    // Style 0 month first, 1 day first, 2 year first. Now is 2021, so two
    // digits reach at most 2031.
    struct Row
    {
        const char* m_name;
        int m_style;
        const char* m_text;
        const char* m_terms;
    };
    const Row rows[] = {
        {"day first", 1, "31/12/21", "T_Day 30, T_Month 11, T_Year 2021"},
        {"month first gives month 31", 0, "31/12/21", "T_Day 11, T_Month 30, T_Year 2021"},
        {"year first", 2, "21/12/31", "T_Day 30, T_Month 11, T_Year 2021"},
        {"long year last, day first", 1, "12/3/2021", "T_Day 11, T_Month 2, T_Year 2021"},
        {"long year first in any style", 0, "2021/3/12", "T_Day 11, T_Month 2, T_Year 2021"},
        {"no year, day first", 1, "12/3", "T_Day 11, T_Month 2"},
        {"no year, year-first style reads month first", 2, "12/3", "T_Day 2, T_Month 11"},
        {"named month, short year last", 1, "3/Mar/21", "T_Day 2, T_Month 2, T_Year 2021"},
        {"named month, short year first", 2, "3/Mar/21", "T_Day 20, T_Month 2, T_Year 2003"},
        {"pending month with a long year", 0, "March 12/2021", "T_Day 11, T_Month 2, T_Year 2021"},
        {"ten years ahead stays in this century", 1, "1/1/31", "T_Day 0, T_Month 0, T_Year 2031"},
        {"eleven years ahead is the last century", 1, "1/1/32",
         "T_Day 0, T_Month 0, T_Year 1932"},
        {"00 is 2000", 1, "1/1/00", "T_Day 0, T_Month 0, T_Year 2000"},
    };
    for (const Row& row : rows) {
        use_style(row.m_style);
        EXPECT_EQ(row.m_terms, parsed(row.m_text)) << row.m_name;
    }
}

TEST_F(TVDateParserTest, LocalNamesAreReadThroughTheLocale)
{
    tvlocale()->set_defaultlocale(false);
    ASSERT_TRUE(tvlocale()->set_local_names(
        {"So", "Mo", "Di", "Mi", "Do", "Fr", "Sa"},
        {"Sonntag", "Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag"},
        {"Jan", "Feb", "Mrz", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"},
        {"Januar", "Februar", "Maerz", "April", "Mai", "Juni", "Juli", "August", "September",
         "Oktober", "November", "Dezember"}));
    EXPECT_EQ("T_Day 11, T_Month 2, T_Weekday 4", parsed("12 Maerz Donnerstag"));
}

TEST_F(TVDateParserTest, TokensComeFromTheSharedTokeniser)
{
    std::vector<std::string> tokens;
    TVDateParser::split_tokens(tokens, "12th Mar,\t9:30pm");
    EXPECT_EQ(TVDateUtils::split_tokens("12th Mar,\t9:30pm"), tokens);
    EXPECT_TRUE(TVDateParser::compare_token("Q", 'A', 'Z'));
    EXPECT_FALSE(TVDateParser::compare_token("q", 'A', 'Z'));
    EXPECT_TRUE(TVDateParser::compare_token("+", '+', 0));
    EXPECT_FALSE(TVDateParser::compare_token("", '+', 0));
    EXPECT_TRUE(TVDateParser::compare_token("MONTHS", "MO"));
    EXPECT_FALSE(TVDateParser::compare_token("M", "MO"));
}

TEST_F(TVDateParserTest, HugeNumbersAreCappedNotOverflowed)
{
    EXPECT_EQ("T_AddDay 99999999", parsed("+123456789012345678901234567890 Days"));
    EXPECT_EQ("T_AddDay 699999993", parsed("+99999999999 Weeks"));
}
