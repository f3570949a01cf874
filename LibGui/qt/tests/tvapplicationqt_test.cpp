// The application object of a program with windows, made over the test's
// QApplication: status changes reach every window it lists, and the
// windows still listed go with it.

#include "LibGui/qt/tvapplicationqt.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPointer>
#include <QStatusBar>

#include "LibGui/qt/tvmainwindowqt.h"

namespace {

class WindowsApp : public TVApplicationQt
{
public:
    explicit WindowsApp(const TVAppIdentity& identity) : TVApplicationQt(0, nullptr, identity, *qApp) {}
    int load_file(const std::string&) override { return TVErrC_ok; }
};

std::string status(const TVMainWindowQt* window) { return window->statusBar()->currentMessage().toStdString(); }

} // namespace

TEST(ApplicationQt, StatusReachesEveryListedWindowAndTheListedWindowsGoWithTheApplication)
{
    TVApplication::release();
    TVAppIdentity identity;
    identity.m_application = "TVApplicationQtTest";
    auto app = std::make_unique<WindowsApp>(identity);
    ASSERT_TRUE(has_tvapplicationqt());
    QPointer<TVMainWindowQt> first = new TVMainWindowQt;
    QPointer<TVMainWindowQt> second = new TVMainWindowQt;
    app->add_window(first);
    app->add_window(second);
    app->add_window(first);
    ASSERT_EQ(app->window_count(), 2);

    app->push_status("Saving...", 0.0, true, 0);
    EXPECT_EQ(status(first), "Saving...");
    EXPECT_EQ(status(second), "Saving...");
    app->push_status("Sorting...", 0.0, false, 0);
    EXPECT_EQ(status(first), "Saving...");
    app->pop_status("Saving...", true);
    EXPECT_EQ(status(first), "");
    EXPECT_EQ(status(second), "");

    // One destroyed before the application takes itself off the list.
    delete second.data();
    EXPECT_EQ(app->window_count(), 1);
    EXPECT_EQ(app->get_window(0), first.data());
    app.reset();
    EXPECT_TRUE(first.isNull());
    EXPECT_FALSE(TVApplication::has_object());
}
