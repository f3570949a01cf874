#include "LibDate/date/tvdateexp.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <string>

#include "LibDate/core/tvdatedetails.h"
#include "LibDate/date/tests/tvdateexptest.h"

namespace {

using Term = TVDateExpTerm;

} // namespace

class TVDateExpEvalTest : public TVDateExpTest
{
protected:
    // Wednesday 10 March 2021, 10:20:30 GMT; now is Monday 15 March.
    static TVDate wednesday() { return utc(2021, 3, 10, 10, 20, 30); }
};

TEST_F(TVDateExpEvalTest, ExpressionsMoveTheBaseAsTheCalendarSays)
{
    struct Row
    {
        const char* m_name;
        const char* m_text;
        const char* m_gmt;
    };
    const Row rows[] = {
        {"a plain date keeps the time", "12/3/2021", "2021-03-12 10:20:30"},
        {"3pm clears the rest of the clock", "3pm", "2021-03-10 15:00:00"},
        {"12am is midnight", "12am", "2021-03-10 00:00:00"},
        {"12pm is noon", "12pm", "2021-03-10 12:00:00"},
        {"tomorrow is counted from now", "Tomorrow 3pm", "2021-03-16 15:00:00"},
        {"today keeps the base's time", "Today", "2021-03-15 10:20:30"},
        {"now replaces everything", "Now", "2021-03-15 12:34:56"},
        {"a weekday stays in the base's week", "Monday", "2021-03-08 10:20:30"},
        {"an ordinal weekday is counted in the month", "1st Monday", "2021-03-01 10:20:30"},
        {"the fifth Monday of March", "5th Monday", "2021-03-29 10:20:30"},
        {"a fifth Friday runs into April", "5th Friday", "2021-04-02 10:20:30"},
        {"the sixth means the last", "6th Friday", "2021-03-26 10:20:30"},
        {"next Monday moves a week first", "NEXT MONDAY", "2021-03-15 10:20:30"},
        {"last Friday", "LAST Friday", "2021-03-05 10:20:30"},
        {"week 1 keeps the weekday of the year's start", "Week 1", "2021-01-06 10:20:30"},
        {"a week on", "+1 Week", "2021-03-17 10:20:30"},
        {"minutes carry into hours", "+90 Minutes", "2021-03-10 11:50:30"},
        {"a clock span", "+1:30", "2021-03-10 11:50:30"},
        {"micro carry", "+1500000 uSec", "2021-03-10 10:20:31"},
        {"a clock reading in another zone", "UTC+10 9:00", "2021-03-09 23:00:00"},
        {"an empty text is blank", "", "blank"},
        {"an unknown word is invalid", "FOO", "invalid"},
        {"a sign at the end keeps what came before", "Tomorrow +", "2021-03-16 10:20:30"},
        {"two digits alone leave the base", "21", "2021-03-10 10:20:30"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_gmt, evaluated(row.m_text, wednesday())) << row.m_name;
}

TEST_F(TVDateExpEvalTest, MonthFirstStyleMakesMonth31IntoJuly)
{
    // Day 12 of month 31 counted from January 2021 is 12 July 2023.
    use_style(0);
    EXPECT_EQ("2023-07-12 10:20:30", evaluated("31/12/21", wednesday()));
    use_style(1);
    EXPECT_EQ("2021-12-31 10:20:30", evaluated("31/12/21", wednesday()));
}

TEST_F(TVDateExpEvalTest, AMonthOnTheLastDayStopsAtTheShorterMonth)
{
    struct Row
    {
        const char* m_name;
        TVDate m_base;
        const char* m_text;
        const char* m_gmt;
    };
    const Row rows[] = {
        {"leap year", utc(2020, 1, 31, 8), "+1 Month", "2020-02-29 08:00:00"},
        {"common year", utc(2021, 1, 31, 8), "+1 Month", "2021-02-28 08:00:00"},
        {"over a year end", utc(2020, 12, 31, 8), "+2 Months", "2021-02-28 08:00:00"},
        {"back", utc(2021, 3, 31, 8), "-1 Month", "2021-02-28 08:00:00"},
        {"a year from 29 February", utc(2020, 2, 29, 8), "+1 Year", "2021-03-01 08:00:00"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_gmt, evaluated(row.m_text, row.m_base)) << row.m_name;
}

TEST_F(TVDateExpEvalTest, AChoiceTakesTheFirstAlternativeThatLiesAhead)
{
    // From Wednesday 10 March: Monday the 8th and Tuesday the 9th are behind.
    struct Row
    {
        const char* m_name;
        const char* m_text;
        const char* m_gmt;
    };
    const Row rows[] = {
        {"the later alternative", "(Mon|Thu) 9:00", "2021-03-11 09:00:00"},
        {"only the last lies ahead", "(Mon|Tue|+1 Week Mon)", "2021-03-15 10:20:30"},
        {"none ahead leaves the date", "(Mon|Tue)", "2021-03-10 10:20:30"},
        {"order written, not nearest", "(Fri|Thu)", "2021-03-12 10:20:30"},
        {"empty alternatives are dropped", "(||Thu|)", "2021-03-11 10:20:30"},
        {"nested choices", "((Mon|Thu)|Fri)", "2021-03-11 10:20:30"},
        {"a choice left open runs to the end", "(Mon|Thu", "2021-03-11 10:20:30"},
        {"the same date is not ahead", "(Wed|Fri)", "2021-03-12 10:20:30"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_gmt, evaluated(row.m_text, wednesday())) << row.m_name;
}

TEST_F(TVDateExpEvalTest, WorkDaysStepOverTheWeekend)
{
    const TVDate friday = utc(2021, 3, 12, 18);
    const TVDate saturday = utc(2021, 3, 13, 18);
    struct Row
    {
        const char* m_name;
        TVDate m_base;
        const char* m_text;
        const char* m_gmt;
    };
    const Row rows[] = {
        {"next work day after Friday", friday, "+1 WorkDay", "2021-03-15 18:00:00"},
        {"two work days after Friday", friday, "+2 WorkDay", "2021-03-16 18:00:00"},
        {"a work day today stays", friday, "WorkDay", "2021-03-12 18:00:00"},
        {"Saturday goes to Monday", saturday, "WorkDay", "2021-03-15 18:00:00"},
        {"a negative count steps like 1", friday, "LAST WorkDay", "2021-03-15 18:00:00"},
        {"fixed restarts until a work day", friday, "+1 Day Fixed", "2021-03-15 18:00:00"},
        {"fixed on a work day is done", friday, "Fixed", "2021-03-12 18:00:00"},
        {"fixed that can't move stays", saturday, "Fixed", "2021-03-13 18:00:00"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_gmt, evaluated(row.m_text, row.m_base)) << row.m_name;
}

TEST_F(TVDateExpEvalTest, ARestartThatNeverFinishesStopsAtTheBound)
{
    // Saturday of the week, a day on to Sunday, not a work day: every
    // restart lands on the same Sunday, which lies ahead of the Wednesday
    // start, so only the bound ends it.
    EXPECT_EQ("2021-03-14 10:20:30", evaluated("Sat +1 Day Fixed", wednesday()));
    // The bound is shared with nested choices, so this ends as well.
    EXPECT_EQ("2021-03-14 10:20:30",
              evaluated("(Sat +1 Day Fixed|Mon) (Sat +1 Day Fixed)", wednesday()));
}

TEST_F(TVDateExpEvalTest, DaylightSavingChangesKeepTheClockReading)
{
    // Sydney leaves summer time on Sunday 4 April 2021 (GMT+11 to +10); New
    // York enters it on Sunday 14 March 2021 (GMT-5 to -4).
    struct Row
    {
        const char* m_name;
        const TVZoneScenario* m_zone;
        TVDate m_base; // GMT
        const char* m_text;
        const char* m_gmt;
        int m_zoneAfter;
    };
    const Row rows[] = {
        {"Sydney, a day on", &C_SydneyZone, utc(2021, 4, 2, 22), "+1 Day", "2021-04-03 23:00:00",
         72000},
        {"Sydney, 24 hours on the clock", &C_SydneyZone, utc(2021, 4, 2, 22), "+24 Hours",
         "2021-04-03 23:00:00", 72000},
        {"Sydney, a clock time before the change", &C_SydneyZone, utc(2021, 4, 2, 22), "8:00",
         "2021-04-02 21:00:00", 72001},
        {"New York, a day on", &C_NewYorkZone, utc(2021, 3, 13, 17), "+1 Day",
         "2021-03-14 16:00:00", -36001},
        {"New York, next Monday at nine", &C_NewYorkZone, utc(2021, 3, 13, 17),
         "NEXT Monday 9:00", "2021-03-15 13:00:00", -36001},
        {"New York, back into winter", &C_NewYorkZone, utc(2021, 3, 15, 16), "-2 Days",
         "2021-03-13 17:00:00", -36000},
    };
    for (const Row& row : rows) {
        use_zone(*row.m_zone);
        TVDate date = TVDateParser::parse_date(row.m_text).apply(local(row.m_base), nullptr);
        EXPECT_EQ(row.m_gmt, gmt_text(date)) << row.m_name;
        EXPECT_EQ(row.m_zoneAfter, date.get_timezone()) << row.m_name;
    }
}

TEST_F(TVDateExpEvalTest, TermsActOnTheirOwn)
{
    // Terms the parser makes seldom or never, built directly.
    struct Row
    {
        const char* m_name;
        Term::E_Type m_type;
        int m_value;
        const char* m_gmt;
    };
    const Row rows[] = {
        {"day -1 is the month's last", Term::T_Day, -1, "2021-03-31 10:20:30"},
        {"a whole week", Term::T_AddWeek, 2, "2021-03-24 10:20:30"},
        {"a relative tag does nothing", Term::T_Relative, 0, "2021-03-10 10:20:30"},
        {"AM leaves 10 o'clock", Term::T_AM, 1, "2021-03-10 10:20:30"},
        {"PM adds twelve hours", Term::T_PM, 1, "2021-03-10 22:20:30"},
        {"PM with 0 does nothing", Term::T_PM, 0, "2021-03-10 10:20:30"},
        {"blank", Term::T_Blank, 0, "blank"},
        {"invalid", Term::T_Invalid, 0, "invalid"},
    };
    for (const Row& row : rows) {
        TVDateExp exp;
        exp.add_term(row.m_type, row.m_value);
        TVDate date = exp.apply(wednesday(), nullptr);
        std::string text = date.is_blank() ? "blank" : date.is_invalid() ? "invalid" : gmt_text(date);
        EXPECT_EQ(row.m_gmt, text) << row.m_name;
    }
}

TEST_F(TVDateExpEvalTest, BlankAndInvalidWinOverWhatCameBefore)
{
    TVDateExp exp;
    exp.add_term(Term::T_Year, 2030);
    exp.add_term(Term::T_Blank, 0);
    exp.add_term(Term::T_AddDay, 3);
    EXPECT_TRUE(exp.apply(wednesday(), nullptr).is_blank());
    exp.add_term(Term::T_Invalid, 0);
    EXPECT_TRUE(exp.apply(wednesday(), nullptr).is_invalid());
}

TEST_F(TVDateExpEvalTest, AnInvalidBaseStandsForNow)
{
    EXPECT_EQ("2021-03-16 12:34:56", evaluated("+1 Day", TVDate()));
    TVDate parsed;
    EXPECT_TRUE(parsed.from_string("+1 Day", nullptr, nullptr));
    EXPECT_EQ("2021-03-16 12:34:56", gmt_text(parsed));
    EXPECT_FALSE(parsed.from_string("FOO", nullptr, nullptr));
    EXPECT_TRUE(parsed.is_invalid());
}

TEST_F(TVDateExpEvalTest, EvaluateRunsARangeOfTerms)
{
    TVDateExp exp = TVDateParser::parse_date("+1 Day +1 Month +1 Year");
    TVDateDetails details(wednesday(), TVDate::C_GMT);
    EXPECT_EQ("2021-04-11 10:20:30", gmt_text(exp.evaluate(details, nullptr, 0, 2)));
    EXPECT_EQ("2021-03-10 10:20:30", gmt_text(exp.evaluate(details, nullptr, 2, 2)));
    EXPECT_EQ("2022-03-10 10:20:30", gmt_text(exp.evaluate(details, nullptr, 2, 99)));
}

TEST_F(TVDateExpEvalTest, TermTextsDependOnTheirNeighbours)
{
    const int none = Term::C_NoNeighbour;
    struct Row
    {
        const char* m_name;
        Term m_term;
        int m_previous;
        int m_next;
        const char* m_text;
    };
    const Row rows[] = {
        {"hour before a minute", Term(Term::T_Hour, 9), none, Term::T_Minute, "  9"},
        {"hour alone", Term(Term::T_Hour, 9), none, none, " Hour 9"},
        {"minute after an hour", Term(Term::T_Minute, 5), Term::T_Hour, none, ":05"},
        {"zero micro after a second", Term(Term::T_Micro, 0), Term::T_Second, none, ""},
        {"micro after a second", Term(Term::T_Micro, 42), Term::T_Second, none, ".000042"},
        {"micro alone", Term(Term::T_Micro, 42), none, none, " uSecond 42"},
        {"day beside a month", Term(Term::T_Day, 11), none, Term::T_Month, " 12"},
        {"day alone", Term(Term::T_Day, 1), none, none, " 2nd"},
        {"day from the end", Term(Term::T_Day, -1), none, none, " -1st"},
        {"day from 40", Term(Term::T_Day, 51), none, none, " 1st 1"},
        {"weekday of the month", Term(Term::T_Weekday, 51), none, none, " 2nd Mon"},
        {"added days back", Term(Term::T_AddDay, -2), none, none, " -2 Day"},
        {"work days", Term(Term::T_WorkDay, 2), none, none, " +2 WorkDay"},
        {"work day of a set", Term(Term::T_WorkDay, 0, "HOME"), none, none, " WorkDayFor HOME"},
        {"zone east", Term(Term::T_Zone, 72000), none, none, " UTC+10"},
        {"zone west with minutes", Term(Term::T_Zone, -25200), none, none, " UTC-3:30"},
        {"zone with its DST flag", Term(Term::T_Zone, 72001), none, none, " UTC+10 DST"},
        {"PM after the clock", Term(Term::T_PM, 1), Term::T_Micro, none, "PM"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.m_text, row.m_term.to_string(row.m_previous, row.m_next)) << row.m_name;
    EXPECT_EQ("12 Mar 2021", TVDateParser::parse_date("12/3/2021").to_string());
}

// ---- Text round trip ------------------------------------------------------------
//
// Random expressions are built from pieces that each stand for a way of
// writing; to_string() of the whole must read back to an expression that
// gives the same date. The pieces leave out what the text forms can't carry
// back: a T_Blank (no text), a T_Invalid (swallows the rest), a month with
// no day (the parser holds it to the end), a bare clock term next to
// another, an ordinal day right before a weekday (they read as one weekday
// of the month) and a lone day right after a month (it loses its ordinal).

namespace {

class TVExpressionMaker
{
public:
    explicit TVExpressionMaker(unsigned seed) : m_random(seed) {}

    TVDateExp make()
    {
        TVDateExp exp;
        m_lastPiece = E_None;
        int pieces = 1 + below(5);
        for (int i = 0; i < pieces; ++i)
            add_piece(exp, 0);
        return exp;
    }

private:
    enum E_Piece { E_None, E_Single, E_OrdinalDay, E_Month, E_Other };

    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }
    int between(int low, int high) { return low + below(high - low + 1); }

    void add_piece(TVDateExp& exp, int depth)
    {
        E_Piece piece = E_Other;
        switch (below(depth < 2 ? 13 : 12)) {
        case 0: // day and month, maybe a year
            exp.add_term(Term::T_Day, between(0, 27));
            exp.add_term(Term::T_Month, between(0, 11));
            if (below(2) == 0)
                exp.add_term(Term::T_Year, between(1990, 2040));
            else
                piece = E_Month;
            break;
        case 1: // a day after a month is written as a plain number
            if (m_lastPiece == E_Month) {
                exp.add_term(Term::T_Year, between(1990, 2040));
                break;
            }
            exp.add_term(Term::T_Day, between(0, 27));
            piece = E_OrdinalDay;
            break;
        case 2:
            if (m_lastPiece == E_OrdinalDay)
                exp.add_term(Term::T_Year, between(1990, 2040));
            else
                exp.add_term(Term::T_Weekday, between(0, 6));
            break;
        case 3:
            exp.add_term(Term::T_Weekday, Term::encode_weekday_month(between(0, 5), between(0, 6)));
            break;
        case 4: { // a full clock reading, 12-hour or 24-hour
            bool twelve = below(2) == 0;
            exp.add_term(Term::T_Hour, twelve ? between(1, 12) : between(0, 23));
            exp.add_term(Term::T_Minute, between(0, 59));
            exp.add_term(Term::T_Second, between(0, 59));
            exp.add_term(Term::T_Micro, below(3) == 0 ? between(1, 999999) : 0);
            if (twelve)
                exp.add_term(below(2) == 0 ? Term::T_AM : Term::T_PM, 1);
            break;
        }
        case 5: { // one clock field on its own
            if (m_lastPiece == E_Single) {
                exp.add_term(Term::T_Year, between(1990, 2040));
                break;
            }
            const Term::E_Type types[] = {Term::T_Hour, Term::T_Minute, Term::T_Second,
                                          Term::T_Micro};
            exp.add_term(types[below(4)], between(0, 50));
            piece = E_Single;
            break;
        }
        case 6: {
            const Term::E_Type types[] = {Term::T_AddMicro, Term::T_AddSecond, Term::T_AddMinute,
                                          Term::T_AddHour,  Term::T_AddDay,    Term::T_AddWeek,
                                          Term::T_AddMonth, Term::T_AddYear};
            exp.add_term(types[below(8)], between(-40, 40));
            break;
        }
        case 7: {
            const Term::E_Type types[] = {Term::T_Now, Term::T_Today, Term::T_Tomorrow,
                                          Term::T_Yesterday};
            exp.add_term(types[below(4)]);
            break;
        }
        case 8:
            exp.add_term(Term::T_Week, between(0, 51));
            break;
        case 9: {
            const int zones[] = {0, 72000, -25200, 39600, -36000, TVDate::C_LocalTime,
                                 TVDate::C_DefaultTime};
            exp.add_term(Term::T_Zone, zones[below(7)]);
            if (below(3) == 0)
                exp.add_term(Term::T_Dst, below(2));
            break;
        }
        case 10:
            if (below(2) == 0)
                exp.add_term(Term::T_WorkDay, between(0, 3));
            else
                exp.add_term(Term::T_WorkDay, 0, "HOME");
            break;
        case 11:
            if (below(2) == 0)
                exp.add_term(Term::T_Fixed, 0, below(2) == 0 ? "" : "EXAMS");
            else
                exp.add_term(Term::T_Relative, 0, "TIME");
            break;
        case 12: { // a choice of up to three alternatives
            exp.add_term(Term::T_Open);
            int alternatives = 1 + below(3);
            for (int i = 0; i < alternatives; ++i) {
                if (i > 0)
                    exp.add_term(Term::T_Or);
                m_lastPiece = E_None;
                add_piece(exp, depth + 1);
            }
            exp.add_term(Term::T_Close);
            break;
        }
        }
        m_lastPiece = piece;
    }

    std::mt19937 m_random;
    E_Piece m_lastPiece = E_None;
};

} // namespace

TEST_F(TVDateExpEvalTest, ExpressionTextReadsBackToTheSameDate)
{
    const unsigned seed = 20210315;
    const int count = 400;
    std::cout << "[ seed     ] " << seed << "\n";
    TVExpressionMaker maker(seed);
    for (int i = 0; i < count; ++i) {
        TVDateExp exp = maker.make();
        std::string text = exp.to_string();
        TVDateExp again = TVDateParser::parse_date(text);
        TVDate date = exp.apply(wednesday(), nullptr);
        TVDate dateAgain = again.apply(wednesday(), nullptr);
        ASSERT_EQ(date, dateAgain) << "seed " << seed << ", expression " << i << ": \"" << text
                                   << "\"\n  made:   " << terms(exp)
                                   << "\n  parsed: " << terms(again) << "\n  "
                                   << date.to_string("%Y-%m-%d %H:%M:%U %Z") << " vs "
                                   << dateAgain.to_string("%Y-%m-%d %H:%M:%U %Z");
    }
}
