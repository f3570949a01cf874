#include "AppTarvelloMaths/main/appmaths.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileOpenEvent>
#include <QTemporaryDir>
#include <QTimer>

#include "AppTarvelloMaths/maths/mathsdb.h"
#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "LibGui/qt/tvqtapp.h"

namespace {

// One toolkit application for the whole test program, as in the program,
// gone before the program's statics are: left to the end, the plugins it
// loaded for the pictures are unloaded under it, and the leak checker then
// trips over their freed thread-local storage.
TVQtApp* g_app = nullptr;

TVQtApp& qt_app()
{
    static int argc = 1;
    static char name[] = "appmaths_test";
    static char* argv[] = {name, nullptr};
    if (g_app == nullptr) {
        qputenv("QT_QPA_PLATFORM", "minimal");
        g_app = new TVQtApp(argc, argv);
    }
    return *g_app;
}

class QtAppEnvironment : public ::testing::Environment
{
public:
    void TearDown() override
    {
        delete g_app;
        g_app = nullptr;
    }
};

const auto* const g_environment = ::testing::AddGlobalTestEnvironment(new QtAppEnvironment);

class AppMathsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        qputenv("XDG_CONFIG_HOME", home.filePath("config").toLocal8Bit());
        qputenv("XDG_CACHE_HOME", home.filePath("cache").toLocal8Bit());
        qputenv("XDG_DATA_HOME", home.filePath("data").toLocal8Bit());
        qt_app();
    }
    void TearDown() override
    {
        TVParam::release();
        TVError::release();
    }

    // Runs the start-up as the event loop does, until the main window has
    // its file or has gone, answering the questions asked; gives their titles.
    std::vector<std::string> start(AppMaths& maths, const std::vector<std::string>& answers)
    {
        TVMessageBoxScript script(answers);
        QTimer::singleShot(0, &maths, &TVApplicationQt::app_started);
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (maths.get_db() != nullptr &&
                (maths.get_main_window() == nullptr || maths.get_db()->is_loaded()))
                QCoreApplication::exit(0);
        });
        poll.start(10);
        QTimer::singleShot(20000, [] { QCoreApplication::exit(99); }); // safety net
        EXPECT_EQ(QCoreApplication::exec(), 0);
        EXPECT_TRUE(script.done());
        return script.titles();
    }

    QTemporaryDir home;
    char arg0[15] = "tarvello-maths";
    char arg1[10] = "a.tvmaths";
};

} // namespace

TEST_F(AppMathsTest, FileOpenedByTheSystemBeforeTheStartWinsOverTheCommandLine)
{
    char* argv[] = {arg0, arg1, nullptr};
    AppMaths maths(2, argv, qt_app());
    QFileOpenEvent open(QString("b.tvmaths"));
    QCoreApplication::sendEvent(&qt_app(), &open);
    // A fresh home: the first-use question comes first, and Quit leaves
    // nothing behind.
    EXPECT_EQ(start(maths, {"Quit"}), std::vector<std::string>{"Welcome"});
    EXPECT_EQ(maths.get_mathsdb(), "b.tvmaths");
}

TEST_F(AppMathsTest, CommandLineNamesTheFileOtherwise)
{
    char* argv[] = {arg0, arg1, nullptr};
    AppMaths maths(2, argv, qt_app());
    start(maths, {"Quit"});
    EXPECT_EQ(maths.get_mathsdb(), "a.tvmaths");
}

// What "Open with" does: the file manager names the file on the command
// line, and it goes through the load flow like any other. A fresh home
// offers to make it; once made it opens without a question; a missing one
// is asked about, and Quit leaves the program with no file and no window.
TEST_F(AppMathsTest, FileNamedOnTheCommandLineGoesThroughTheLoadFlow)
{
    const std::string made = home.filePath("family.tvmaths").toStdString();
    const std::string missing = home.filePath("gone.tvmaths").toStdString();
    const struct {
        const std::string& file;
        std::vector<std::string> answers;
        std::vector<std::string> asked;
        bool loaded;
    } rows[] = {
        {made, {"Create New"}, {"Welcome"}, true},
        {made, {}, {}, true},
        {missing, {"Quit"}, {"Load File"}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        std::string name = row.file;
        char* argv[] = {arg0, name.data(), nullptr};
        {
            AppMaths maths(2, argv, qt_app());
            EXPECT_EQ(start(maths, row.answers), row.asked);
            ASSERT_NE(maths.get_db(), nullptr);
            EXPECT_EQ(maths.get_db()->is_loaded(), row.loaded);
            if (row.loaded)
                EXPECT_EQ(maths.get_db()->get_filename(), row.file);
            else
                EXPECT_EQ(maths.get_main_window(), nullptr);
            // Closed as the user closes it, so that the next start finds
            // the file put away.
            if (maths.get_main_window() != nullptr)
                maths.get_main_window()->close();
            for (int i = 0; i < 500 && maths.get_main_window() != nullptr; ++i)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            EXPECT_EQ(maths.get_main_window(), nullptr);
        }
        TVParam::release();
        TVError::release();
    }
    EXPECT_TRUE(QFile::exists(QString::fromStdString(made)));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(missing)));
}

TEST_F(AppMathsTest, FileOpenEventBeforeTheApplicationObjectIsIgnored)
{
    QFileOpenEvent open(QString("early.tvmaths"));
    EXPECT_TRUE(QCoreApplication::sendEvent(&qt_app(), &open));
    char* argv[] = {arg0, nullptr};
    AppMaths maths(1, argv, qt_app());
    EXPECT_EQ(start(maths, {"Create New"}), std::vector<std::string>{"Welcome"});
    EXPECT_EQ(maths.get_mathsdb(), "");
    // With no name the program opens its default file, made on first use.
    ASSERT_NE(maths.get_main_window(), nullptr);
    EXPECT_EQ(maths.get_db()->get_filename().rfind(
                  home.filePath("data").toStdString() + "/Tarvello/TarvelloMaths/maths", 0),
              0u);
    EXPECT_TRUE(maths.get_main_window()->isVisible());
    EXPECT_EQ(maths.get_main_window()->windowTitle().toStdString(), "TarvelloMaths");
}

TEST_F(AppMathsTest, UrlWaitsUntilAWindowCanTakeIt)
{
    char* argv[] = {arg0, nullptr};
    AppMaths maths(1, argv, qt_app());
    maths.url_scheme(QUrl("tvmaths://open/some%20file?session=2&x=y"));
    EXPECT_EQ(maths.pending_url(), "tvmaths://open/some file?session=2&x=y");
}

TEST(AppMathsUrl, UrlSplitsIntoCommandArgumentAndQuery)
{
    std::string command, argument;
    TVTagValue query;
    TVApplicationQt::split_url(QUrl("tvmaths://open/some%20file/x?session=2&name=a%26b"), command, argument, query);
    EXPECT_EQ(command, "open");
    EXPECT_EQ(argument, "some file/x");
    EXPECT_EQ(query.get_string("session", ""), "2");
    EXPECT_EQ(query.get_string("name", ""), "a&b");
    TVApplicationQt::split_url(QUrl("tvmaths://refresh?all=1"), command, argument, query);
    EXPECT_EQ(command, "refresh");
    EXPECT_EQ(argument, "");
    EXPECT_EQ(query.get_int("all", 0), 1);
}
