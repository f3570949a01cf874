// The cloud controls and Drive sync seen from a workspace: the button's
// icon for each state of the links, the settings page's rules for turning
// a service on and off, the first start that takes its data from the
// cloud, quitting that stops the Drive mirror, and two computers that
// keep one file through a Drive of the tests' own on the loopback address.
// Each computer has its own home (data, cache, configuration), host name
// and view of the shared places.

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/param/tvparam.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/qt/tests/tvdbqttest.h"
#include "LibDatabase/qt/tvcloudbrowseqt.h"
#include "LibDatabase/qt/tvcloudbuttonqt.h"
#include "LibDatabase/qt/tvcloudsettingsformqt.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "TestSupport/tvfakedrive.h"
#include "TestSupport/tvfiletest.h"
#include "TestSupport/tvsettle.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

using Labels = std::vector<std::string>;
constexpr int C_Drive = TVCloudInstance::E_GDrive;
constexpr int C_Share = TVCloudInstance::E_LocalShare;

// One computer: its home, host name and cloud services.
struct Device {
    std::string host;
    std::string home;
    TVLocalService share;
    TVGCloudService mirror;
    TVGoogleService google;
};

class CloudControlsTest : public TVDBQtTest
{
protected:
    void SetUp() override
    {
        TVDBQtTest::SetUp();
        m_root = m_dir.path().toStdString();
        m_link = tv_basename(m_file);
        ASSERT_EQ(tv_create_dir(m_root + "/share", true), TVErrC_ok);
        TVGoogleService::set_browser([this](const QUrl& url) { m_drive.browse(url); });
        m_kitchen = &device("kitchen", false);
    }
    void TearDown() override
    {
        m_window.reset();
        m_db.reset();
        TVLocalService::swap_instance(nullptr);
        TVGCloudService::swap_instance(nullptr);
        TVGoogleService::swap_instance(nullptr);
        TVGoogleService::set_browser(nullptr);
        TVCloudService::override_host("");
        TVDBQtTest::TearDown();
    }

    // A computer with the program registered with Google (registered) or not.
    Device& device(const std::string& host, bool registered)
    {
        m_devices.push_back(std::make_unique<Device>());
        Device& d = *m_devices.back();
        d.host = host;
        d.home = m_root + "/" + host;
        be(d);
        if (registered)
            m_drive.configure();
        d.mirror.set_folder(d.home + "/mirror");
        d.google.initialise(d.home + "/mirror",
                            tvparam()->get_system_value(TVGoogleService::C_ClientIdTag),
                            tvparam()->get_system_value(TVGoogleService::C_ClientSecretTag));
        EXPECT_EQ(TVLocalService::set_syncdir(m_root + "/share"), TVErrC_ok);
        return d;
    }
    // The kitchen's program, registered with Google after all.
    void register_kitchen()
    {
        be(*m_kitchen);
        m_drive.configure();
        m_kitchen->google.initialise(m_kitchen->home + "/mirror", "test-client", "test-secret");
    }
    void be(Device& d)
    {
        for (const char* place : {"DATA", "CACHE", "CONFIG"})
            qputenv((std::string("XDG_") + place + "_HOME").c_str(),
                    QByteArray::fromStdString(d.home + "/" + place));
        EXPECT_EQ(m_app->setup_config(), TVErrC_ok);
        TVLocalService::swap_instance(&d.share);
        TVGCloudService::swap_instance(&d.mirror);
        TVGoogleService::swap_instance(&d.google);
        TVCloudService::override_host(d.host);
        m_clock.advance(1);
    }
    // The kitchen's window on m_file, holding these nodes.
    void open(const std::set<std::string>& nodes)
    {
        be(*m_kitchen);
        write_file(m_file, nodes);
        m_window = std::make_unique<TVDBManagerQt>(*m_db);
        m_button = new TVCloudButtonQt(m_window.get(), m_window.get());
        ASSERT_EQ(m_window->start(m_file, false, 0, 300000, "", 0), TVErrC_ok);
        ASSERT_TRUE(drain([&] { return m_db->is_loaded(); }));
    }
    // Another computer's file with that node, pushed to the shared folder
    // or Drive (then the device must be signed in).
    void push_from(Device& d, const std::string& node, int type)
    {
        be(d);
        TVDBQtTestDB peer;
        TVExternalDB* link = nullptr;
        ASSERT_EQ(peer.load(d.home + "/" + m_link, true, std::string(), false, false, true),
                  TVErrC_ok);
        ASSERT_EQ(add(peer, node), TVErrC_ok);
        ASSERT_EQ(peer.add_external(type, m_link, 2, link), TVErrC_ok);
        ASSERT_EQ(peer.save(true, true, false), TVErrC_ok) << take_messages();
        ASSERT_EQ(peer.unload(), TVErrC_ok);
        if (type == C_Drive)
            poll(d);
    }
    static bool settle(const std::function<bool()>& done) { return tv_settle(done); }
    void sign_in(Device& d)
    {
        be(d);
        (void)d.google.start();
        ASSERT_TRUE(settle([&] { return d.google.is_connected() && !d.google.is_busy(); }));
    }
    // One poll of the device's Drive mirror, waited out.
    void poll(Device& d)
    {
        be(d);
        ASSERT_EQ(d.google.update(), TVErrC_ok);
        ASSERT_TRUE(settle([&] { return !d.google.is_busy(); }));
    }
    // Pulls until nothing more comes, as the heartbeat does.
    void pull(Device& d, TVDatabase& db)
    {
        be(d);
        for (int i = 0; i < 6; ++i) {
            ASSERT_EQ(db.pull_all(!db.needs_save()), TVErrC_ok) << take_messages();
            m_clock.advance(1);
        }
    }
    std::string icon()
    {
        m_button->update_state();
        return m_button->isHidden() ? "hidden" : tv_filename(m_button->get_icon());
    }
    template <class T>
    T* find(TVCloudSettingsFormQt& form, const char* name)
    {
        return form.findChild<T*>(name);
    }

