#include "LibGui/qt/tvtimeselectqt.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "LibGui/qt/tvlineeditqt.h"

TEST(TimeSelect, ValuesOutsideTheDayShowBlankAndBlankReadsOutsideTheDay)
{
    struct Row {
        int set;
        const char* shown;
        int read;
    } rows[] = {
        {0, "00:00", 0},
        {7 * 3600 + 30 * 60, "07:30", 7 * 3600 + 30 * 60},
        {86399, "23:59:59", 86399},
        {86400, "", TVTimeSelectQt::C_Blank},
        {86401, "", TVTimeSelectQt::C_Blank},
        {-1, "", TVTimeSelectQt::C_Blank},
    };
    TVTimeSelectQt field;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.set);
        field.set_duration(row.set);
        EXPECT_EQ(field.text(), QString(row.shown));
        EXPECT_EQ(field.get_duration(), row.read);
    }
    EXPECT_TRUE(TVTimeSelectQt::C_Blank < 0 || TVTimeSelectQt::C_Blank >= 86400);
}

TEST(TimeSelect, TypedTimesReadAsSecondsOfTheDay)
{
    struct Row {
        const char* text;
        int seconds;
    } rows[] = {
        {"7:05", 7 * 3600 + 5 * 60},  {"19", 19 * 3600},        {" 07:30:15 ", 7 * 3600 + 30 * 60 + 15},
        {"12:00 am", 0},               {"12:30pm", 12 * 3600 + 30 * 60}, {"1:00 PM", 13 * 3600},
        {"24:00", TVTimeSelectQt::C_Blank}, {"7:60", TVTimeSelectQt::C_Blank}, {"13 pm", TVTimeSelectQt::C_Blank},
        {"7.30", TVTimeSelectQt::C_Blank},  {"1:2:3:4", TVTimeSelectQt::C_Blank}, {"", TVTimeSelectQt::C_Blank},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(TVTimeSelectQt::parse(row.text), row.seconds);
    }

    TVTimeSelectQt field;
    QSignalSpy changed(&field, &TVTimeSelectQt::sig_duration_changed);
    QTest::keyClicks(&field, "8:15");
    ASSERT_FALSE(changed.isEmpty());
    EXPECT_EQ(changed.last().at(0).toInt(), 8 * 3600 + 15 * 60);
    field.clear();
    EXPECT_EQ(field.get_duration(), TVTimeSelectQt::C_Blank);
}

TEST(LineEdit, QuietChangesAreNoInput)
{
    TVLineEditQt edit;
    QSignalSpy changed(&edit, &QLineEdit::textChanged);
    edit.set_string("42", true);
    edit.clear_quietly();
    EXPECT_EQ(changed.count(), 0);
    edit.set_string("56", false);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(edit.get_string(), "56");
    EXPECT_FALSE(edit.signalsBlocked());
}
