// tvdb end to end: the built program, run with a fixed zone (TZ=UTC0) and
// --base, so that every answer can be read off the calendar.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport/tvdbrun.h"

TEST(TVDBDateTest, AnswersFromTheCalendar)
{
    // 1 March 2021 is a Monday; day-first dates unless --style says else.
    struct Row
    {
        const char* m_name;
        std::vector<std::string> m_args;
        const char* m_out;
    };
    const Row rows[] = {
        {"tomorrow at three", {"date", "Tomorrow 3pm", "--base", "1/3/2021"},
         "2021-03-02 15:00:00\n"},
        {"month end clamps", {"date", "--base=31/1/2021", "+1 Month"}, "2021-02-28 00:00:00\n"},
        {"words as separate arguments", {"date", "--base", "1/3/2021", "next", "friday", "9:30"},
         "2021-03-12 09:30:00\n"},
        {"a leading minus is an expression", {"date", "--base", "1/3/2021", "-1 Day"},
         "2021-02-28 00:00:00\n"},
        {"month first", {"date", "--style", "0", "--base", "1/1/2021", "12/3/2021"},
         "2021-12-03 00:00:00\n"},
        {"year first, two digits", {"date", "--style", "2", "--base", "2021-01-01", "21/3/12"},
         "2021-03-12 00:00:00\n"},
        {"own format", {"date", "--base", "1/3/2021", "--format", "%A %d %B %Y", "+1 Day"},
         "Tuesday 02 March 2021\n"},
        {"blank", {"date", "--base", "1/3/2021", ""}, "blank date\n"},
    };
    for (const Row& row : rows) {
        TVDBRun run = run_tvdb(row.m_args);
        EXPECT_EQ(0, run.m_exitCode) << row.m_name << ": " << run.m_err;
        EXPECT_EQ(row.m_out, run.m_out) << row.m_name;
    }
}

TEST(TVDBDateTest, TermsShowTheExpressionAndItsText)
{
    TVDBRun run = run_tvdb({"date", "--terms", "Tomorrow 3pm"});
    EXPECT_EQ(0, run.m_exitCode);
    EXPECT_EQ("T_Tomorrow 0\nT_Hour 3\nT_Minute 0\nT_Second 0\nT_Micro 0\nT_PM 1\n"
              "text: Tomorrow  3:00:00PM\n",
              run.m_out);
}

TEST(TVDBDateTest, FailuresHaveTheirOwnExitStatus)
{
    struct Row
    {
        const char* m_name;
        std::vector<std::string> m_args;
        int m_exitCode;
        const char* m_out;     // exactly, on stdout
        const char* m_errPart; // somewhere on stderr
    };
    const Row rows[] = {
        {"unknown word", {"date", "FOO"}, 1, "invalid date\n", ""},
        {"wrong option", {"date", "--frobnicate", "Now"}, 2, "", "'--frobnicate'"},
        {"option without value", {"date", "Now", "--base"}, 2, "", "'--base' needs a value"},
        {"style out of range", {"date", "--style", "3", "Now"}, 2, "", "'3'"},
        {"base that isn't a date", {"date", "--base", "FOO", "Now"}, 2, "", "'FOO'"},
        {"no expression", {"date"}, 2, "", "no expression"},
        {"unknown command", {"frobnicate"}, 2, "", "'frobnicate'"},
    };
    for (const Row& row : rows) {
        TVDBRun run = run_tvdb(row.m_args);
        EXPECT_EQ(row.m_exitCode, run.m_exitCode) << row.m_name;
        EXPECT_EQ(row.m_out, run.m_out) << row.m_name;
        EXPECT_NE(std::string::npos, run.m_err.find(row.m_errPart))
            << row.m_name << ": " << run.m_err;
    }
}

TEST(TVDBDateTest, HelpListsTheCommands)
{
    TVDBRun run = run_tvdb({"--help"});
    EXPECT_EQ(0, run.m_exitCode);
    EXPECT_NE(std::string::npos, run.m_out.find("  date "));
    TVDBRun dateHelp = run_tvdb({"date", "--help"});
    EXPECT_EQ(0, dateHelp.m_exitCode);
    EXPECT_NE(std::string::npos, dateHelp.m_out.find("--base DATE"));
}

TEST(TVDBRepeatTest, NextDatesFromTheCalendar)
{
    // 1 March 2021 is a Monday; day-first dates unless --style says else.
    struct Row
    {
        const char* m_name;
        std::vector<std::string> m_args;
        const char* m_out;
    };
    const Row rows[] = {
        {"fortnightly on Monday and Thursday",
         {"repeat", "T=3@N=2@D=1,4@A=32400", "--from", "1/3/2021 9:00", "--count", "4"},
         "2021-03-04 09:00:00\n2021-03-15 09:00:00\n2021-03-18 09:00:00\n2021-03-29 09:00:00\n"},
        {"five by default", {"repeat", "--from=1/3/2021", "T=2@N=7"},
         "2021-03-08 00:00:00\n2021-03-15 00:00:00\n2021-03-22 00:00:00\n2021-03-29 00:00:00\n"
         "2021-04-05 00:00:00\n"},
        {"words as separate arguments, own format",
         {"repeat", "--from", "1/3/2021", "--count", "3", "--format", "%a %d", "T=2@X=03", "Mar",
          "2021"},
         "Tue 02\nThu 04\nFri 05\n"},
        {"month first", {"repeat", "--style", "0", "--from", "3/1/2021", "--count", "1", "T=4@D=14"},
         "2021-03-15 00:00:00\n"},
        {"in words", {"repeat", "--natural", "T=3@N=2@D=1,4@A=32400"},
         "Every 2 weeks on Mon, Thu at 09:00.\n"},
        {"no next date", {"repeat", "T=0"}, ""},
    };
    for (const Row& row : rows) {
        TVDBRun run = run_tvdb(row.m_args);
        EXPECT_EQ(0, run.m_exitCode) << row.m_name << ": " << run.m_err;
        EXPECT_EQ(row.m_out, run.m_out) << row.m_name;
    }
}

TEST(TVDBRepeatTest, FailuresSayWhy)
{
    struct Row
    {
        const char* m_name;
        std::vector<std::string> m_args;
        const char* m_errPart;
    };
    const Row rows[] = {
        {"a rule that doesn't read", {"repeat", "T=3@Q=1"}, "I do not understand Q=1 in T=3@Q=1"},
        {"an older form that doesn't read", {"repeat", "REPEAT_DAYS(x)"},
         "REPEAT_DAYS(x) should be of the form \"REPEAT_DAYS(D)\""},
        {"a count that isn't one", {"repeat", "--count", "-1", "T=2"}, "'-1'"},
        {"a date that isn't one", {"repeat", "--from", "FOO", "T=2"}, "'FOO'"},
        {"no rule", {"repeat"}, "no rule"},
    };
    for (const Row& row : rows) {
        TVDBRun run = run_tvdb(row.m_args);
        EXPECT_EQ(2, run.m_exitCode) << row.m_name;
        EXPECT_EQ("", run.m_out) << row.m_name;
        EXPECT_NE(std::string::npos, run.m_err.find(row.m_errPart))
            << row.m_name << ": " << run.m_err;
    }
    EXPECT_NE(std::string::npos, run_tvdb({"--help"}).m_out.find("  repeat "));
}
