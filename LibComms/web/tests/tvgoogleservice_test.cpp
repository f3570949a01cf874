// The Drive mirror against a Drive of the tests' own on the loopback
// address: the whole sign-in through a test browser, the refresh of a
// stale token, and the mirror's choices of what to fetch and what to
// upload, with times from the test's clock and the files' times set by
// the test.

#include "LibComms/web/tvgoogleservice.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfile.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/param/tvparamfile.h"
#include "TestSupport/tvfakedrive.h"
#include "TestSupport/tvfiletest.h"
#include "TestSupport/tvsettle.h"
#include "TestSupport/tvtestclock.h"


#include <QDirIterator>

#include <csignal>
#include <sys/resource.h>

#include <functional>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr long C_Start = 1780000000; // a day in 2026

class GoogleServiceTest : public TVFileTest
{
protected:
    void SetUp() override
    {
        TVFileTest::SetUp();
        qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(path("config")));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(path("cache")));
        ASSERT_EQ(tvapplication()->setup_config(), TVErrC_ok);
        m_drive.configure();
        TVGoogleService::set_browser([this](const QUrl& url) { m_drive.browse(url); });
        m_mirror = path("mirror");
        ASSERT_EQ(tv_create_dir(m_mirror, true), TVErrC_ok);
        restart();
    }
    void TearDown() override
    {
        m_service.reset();
        TVGoogleService::set_browser(nullptr);
        TVParam::release();
        TVFileTest::TearDown();
    }
    // The program started again: a new service over the same mirror and
    // configuration.
    void restart()
    {
        m_service.reset();
        m_service = std::make_unique<TVGoogleService>();
        m_service->initialise(m_mirror, tvparam()->get_system_value(TVGoogleService::C_ClientIdTag),
                              tvparam()->get_system_value(TVGoogleService::C_ClientSecretTag));
    }
    static bool settle(const std::function<bool()>& done) { return tv_settle(done); }
    bool quiet()
    {
        return settle([this] { return !m_service->is_busy(); });
    }
    void sign_in()
    {
        (void)m_service->start();
        ASSERT_TRUE(settle([this] { return m_service->is_connected() && !m_service->is_busy(); }));
    }
    // One poll of the mirror, waited out.
    void poll()
    {
        ASSERT_EQ(m_service->update(), TVErrC_ok);
        ASSERT_TRUE(quiet());
    }
    // A file of the mirror with its modification time at now + offset.
    void write_mirror(const std::string& name, const std::string& bytes, long offset_ms)
    {
        write("mirror/" + name, bytes);
        TVFile file(m_mirror + "/" + name);
        ASSERT_EQ(file.set_times(TVDate(), at(offset_ms)), TVErrC_ok);
    }
    static TVDate at(long offset_ms)
    {
        return TVDateUtils::now() + TVDuration(offset_ms / 1000) +
               TVDuration(0, 0, static_cast<int>(offset_ms % 1000) * 1000);
    }
    static QDateTime qat(long offset_ms)
    {
        return QDateTime::fromSecsSinceEpoch(C_Start, Qt::UTC).addMSecs(offset_ms);
    }
    std::string mirror(const std::string& name) const { return read(m_mirror + "/" + name); }
    static std::string read(const std::string& file)
    {
        const std::vector<std::string> lines = tv_read_lines(file);
        std::string all;
        for (const std::string& line : lines)
            all += line + "\n";
        return all;
    }
    QByteArray on_drive(const QString& title)
    {
        TVFakeDrive::File* file = m_drive.find(title);
        return file != nullptr ? file->bytes : QByteArray("(none)");
    }

    TestClock m_clock{C_Start};
    TVFakeDrive m_drive;
    std::string m_mirror;
    std::unique_ptr<TVGoogleService> m_service;
};