    TVFakeDrive m_drive;
    std::string m_root;
    std::string m_link;
    std::vector<std::unique_ptr<Device>> m_devices;
    Device* m_kitchen = nullptr;
    std::unique_ptr<TVDBManagerQt> m_window;
    TVCloudButtonQt* m_button = nullptr;
};

TEST_F(CloudControlsTest, TheButtonHidesWithoutLinksShowsTheWorstLinkAndPushesOnAClick)
{
    open({"Tables"});
    EXPECT_EQ(icon(), "hidden");
    TVExternalDB* link = nullptr;
    ASSERT_EQ(m_db->add_external(C_Share, m_link, 2, link), TVErrC_ok);
    EXPECT_EQ(icon(), "CloudPush.png");
    QTest::mouseClick(m_button, Qt::LeftButton);
    EXPECT_TRUE(tv_file_exists(m_root + "/share/kitchen@" + m_link));
    EXPECT_EQ(icon(), "CloudOK.png");

    // A Drive link without the program's registration is off, and off
    // outranks the idle share; a click says so and writes nothing.
    ASSERT_EQ(m_db->add_external(C_Drive, m_link, 0, link), TVErrC_ok);
    EXPECT_EQ(icon(), "CloudOff.png");
    TVMessageBoxScript script({"Ok"});
    QTest::mouseClick(m_button, Qt::LeftButton);
    ASSERT_EQ(script.boxes().size(), 1u);
    EXPECT_EQ(script.boxes()[0].title, "Push to Cloud");
    EXPECT_EQ(script.boxes()[0].text, "Cloud service not available.");
}

