#include "LibCore/application/tvapplication.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cstdlib>
#include <fstream>

#include "LibCore/application/tvappstatussetter.h"
#include "LibCore/error/tverror.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparamcmdline.h"
#include "TestSupport/tvtestclock.h"

namespace {

// A program "drill" called with no arguments.
class DrillApp : public TVApplication
{
public:
    DrillApp(int argc, char** argv, const TVAppIdentity& id) : TVApplication(argc, argv, id) {}
    int parameters(TVParam&, TVParamCmdLine& cmdline, TVParamFile&) override
    {
        cmdline.add_value_group("", "", "Run a drill");
        return TVErrC_ok;
    }
};

TVAppIdentity drill_identity()
{
    TVAppIdentity id;
    id.m_application = "drill";
    id.m_release = "2.3.1";
    return id;
}

// A program "drill" whose per-user folders lie in a temporary home.
class ApplicationTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
            saved.emplace_back(name, std::getenv(name) ? std::getenv(name) : "");
        setenv("XDG_CONFIG_HOME", home.filePath("config").toLocal8Bit().constData(), 1);
        setenv("XDG_CACHE_HOME", home.filePath("cache").toLocal8Bit().constData(), 1);
        setenv("XDG_DATA_HOME", home.filePath("data").toLocal8Bit().constData(), 1);
        TVError::release();
        get_tverror()->set_stream(nullptr, TVSevAll);
        TVApplication::release(); // an earlier test may have made a plain one
        app.reset(new DrillApp(argc, argv, drill_identity()));
    }

    void TearDown() override
    {
        app.reset();
        TVParam::release();
        TVError::release();
        for (const auto& [name, value] : saved)
            value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
    }

    // Parameters over the user's configuration file, as the start makes them.
    void start_parameters() { ASSERT_EQ(app->setup_parameters(), TVErrC_ok); }

    std::string config_text() const
    {
        std::ifstream in(TVParam::default_user_config("drill"));
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    QTemporaryDir home;
    std::vector<std::pair<std::string, std::string>> saved;
    char arg0[6] = "drill";
    char* argv[2] = {arg0, nullptr};
    int argc = 1;
    std::unique_ptr<TVApplication> app;
};

} // namespace

TEST(ApplicationRelease, ReleaseNumbersAndTags)
{
    const std::pair<const char*, int> rows[] = {
        {"2.0.0", 2000}, {"2.7", 2007}, {"3", 3000}, {"", 0}, {"1.12.9", 1012},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TVApplication::release_to_int(row.first), row.second) << row.first;
}

TEST_F(ApplicationTest, IdentityGivesTagsAndTheProgramIsTheSingleton)
{
    EXPECT_EQ(app->get_release_tag(), "drill-2.3.1");
    EXPECT_EQ(app->get_major_tag(), "drill-2");
    EXPECT_EQ(tvapplication(), app.get());
    EXPECT_EQ(app->get_executable(), "drill");
}

TEST_F(ApplicationTest, PathsLieInTheUsersFolders)
{
    const std::string config = home.filePath("config").toStdString();
    const std::string cache = home.filePath("cache").toStdString();
    EXPECT_EQ(app->get_config_dir(), config);
    EXPECT_EQ(app->get_error_log(), app->get_cache_dir() + "/drill_error.log");
    EXPECT_EQ(app->get_performance_log().rfind(cache, 0), 0u);
    EXPECT_EQ(app->get_scratch_dir(), app->get_data_dir() + "/scratch");
    EXPECT_EQ(TVParam::default_user_config("drill"), config + "/drill.cfg");
}

TEST_F(ApplicationTest, SecondParameterSetUpReplacesTheFirst)
{
    start_parameters();
    start_parameters(); // the first is deleted here; ASan would report a leak otherwise
    EXPECT_NE(tvparam(), nullptr);
}

