#include "LibGui/qt/tvhelpqt.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTextDocument>

#include "LibGui/qt/tvguideqt.h"
#include "LibGui/qt/tvmainwindowqt.h"
#include "TestSupport/tvraise.h"

namespace {

class HelpTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        TVGuideQt::add_help_path(":/tvguiqt_tests/help");
    }
    void TearDown() override
    {
        delete TVHelpQt::current();
        TVQuietErrorTest::TearDown();
    }
};

TEST_F(HelpTest, GuideShowsAResourcePageWithItsPicturesAndFollowsLinks)
{
    TVGuideQt guide;
    ASSERT_TRUE(guide.set_page("start.html"));
    EXPECT_EQ(guide.source(), QUrl("qrc:/tvguiqt_tests/help/start.html"));
    EXPECT_TRUE(guide.toPlainText().contains("Getting started"));
    // As the page names it, and as a URL of the resource scheme.
    EXPECT_FALSE(guide.loadResource(QTextDocument::ImageResource, QUrl(":/tvguiqt_tests/stripes.xpm")).isNull());
    EXPECT_FALSE(guide.loadResource(QTextDocument::ImageResource, QUrl("qrc:/tvguiqt_tests/stripes.xpm")).isNull());

    emit guide.anchorClicked(QUrl("next.html"));
    EXPECT_EQ(guide.get_page(), "next.html");
    // UTF-8 without a charset of its own still reads right.
    EXPECT_TRUE(guide.toPlainText().contains(QString::fromUtf8("Keep going – you’re")));

    EXPECT_FALSE(guide.set_page("missing.html"));
    EXPECT_TRUE(guide.toPlainText().contains("missing.html"));
    EXPECT_TRUE(TVGuideQt::page_url(":/tvguiqt_tests/help/next.html").isValid());
    EXPECT_TRUE(TVGuideQt::page_url(":/tvguiqt_tests/help/none.html").isEmpty());
}

TEST_F(HelpTest, ManualOpensTheWindowsPageInOneHelpWindow)
{
    TVMainWindowQt window;
    window.set_manual("start.html", "You can start running exercises from the main screen.");
    TVHelpQt* help = TVHelpQt::show_manual(&window);
    ASSERT_NE(help, nullptr);
    EXPECT_EQ(help->get_browser()->get_page(), "start.html");
    EXPECT_EQ(help->findChild<QLabel*>("summaryLabel")->text(),
              "You can start running exercises from the main screen.");

    window.set_manual("next.html", "");
    EXPECT_EQ(TVHelpQt::show_manual(&window), help);
    EXPECT_EQ(help->get_browser()->get_page(), "next.html");
    EXPECT_TRUE(help->findChild<QLabel*>("summaryLabel")->isHidden());
}

} // namespace