TEST_F(CloudControlsTest, TheButtonFollowsDriveFromSignInThroughDownloadAndUpload)
{
    Device& study = device("study", true);
    sign_in(study);
    push_from(study, "Division", C_Drive);
    register_kitchen();
    open({"Tables"});
    TVExternalDB* link = nullptr;
    ASSERT_EQ(m_db->add_external(C_Drive, m_link, 2, link), TVErrC_ok);
    EXPECT_EQ(icon(), "CloudInit.png"); // not signed in yet

    (void)m_kitchen->google.start();
    ASSERT_TRUE(settle([&] { return m_kitchen->google.is_connected() && !m_kitchen->google.is_busy(); }));
    pull(*m_kitchen, *m_db);
    EXPECT_GE(node_id(*m_db, "Division"), 0);
    EXPECT_EQ(icon(), "CloudOK.png"); // the merge was saved whole

    // Our push on its way up, then a list on its way down.
    m_drive.hold("PUT /upload/");
    ASSERT_EQ(m_db->save(true, true, false), TVErrC_ok) << take_messages();
    ASSERT_EQ(m_kitchen->google.update(), TVErrC_ok);
    ASSERT_TRUE(settle([&] {
        return m_drive.log().last().startsWith("PUT /upload/") &&
               !m_kitchen->google.download_in_progress();
    }));
    EXPECT_EQ(icon(), "CloudUp.png");
    m_drive.release();
    m_drive.hold("GET /drive/v2/files");
    ASSERT_EQ(m_kitchen->google.update(), TVErrC_ok);
    EXPECT_EQ(icon(), "CloudDown.png");
    m_drive.release();
    ASSERT_TRUE(settle([&] { return !m_kitchen->google.is_busy(); }));
    EXPECT_EQ(icon(), "CloudOK.png");
    EXPECT_EQ(m_drive.find(QString::fromStdString("kitchen@" + m_link))->bytes.isEmpty(), false);

    // Quitting stops the mirror's polling.
    EXPECT_TRUE(m_kitchen->google.is_running());
    ASSERT_EQ(m_window->user_quit(true), TVErrC_ok);
    EXPECT_FALSE(m_kitchen->google.is_running());
    // The program ends here; the tests' application runs on, and its next
    // event loops must not find the quit still standing.
    QTimer::singleShot(0, [] { QCoreApplication::exit(0); });
    QCoreApplication::exec();
}

TEST_F(CloudControlsTest, TheSettingsPageTurnsServicesOnTakingTheCloudsDataIntoAnEmptyFile)
{
    Device& study = device("study", false);
    push_from(study, "Division", C_Share);
    open({});
    TVCloudSettingsFormQt form;
    form.initialise(*m_db, *m_window);
    form.update_display();
    // No registration with Google: no Google group.
    EXPECT_TRUE(find<QGroupBox>(form, "googleGroup")->isHidden());
    EXPECT_TRUE(find<QGroupBox>(form, "iCloudGroup")->isHidden());
    EXPECT_FALSE(find<QGroupBox>(form, "cloudShareGroup")->isHidden());
    EXPECT_TRUE(find<QCheckBox>(form, "cloudAutoCheck")->isChecked());

    // Turned on for a file with nothing of the user's: the cloud's data
    // comes in whole, and the link saves only when asked.
    find<QCheckBox>(form, "cloudAutoCheck")->setChecked(false);
    find<QCheckBox>(form, "shareCheck")->setChecked(true);
    ASSERT_NE(m_db->get_external_type(C_Share), nullptr);
    EXPECT_TRUE(m_db->get_external_type(C_Share)->get_manual());
    pull(*m_kitchen, *m_db);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Division"});

    TVMessageBoxScript script({"Ok"});
    QTest::mouseClick(find<QPushButton>(form, "infoButton"), Qt::LeftButton);
    ASSERT_EQ(script.titles(), Labels{"Cloud Merge Information"});
    EXPECT_NE(script.texts()[0].find(m_link), std::string::npos) << script.texts()[0];

    find<QCheckBox>(form, "shareCheck")->setChecked(false);
    EXPECT_EQ(m_db->get_nexternals(), 0);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Division"});
}

TEST_F(CloudControlsTest, TurnedOnForAFileWithTheUsersWorkTheCloudsDataIsMergedIn)
{
    Device& study = device("study", false);
    push_from(study, "Division", C_Share);
    register_kitchen();
    open({"Tables"});
    TVCloudSettingsFormQt form;
    form.initialise(*m_db, *m_window);
    form.update_display();
    EXPECT_FALSE(find<QGroupBox>(form, "googleGroup")->isHidden());
    EXPECT_EQ(find<QPushButton>(form, "googleInit")->text(), "Sign In");
    EXPECT_FALSE(find<QPushButton>(form, "googleBrowse")->isEnabled());
    EXPECT_FALSE(find<QCheckBox>(form, "googleCheck")->isEnabled());
    QTest::mouseClick(find<QPushButton>(form, "googleInit"), Qt::LeftButton);
    ASSERT_TRUE(settle([&] { return m_kitchen->google.is_authorised(); }));
    EXPECT_EQ(find<QPushButton>(form, "googleInit")->text(), "Sign Out");
    EXPECT_TRUE(find<QCheckBox>(form, "googleCheck")->isEnabled());

    find<QCheckBox>(form, "shareCheck")->setChecked(true);
    ASSERT_EQ(form.read_form(), TVErrC_ok);
    pull(*m_kitchen, *m_db);
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Division", "Tables"}));
}