TEST_F(GoogleServiceTest, FirstSignInAsksConsentAndKeepsTheTokensInAFileOnlyItsOwnerReads)
{
    sign_in();
    EXPECT_EQ(m_drive.browser_opens(), 1);
    EXPECT_EQ(m_drive.last_authorisation().value("prompt"), "consent");
    EXPECT_EQ(m_drive.last_authorisation().value("access_type"), "offline");
    EXPECT_EQ(m_drive.last_authorisation().value("scope"), TVGoogleService::C_Scope);
    EXPECT_EQ(m_drive.grants(), QStringList{"authorization_code"});

    ASSERT_NE(tvparam()->get_user_config(), nullptr);
    const std::string cfg = tvparam()->get_user_config()->get_filename();
    const std::string text = read(cfg);
    EXPECT_NE(text.find("GoogleRefreshToken=refresh1"), std::string::npos) << text;
    struct stat st;
    ASSERT_EQ(::stat(cfg.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600);
    EXPECT_TRUE(m_service->is_authorised());

    // Nothing else the program wrote (its logs among them) holds them.
    QDirIterator all(QString::fromStdString(path("")), QDir::Files | QDir::Hidden,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const std::string file = all.next().toStdString();
        if (file == cfg)
            continue;
        const std::string bytes = read(file);
        for (const char* secret : {"access1", "refresh1", "test-secret"})
            EXPECT_EQ(bytes.find(secret), std::string::npos) << file;
    }

    // Signing out forgets them.
    m_service->authorise(false);
    EXPECT_FALSE(m_service->is_authorised());
    EXPECT_EQ(read(cfg).find("refresh1"), std::string::npos);
}

TEST_F(GoogleServiceTest, ATokenThatRanOutWhileTheProgramWasClosedIsRefreshedWithoutTheBrowser)
{
    sign_in();
    restart();
    m_clock.advance(2 * 3600);
    m_drive.add_file("study@maths", "from the study\n", qat(-5000));
    sign_in();
    EXPECT_EQ(m_drive.browser_opens(), 1);
    EXPECT_EQ(m_drive.grants(), (QStringList{"authorization_code", "refresh_token"}));
    ASSERT_TRUE(settle([this] { return tv_file_exists(m_mirror + "/study@maths"); }));
}

TEST_F(GoogleServiceTest, ARefreshWithoutANetworkKeepsItsTokenButARefusedOneGoesToTheBrowser)
{
    sign_in();
    restart();
    m_clock.advance(2 * 3600);
    m_drive.set_offline(true);
    (void)m_service->start();
    ASSERT_TRUE(settle([this] { return !m_service->signing_in(); }));
    m_drive.set_offline(false);
    sign_in();
    EXPECT_EQ(m_drive.browser_opens(), 1);

    restart();
    m_clock.advance(2 * 3600);
    m_drive.revoke_consent();
    sign_in();
    EXPECT_EQ(m_drive.browser_opens(), 2);
    EXPECT_EQ(m_drive.grants().join(' ').toStdString(),
              "authorization_code refresh_token refresh_token authorization_code");
}

TEST_F(GoogleServiceTest, ARefusedListSignsInAgainAndTheNextPollGoesThrough)
{
    sign_in();
    m_drive.expire_tokens();
    m_drive.add_file("study@maths", "from the study\n", qat(-5000));
    poll();
    ASSERT_TRUE(settle([this] { return !m_service->signing_in() && !m_service->is_busy(); }));
    EXPECT_EQ(m_drive.grants().last(), "refresh_token");
    EXPECT_FALSE(tv_file_exists(m_mirror + "/study@maths"));
    poll();
    ASSERT_TRUE(settle([this] { return tv_file_exists(m_mirror + "/study@maths"); }));
    EXPECT_EQ(m_drive.browser_opens(), 1);
}

TEST_F(GoogleServiceTest, TheMirrorFetchesWhatIsNewOnDriveAndUploadsWhatIsNewHere)
{
    // The last sync was ten seconds ago.
    m_service->set_last_sync(at(-10000));
    m_drive.add_file("study@maths", "study\n", qat(-20000));
    m_drive.add_file("old@maths", "thrown away\n", qat(-20000)).trashed = true;
    write_mirror("kitchen@maths", "kitchen\n", -2000);   // written since
    write_mirror("before@maths", "before\n", -60000);    // in step already
    write_mirror("same@maths", "same second\n", -60000);
    sign_in();
    ASSERT_TRUE(quiet());

    EXPECT_EQ(mirror("study@maths"), "study\n");
    EXPECT_FALSE(tv_file_exists(m_mirror + "/old@maths"));
    EXPECT_EQ(on_drive("kitchen@maths"), "kitchen\n");
    EXPECT_EQ(on_drive("before@maths"), "(none)");
    // Drive has our time, so the file doesn't come back down.
    EXPECT_EQ(TVGoogleService::from_rfc3339(
                  m_drive.find("kitchen@maths")->modified.toString(Qt::ISODateWithMs)),
              TVGoogleService::from_rfc3339(TVGoogleService::to_rfc3339(at(-2000))));

    // Written in the same second as the last sync: unchanged. Later: uploaded.
    write_mirror("same@maths", "same second, again\n", -9500);
    poll();
    EXPECT_EQ(on_drive("same@maths"), "(none)");
    write_mirror("same@maths", "later\n", 1000);
    poll();
    EXPECT_EQ(on_drive("same@maths"), "later\n");

    // Deleted here: Drive keeps it, and it comes back.
    ASSERT_EQ(tv_delete_file(m_mirror + "/study@maths", false), TVErrC_ok);
    poll();
    ASSERT_TRUE(settle([this] { return tv_file_exists(m_mirror + "/study@maths"); }));
    EXPECT_EQ(mirror("study@maths"), "study\n");
    EXPECT_EQ(m_drive.find("study@maths")->bytes, "study\n");

    // A newer copy on Drive replaces ours.
    m_drive.find("study@maths")->bytes = "study, later\n";
    m_drive.find("study@maths")->modified = qat(30000);
    poll();
    ASSERT_TRUE(quiet());
    EXPECT_EQ(mirror("study@maths"), "study, later\n");
}

TEST_F(GoogleServiceTest, ANetworkThatFailsLeavesTheWorkForTheNextPoll)
{
    sign_in();
    m_drive.set_offline(true);
    write_mirror("kitchen@maths", "kitchen\n", 1000);
    poll();
    EXPECT_TRUE(m_service->find_file("kitchen@maths")->needs_push());
    m_drive.set_offline(false);
    m_drive.add_file("study@maths", "study\n", qat(-5000));
    // The list answers, the download doesn't.
    m_drive.clear_log();
    poll();
    EXPECT_EQ(on_drive("kitchen@maths"), "kitchen\n");
    m_drive.set_offline(true);
    poll();
    m_drive.set_offline(false);
    poll();
    ASSERT_TRUE(quiet());
    EXPECT_EQ(mirror("study@maths"), "study\n");
}

// A download that can't be written whole (the disk full) keeps the last
// whole copy in the mirror and is fetched again; it is never left cut.
TEST_F(GoogleServiceTest, ADownloadThatCantBeWrittenKeepsTheLastWholeCopy)
{
    write_mirror("study@maths", "study, the copy we have\n", -60000);
    TVWebFile file(m_mirror + "/study@maths");
    file.update_remote("f1", at(5000));
    ASSERT_TRUE(file.needs_pull());
    int result = TVErrC_ok;
    {
        struct rlimit before {};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
        struct rlimit small = before;
        small.rlim_cur = 8;
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        result = file.complete_pull("study, a later copy from Drive\n");
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    EXPECT_TRUE(istvwarn(result));
    get_tverror()->clear_all();
    EXPECT_EQ(mirror("study@maths"), "study, the copy we have\n");
    EXPECT_FALSE(tv_file_exists(m_mirror + "/.study@maths.download"));
    EXPECT_TRUE(file.needs_pull());
    EXPECT_FALSE(file.needs_push());
}

TEST_F(GoogleServiceTest, PollingBacksOffFromTenSecondsToTwoMinutesAndComesBackOnADownload)
{
    sign_in();
    EXPECT_EQ(m_service->get_interval(), 10000);
    std::vector<int> intervals;
    for (int i = 0; i < 7; ++i) {
        m_service->timer_triggred();
        ASSERT_TRUE(quiet());
        intervals.push_back(m_service->get_interval());
    }
    EXPECT_EQ(intervals, (std::vector<int>{15000, 22500, 33750, 50625, 75937, 113905, 120000}));
    m_drive.add_file("study@maths", "study\n", qat(-5000));
    m_service->timer_triggred();
    ASSERT_TRUE(settle([this] { return tv_file_exists(m_mirror + "/study@maths"); }));
    EXPECT_EQ(m_service->get_interval(), 10000);
    ASSERT_EQ(m_service->stop(), TVErrC_ok);
    EXPECT_EQ(m_service->get_interval(), 0);
    EXPECT_TRUE(quiet());
}

} // namespace