TEST_F(ApplicationTest, RecentFilesKeepTenNewestFirstWithoutRepeats)
{
    start_parameters();
    for (int i = 1; i <= 12; ++i)
        ASSERT_EQ(app->add_recent("f" + std::to_string(i) + ".tvmaths", -1), TVErrC_ok);
    ASSERT_EQ(app->add_recent("f5.tvmaths", 0), TVErrC_ok); // a repeat moves to the front
    EXPECT_NE(config_text().find("LastFile=f5.tvmaths;f12.tvmaths;f11.tvmaths;f10.tvmaths;f9.tvmaths;"
                                 "f8.tvmaths;f7.tvmaths;f6.tvmaths;f4.tvmaths;f3.tvmaths;\n"),
              std::string::npos)
        << config_text();
    const std::vector<std::string> before = app->get_recent();
    ASSERT_EQ(app->add_recent("f5.tvmaths", 3), TVErrC_ok); // already first: nothing moves
    EXPECT_EQ(app->get_recent(), before);
}

TEST_F(ApplicationTest, RecentPositionsInsertWhereAskedOrAtTheFront)
{
    for (const char* file : {"a", "b", "c"})
        ASSERT_EQ(app->add_recent(file, -1), TVErrC_ok);
    ASSERT_EQ(app->add_recent("end", 3), TVErrC_ok);
    ASSERT_EQ(app->add_recent("mid", 1), TVErrC_ok);
    ASSERT_EQ(app->add_recent("far", 99), TVErrC_ok);
    EXPECT_EQ(app->get_recent(), (std::vector<std::string>{"far", "c", "mid", "b", "a", "end"}));
}

TEST_F(ApplicationTest, SessionIsRecordedReadBackAndPreferredForTheFirstFile)
{
    start_parameters();
    for (const char* file : {"a", "b", "c"})
        ASSERT_EQ(app->add_recent(file, -1), TVErrC_ok);
    ASSERT_EQ(app->record_open_windows(2, true), TVErrC_ok);
    EXPECT_EQ(app->get_session(), (std::vector<std::string>{"c", "b"}));

    app.reset(); // the next run
    app.reset(new DrillApp(argc, argv, drill_identity()));
    start_parameters();
    app->load_recent();
    EXPECT_EQ(app->get_recent(), (std::vector<std::string>{"c", "b", "a"}));
    EXPECT_EQ(app->get_recent_windows(), 2);
    EXPECT_EQ(app->get_first_file(), "c");
    ASSERT_EQ(app->clear_session(), TVErrC_ok);
    app->load_recent();
    EXPECT_TRUE(app->get_session().empty());
    EXPECT_EQ(app->get_first_file(), "c");
}

TEST_F(ApplicationTest, ForegroundStatusWaitsForItsDelay)
{
    TestClock clock(1700000000);
    app->push_status("Saving", 10, true, 1000000);
    EXPECT_EQ(app->foreground_status(), "");
    clock.advance(0, 999999);
    EXPECT_EQ(app->foreground_status(), "");
    clock.advance(0, 1);
    EXPECT_EQ(app->foreground_status(), "Saving");
    app->push_status("Loading", 0, true, 5000000); // the newest shows once any may
    EXPECT_EQ(app->foreground_status(), "Loading");
}

TEST_F(ApplicationTest, PushingATextAgainReplacesItAndPopRemovesOnlyItsStack)
{
    TestClock clock(1700000000);
    app->push_status("Saving", 10, true, 0);
    app->push_status("Saving", 60, true, 0);
    app->push_status("Saving", 5, false, 0);
    EXPECT_EQ(app->status_count(true), 1u);
    EXPECT_DOUBLE_EQ(app->status_percentage("Saving", true), 60);
    app->pop_status("Saving", true);
    EXPECT_EQ(app->status_count(true), 0u);
    EXPECT_EQ(app->status_count(false), 1u);
    EXPECT_EQ(app->foreground_status(), "");
    {
        TVAppStatusSetter status("Checking", true, 0); // shows its text for its scope
        EXPECT_EQ(app->foreground_status(), "Checking");
    }
    EXPECT_EQ(app->status_count(true), 0u);
}