TEST_F(CloudControlsTest, AFirstStartCanTakeItsDataFromTheSharedFolder)
{
    Device& study = device("study", false);
    push_from(study, "Division", C_Share);
    be(*m_kitchen);
    QFile::remove(QString::fromStdString(m_file));
    const std::string picked = m_root + "/share/study@" + m_link;
    TVFileSelectQt::Scoped chooser(
        [&](TVFileSelectQt::Kind, const std::string&, const std::string&, const std::string&) {
            return picked;
        });
    TVMessageBoxScript script({TVDBManagerQt::C_FromCloud, "Cloud Share"});
    m_window = std::make_unique<TVDBManagerQt>(*m_db);
    ASSERT_EQ(m_window->start(m_file, false, 0, 300000, "", 0), TVErrC_ok);
    // The flow waits for the shared folder in a loop of its own.
    ASSERT_TRUE(settle([&] { return m_db->is_loaded(); }));
    EXPECT_EQ(script.boxes()[0].labels,
              (Labels{"Create New", "Find It", TVDBManagerQt::C_FromCloud, "Quit"}));
    EXPECT_TRUE(script.done());
    EXPECT_EQ(m_db->get_filename(), m_file);
    ASSERT_NE(m_db->get_external_type(C_Share), nullptr);
    EXPECT_EQ(m_db->get_external_type(C_Share)->get_name(), m_link);
    pull(*m_kitchen, *m_db);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Division"});
}

TEST_F(CloudControlsTest, AFirstStartCanTakeItsDataFromDriveSigningInOnTheWay)
{
    Device& study = device("study", true);
    sign_in(study);
    push_from(study, "Division", C_Drive);
    register_kitchen();
    QFile::remove(QString::fromStdString(m_file));
    TVMessageBoxScript script({TVDBManagerQt::C_FromCloud, "Google Drive"});
    // While Drive's list is held back the flow says what it waits for.
    m_drive.hold("GET /drive/v2/files");
    std::set<std::string> seen;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        seen.insert(TVCloudBrowseQt::waiting());
        if (seen.count(TVCloudBrowseQt::C_WaitList) != 0)
            m_drive.release();
    });
    watch.start(20);
    m_window = std::make_unique<TVDBManagerQt>(*m_db);
    ASSERT_EQ(m_window->start(m_file, false, 0, 300000, "", 0), TVErrC_ok);
    ASSERT_TRUE(settle([&] { return m_db->is_loaded(); }));
    EXPECT_EQ(seen.count("Waiting for the file list..."), 1u);
    EXPECT_TRUE(script.done());
    EXPECT_EQ(m_drive.browser_opens(), 2);
    ASSERT_NE(m_db->get_external_type(C_Drive), nullptr);
    pull(*m_kitchen, *m_db);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Division"});
}

// Two computers, two homes, one Drive: each change made on one reaches the
// other, and both end with the same nodes.
TEST_F(CloudControlsTest, TwoComputersKeepOneFileThroughDrive)
{
    Device& study = device("study", true);
    register_kitchen();
    sign_in(study);
    sign_in(*m_kitchen);
    push_from(study, "Division", C_Drive);

    open({"Tables"});
    TVExternalDB* link = nullptr;
    ASSERT_EQ(m_db->add_external(C_Drive, m_link, 2, link), TVErrC_ok);
    poll(*m_kitchen);
    pull(*m_kitchen, *m_db);
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Division", "Tables"}));
    ASSERT_EQ(m_db->save(true, true, false), TVErrC_ok) << take_messages();
    poll(*m_kitchen);

    be(study);
    TVDBQtTestDB other;
    ASSERT_EQ(other.load(study.home + "/" + m_link, false, std::string(), false, false, true),
              TVErrC_ok);
    poll(study);
    pull(study, other);
    EXPECT_EQ(names(other), (std::set<std::string>{"Division", "Tables"}));
    EXPECT_EQ(tv_read_lines(m_kitchen->home + "/mirror/study@" + m_link),
              tv_read_lines(study.home + "/mirror/study@" + m_link));
    ASSERT_EQ(other.unload(), TVErrC_ok);
}

} // namespace
