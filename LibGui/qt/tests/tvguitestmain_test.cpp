#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>

// The shared main gives widget tests a working application without a display.
TEST(GuiTestMain, WidgetsTakeKeyEventsOffscreen)
{
    ASSERT_NE(qApp, nullptr);
    QLineEdit edit;
    edit.show();
    QTest::keyClicks(&edit, "7x8");
    EXPECT_EQ(edit.text(), QString("7x8"));
}
