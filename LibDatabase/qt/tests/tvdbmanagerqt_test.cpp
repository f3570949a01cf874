// The database window: the heartbeat and when it holds back, autosave
// after a quiet spell, undo and redo with confirmation, and a throwaway
// main window that opens a file after a killed process, edits,
// autosaves, undoes and closes it; a peer's push taken in by the
// heartbeat. Timers are fired by calling their
// expiry slots; time moves only on the test's clock.

#include "LibDatabase/qt/tvdbmanagerqt.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdbnote.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibGui/base/tvnotifylist.h"
#include "LibDatabase/db/tvlockfile.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/qt/tests/tvdbqttest.h"
#include "LibDatabase/qt/tvdbclipboardqt.h"
#include "LibDatabase/qt/tvdbimportqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibCore/param/tvparam.h"
#include "LibCore/ptrarray/tvtagvalue.h"
#include "LibGui/base/tvnotifylist.h"
#include "LibGui/qt/tvapplicationqt.h"
#include "LibGui/qt/tvmessageboxscript.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QUrl>

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Labels = std::vector<std::string>;

// A main window of its own: counts the heartbeats that got through, and
// can try to start one from inside one.
class CountingWindow : public TVDBManagerQt
{
public:
    using TVDBManagerQt::TVDBManagerQt;
    using TVDBManagerQt::add_menus;
    using TVDBManagerQt::initialise_notify;
    int update_calcs() override
    {
        ++m_updates;
        if (m_reenter)
            return do_periodic_update();
        return TVErrC_ok;
    }
    int m_updates = 0;
    bool m_reenter = false;
};

// The application object of a program with windows, over the test's
// QApplication.
class WindowsApp : public TVApplicationQt
{
public:
    explicit WindowsApp(const TVAppIdentity& identity) : TVApplicationQt(0, nullptr, identity, *qApp) {}
    int load_file(const std::string&) override { return TVErrC_ok; }
};

// Keeps the URLs handed to it, as "command|argument|tag=value".
class UrlWindow : public TVDBManagerQt
{
public:
    using TVDBManagerQt::TVDBManagerQt;
    void url_called(const std::string& command, const std::string& argument, const TVTagValue& query) override
    {
        m_urls.push_back(command + "|" + argument + "|x=" + query.get_string("x", ""));
    }
    Labels m_urls;
};

class ManagerTest : public TVDBQtTest
{
protected:
    void SetUp() override
    {
        TVDBQtTest::SetUp();
        write_file(m_file, {"Tables"});
        m_window = std::make_unique<CountingWindow>(*m_db);
    }
    void TearDown() override
    {
        m_window.reset();
        TVDBQtTest::TearDown();
    }
    // start() as the program calls it, run until the file is in.
    void start(int update_period)
    {
        ASSERT_EQ(m_window->start(m_file, false, update_period, 300000, "", 0), TVErrC_ok);
        drain([&] { return m_db->is_loaded() && m_window->m_updates > 0; });
        ASSERT_TRUE(m_db->is_loaded() && m_window->m_updates > 0);
    }
    // One tick of the frequent timer with an update due.
    int tick()
    {
        const int before = m_window->m_updates;
        m_window->periodic_timer_expired();
        m_window->frequent_timer_expired();
        return m_window->m_updates - before;
    }
    void press_key() { QTest::keyClick(m_window.get(), Qt::Key_A); }

    std::unique_ptr<CountingWindow> m_window;
};

TEST_F(ManagerTest, LoadRunsOneUpdateAndStartsTheTimersUnlessThePeriodIsZero)
{
    start(60000);
    EXPECT_EQ(m_window->m_updates, 1);
    EXPECT_TRUE(m_window->update_timer_active());
    EXPECT_TRUE(m_window->frequent_timer_active());
    EXPECT_TRUE(m_window->detail_timer_active());
    EXPECT_EQ(m_window->get_last_update().get_time_t(), C_Start);

    auto quiet = std::make_unique<TVDBQtTestDB>();
    CountingWindow other(*quiet);
    ASSERT_EQ(m_db->unload(), TVErrC_ok);
    m_window->unlock();
    ASSERT_EQ(other.start(m_file, false, 0, 300000, "", 0), TVErrC_ok);
    ASSERT_TRUE(drain([&] { return quiet->is_loaded(); }));
    EXPECT_FALSE(other.update_timer_active());
    EXPECT_FALSE(other.frequent_timer_active());
    EXPECT_EQ(other.on_db_changed(), TVErrC_ok);
    EXPECT_EQ(other.m_updates, 2);
}

TEST_F(ManagerTest, HeartbeatListsSpecErrorsUntilTheSpecIsMended)
{
    ASSERT_EQ(m_window->initialise_notify(), TVErrC_ok);
    start(60000);
    const auto specItems = [this] {
        int count = 0;
        const TVNotifyList& list = m_window->get_notify();
        for (int i = 0; i < list.get_nitems(); ++i)
            if (list.get_item(i).get_message() == "Object spec errors" &&
                list.get_item(i).get_object_id() == TVId(TVDBManagerQt::C_SpecParseError, 0, 0))
                ++count;
        return count;
    };
    EXPECT_EQ(specItems(), 0);
    ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec("Sum", "$<A> = guess();"), "Add Sum"),
              TVErrC_ok);
    ASSERT_EQ(m_db->parse_objectspecs(false), TVErrC_ok);
    EXPECT_EQ(tick(), 1);
    EXPECT_EQ(specItems(), 1);

    const int id = m_db->get_objectspec_id_for_name("Sum");
    ASSERT_EQ(m_db->edit_objectspec(id, 3), TVErrC_ok);
    m_db->get_objectspec_by_id(id)->set_text("$<A> = prompt();");
    ASSERT_EQ(m_db->commit_objectspec(id, "Mend Sum"), TVErrC_ok);
    EXPECT_EQ(tick(), 1);
    EXPECT_EQ(specItems(), 0);
}

TEST_F(ManagerTest, HeartbeatListsCheckItemsAndNotesUntilTheyAreDealtWith)
{
    ASSERT_EQ(m_window->initialise_notify(), TVErrC_ok);
    start(60000);
    const auto listed = [this] {
        std::multiset<std::string> messages;
        const TVNotifyList& list = m_window->get_notify();
        for (int i = 0; i < list.get_nitems(); ++i)
            messages.insert(list.get_item(i).get_message());
        return messages;
    };
    ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec("Book", "$<Title> = prompt();"), ""), TVErrC_ok);
    ASSERT_EQ(m_db->parse_objectspecs(true), TVErrC_ok);
    ASSERT_EQ(m_db->apply_objectspecs(), TVErrC_ok);
    auto* dune = new TVDBTestNode("dune");
    ASSERT_EQ(m_db->add_object(dune, nullptr, "", "", m_db->get_objectspec_id_for_name("Book"), "Dune"),
              TVErrC_ok);
    TVDBNote* note = nullptr;
    ASSERT_EQ(m_db->add_note("Buy paper\nlots of it", &note), TVErrC_ok);
    m_clock.advance(60);
    EXPECT_EQ(tick(), 1);
    EXPECT_EQ(listed(), (std::multiset<std::string>{"Unfilled variables", "Note: Buy paper"}));

    ASSERT_EQ(dune->set_var_value("Title", "Dune", false), TVErrC_ok);
    ASSERT_EQ(m_db->delete_note(note->get_id()), TVErrC_ok);
    m_clock.advance(60);
    EXPECT_EQ(tick(), 1);
    EXPECT_TRUE(listed().empty());
}

TEST_F(ManagerTest, ClipboardOffersAPasteOnlyWhileTheSystemClipboardHoldsOurIds)
{
    start(0);
    TVDBClipboardQt& clipboard = m_window->get_clipboard();
    EXPECT_FALSE(clipboard.clipboard_has_object());
    TVIdList ids;
    ids.add(node_id(*m_db, "Tables"), -1, -1);
    clipboard.copy(ids);
    EXPECT_TRUE(clipboard.clipboard_has_object());
    // Another program took the clipboard since.
    QApplication::clipboard()->setText("shopping list");
    EXPECT_FALSE(clipboard.clipboard_has_object());
}

TEST_F(ManagerTest, UpdateIsHeldWhileEditingOrPausedByTheUserUntilOverdueAndNeverReentered)
{
    start(60000);
    const int tables = node_id(*m_db, "Tables");
    ASSERT_EQ(m_db->edit_object(tables, false, 1), TVErrC_ok);
    EXPECT_EQ(tick(), 0);
    EXPECT_TRUE(m_window->is_update_due());
    m_clock.advance(601);
    EXPECT_EQ(tick(), 1);
    ASSERT_EQ(m_db->revert_object(tables), TVErrC_ok);

    m_window->set_ui_pause(true);
    press_key();
    EXPECT_TRUE(m_window->interaction_timer_active());
    EXPECT_EQ(tick(), 0);
    m_window->interact_timer_expired();
    EXPECT_EQ(tick(), 1);

    m_window->setWindowState(Qt::WindowMinimized);
    EXPECT_EQ(tick(), 0);
    m_clock.advance(11 * 60);
    EXPECT_EQ(tick(), 1);
    m_window->setWindowState(Qt::WindowNoState);

    m_window->m_reenter = true;
    EXPECT_EQ(tick(), 1);
    EXPECT_FALSE(m_window->is_updating());
}

TEST_F(ManagerTest, AutosaveWaitsForFifteenQuietSeconds)
{
    start(60000);
    ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
    press_key();
    EXPECT_EQ(tick(), 1);
    EXPECT_TRUE(m_db->changed_since_full_write());
    // Typing goes on: each key starts the quiet spell again.
    m_clock.advance(10);
    press_key();
    EXPECT_EQ(tick(), 1);
    EXPECT_TRUE(m_db->changed_since_full_write());
    m_window->interact_timer_expired();
    EXPECT_TRUE(m_window->update_timer_active());
    EXPECT_EQ(tick(), 1);
    EXPECT_FALSE(m_db->changed_since_full_write());
    TVDBQtTestDB check;
    ASSERT_EQ(check.read(m_file, false, false), TVErrC_ok);
    EXPECT_EQ(names(check), (std::set<std::string>{"Bonds", "Tables"}));
}

TEST_F(ManagerTest, UndoAndRedoAskFirst)
{
    start(60000);
    ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
    {
        TVMessageBoxScript script({"No"});
        m_window->undo_selected();
        EXPECT_EQ(script.texts(), Labels{"Undo Add Bonds?"});
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Yes", "No"}));
        EXPECT_EQ(names(*m_db).count("Bonds"), 1u);
    }
    TVMessageBoxScript script({"Yes", "Yes"});
    m_window->undo_selected();
    EXPECT_EQ(names(*m_db).count("Bonds"), 0u);
    m_window->redo_selected();
    EXPECT_EQ(names(*m_db).count("Bonds"), 1u);
    EXPECT_EQ(script.texts(), (Labels{"Undo Add Bonds?", "Redo Add Bonds?"}));
}

TEST_F(ManagerTest, ClosingAsksAboutChangesAndQuitWithCancelKeepsTheWindow)
{
    start(60000);
    m_db->set_autosave(false);
    ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
    {
        TVMessageBoxScript script({"Cancel"});
        EXPECT_EQ(m_window->user_quit(true), TVErrC_ok);
        ASSERT_TRUE(drain([&] { return !script.boxes().empty(); }));
        EXPECT_EQ(script.titles(), Labels{"Save"});
        EXPECT_TRUE(m_db->is_loaded());
        EXPECT_TRUE(m_window->frequent_timer_active());
    }
    TVMessageBoxScript script({"Save"});
    EXPECT_FALSE(m_window->close());
    ASSERT_TRUE(drain([&] { return !m_window->isVisible(); }));
    EXPECT_FALSE(m_db->is_loaded());
    TVDBQtTestDB check;
    ASSERT_EQ(check.read(m_file, false, false), TVErrC_ok);
    EXPECT_EQ(names(check).count("Bonds"), 1u);
}

TEST_F(ManagerTest, SuspendSavesAndPausesTheHeartbeatUntilTheProgramComesBack)
{
    start(60000);
    ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
    m_window->app_state_changed(Qt::ApplicationSuspended);
    EXPECT_FALSE(m_db->changed_since_full_write());
    TVDBQtTestDB check;
    ASSERT_EQ(check.read(m_file, false, false), TVErrC_ok);
    EXPECT_EQ(names(check).count("Bonds"), 1u);
    m_clock.advance(601);
    EXPECT_EQ(tick(), 0);

    m_window->app_state_changed(Qt::ApplicationActive);
    EXPECT_TRUE(m_window->interaction_timer_active());
    m_window->interact_timer_expired();
    EXPECT_EQ(tick(), 1);

    m_window->app_state_changed(Qt::ApplicationSuspended);
    m_window->app_state_changed(Qt::ApplicationInactive);
    EXPECT_EQ(tick(), 1);
}

// A URL that comes while the file is still loading waits for it; once the
// file is in, the next goes straight through.
TEST_F(ManagerTest, UrlThatCameBeforeTheFileReachesTheWindowOnceLoaded)
{
    m_app.reset();
    auto app = std::make_unique<WindowsApp>(identity());
    auto* window = new UrlWindow(*m_db);
    app->url_scheme(QUrl("tvmaths://open/some%20file?x=1"));
    EXPECT_EQ(app->pending_url(), "tvmaths://open/some file?x=1");
    ASSERT_EQ(window->start(m_file, false, 60000, 300000, "", 0), TVErrC_ok);
    EXPECT_TRUE(drain([&] { return !window->m_urls.empty(); }));
    EXPECT_EQ(window->m_urls, Labels{"open|some file|x=1"});
    EXPECT_EQ(app->pending_url(), "");
    app->url_scheme(QUrl("tvmaths://refresh?x=2"));
    EXPECT_EQ(window->m_urls, (Labels{"open|some file|x=1", "refresh||x=2"}));
    delete window;
    EXPECT_EQ(app->window_count(), 0);
}

// Quitting remembers the open file as the session, for the next start.
TEST_F(ManagerTest, QuitRecordsTheOpenFileAsTheSession)
{
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(m_dir.path().toStdString() + "/config"));
    ASSERT_EQ(m_app->setup_parameters(), TVErrC_ok);
    start(60000);
    EXPECT_EQ(m_window->user_quit(true), TVErrC_ok);
    EXPECT_TRUE(drain([&] { return !m_db->is_loaded(); }));
    m_app->load_recent();
    EXPECT_EQ(m_app->get_session(), Labels{m_file});
    EXPECT_EQ(m_app->get_first_file(), m_file);
    TVParam::release();
}

// The word given to start names the default file for the flows too: a
// first import takes that name, the one the next start will open.
TEST_F(ManagerTest, ImportIntoAnEmptyFolderTakesTheDefaultNameOfTheStartWord)
{
    ASSERT_EQ(m_window->start(m_file, false, 0, 300000, "maths", 0), TVErrC_ok);
    ASSERT_TRUE(drain([&] { return m_db->is_loaded(); }));
    ASSERT_EQ(m_db->unload(), TVErrC_ok);
    m_window->unlock();
    std::string expected;
    ASSERT_EQ(TVDBManager::get_default_filename(expected, "maths"), TVErrC_ok);
    ASSERT_FALSE(tv_file_exists(expected));

    TVFileSelectQt::Scoped chooser([&](TVFileSelectQt::Kind, const std::string&,
                                       const std::string&, const std::string&) { return m_file; });
    FlowEnd end;
    TVDBImportQt::start_import(*m_db, "", "", true, true, m_window.get(),
                               TVSlotQt(&end, SLOT(complete(std::string))),
                               TVSlotQt(&end, SLOT(failed())), TVSlotQt(&end, SLOT(cancelled())));
    ASSERT_TRUE(drain([&] { return !end.m_end.empty(); }));
    EXPECT_EQ(end.m_end, "complete " + expected);
    EXPECT_EQ(slurp(expected), slurp(m_file));
}

// File › Open and File › New from the window's own menu, given up on at
// the question they ask: the file that was open comes back, with the
// window, which in a program of one window would otherwise close.
TEST_F(ManagerTest, GivingUpOnOpenOrNewKeepsTheFileThatWasOpen)
{
    start(60000);
    QMenu fileMenu, editMenu;
    m_window->add_menus(fileMenu, editMenu);
    const auto action = [&](const QString& text) {
        for (QAction* a : fileMenu.actions())
            if (a->text() == text)
                return a;
        return static_cast<QAction*>(nullptr);
    };
    const std::string dir = tv_dirname(m_file);
    spill(dir + "/damaged.tvmaths", "not a database\n");
    write_file(dir + "/locked.tvmaths", {"Bonds"});
    write_file(dir + "/other.tvmaths", {"Bonds"});
    TVLockFile holder;
    ASSERT_EQ(holder.lock(dir + "/locked.tvmaths", false), TVErrC_ok);
    const struct {
        const char* menu;
        std::string file;
        Labels answers;
        const char* title;
    } rows[] = {
        {"Open...", dir + "/damaged.tvmaths", {"Ok"}, "Corrupt File"},
        {"Open...", dir + "/missing.tvmaths", {"Quit"}, "Load File"},
        {"Open...", dir + "/locked.tvmaths", {"Quit"}, "Load File"},
        {"New...", dir + "/other.tvmaths", {"No"}, "Overrwrite File"},
        {"New...", dir + "/other.tvmaths", {"Quit"}, "Overrwrite File"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.menu) + " " + row.file + " " + row.answers[0]);
        TVFileSelectQt::Scoped chooser([&](TVFileSelectQt::Kind, const std::string&,
                                           const std::string&, const std::string&) { return row.file; });
        TVMessageBoxScript script(row.answers);
        ASSERT_NE(action(row.menu), nullptr);
        action(row.menu)->trigger();
        ASSERT_TRUE(drain([&] { return !script.boxes().empty() && m_db->is_loaded(); }));
        EXPECT_EQ(script.titles(), Labels{row.title});
        get_tverror()->clear_all();
        EXPECT_TRUE(m_window->isVisible());
        EXPECT_EQ(m_db->get_filename(), m_file);
        EXPECT_EQ(names(*m_db), std::set<std::string>{"Tables"});
        EXPECT_FALSE(tv_file_exists(dir + "/missing.tvmaths"));
    }
    EXPECT_EQ(slurp(dir + "/damaged.tvmaths"), "not a database\n");
}

// The whole life of a file in a throwaway window: a process that opened
// it finished an operation and was killed; the window finds the operation
// (and the dead process's lock), edits, autosaves, undoes, and closes.
// Another computer's push reaches the open window by the heartbeat alone:
// its node comes in beside ours and the views are told.
TEST_F(ManagerTest, HeartbeatTakesInWhatAnotherComputerPushedToTheSharedFolder)
{
    const std::string root = m_dir.path().toStdString();
    ASSERT_EQ(tv_create_dir(root + "/share", true), TVErrC_ok);
    ASSERT_EQ(TVLocalService::set_syncdir(root + "/share"), TVErrC_ok);
    const std::string name = tv_basename(m_file);
    const std::string link = name.substr(0, name.rfind('.'));
    TVLocalService ours;
    TVLocalService theirs;
    const auto restore = [&] {
        TVLocalService::swap_instance(nullptr);
        TVCloudService::override_host("");
    };
    // Objects are known by create id and time: theirs is made later.
    m_clock.advance(1);
    {
        // The other computer: its own folders, host and view of the share.
        const QByteArray data = qgetenv("XDG_DATA_HOME");
        const QByteArray cache = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/study/data"));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/study/cache"));
        TVLocalService::swap_instance(&theirs);
        TVCloudService::override_host("study");
        TVDBQtTestDB peer;
        TVExternalDB* external = nullptr;
        EXPECT_EQ(peer.load(root + "/study/" + name, true, std::string(), false, false, true),
                  TVErrC_ok);
        EXPECT_EQ(add(peer, "Division"), TVErrC_ok);
        EXPECT_EQ(peer.add_external(TVCloudInstance::E_LocalShare, link, 2, external), TVErrC_ok);
        EXPECT_EQ(peer.save(true, true, false), TVErrC_ok) << take_messages();
        EXPECT_EQ(peer.unload(), TVErrC_ok);
        qputenv("XDG_DATA_HOME", data);
        qputenv("XDG_CACHE_HOME", cache);
    }
    TVLocalService::swap_instance(&ours);
    TVCloudService::override_host("kitchen");
    start(60000);
    TVExternalDB* external = nullptr;
    ASSERT_EQ(m_db->add_external(TVCloudInstance::E_LocalShare, link, 2, external), TVErrC_ok);
    // The first ask for a new computer's file only marks it wanted.
    int updates = 0;
    for (int i = 0; i < 4 && node_id(*m_db, "Division") < 0; ++i) {
        m_clock.advance(1);
        m_window->frequent_timer_expired();
        updates = m_window->m_updates;
    }
    EXPECT_GE(node_id(*m_db, "Division"), 0) << take_messages();
    EXPECT_GE(node_id(*m_db, "Tables"), 0);
    EXPECT_GT(updates, 1);
    restore();
}

// A script's failure is the window's to show, and a script reaches the
// window's actions by name.
TEST_F(ManagerTest, FailingScriptIsListedAndScriptsReachTheWindowsActions)
{
    start(60000);
    QAction* go = m_window->menuBar()->addAction("&Go");
    int pressed = 0;
    QObject::connect(go, &QAction::triggered, [&] { ++pressed; });
    TVDBObject* tables = m_db->get_object_by_id(node_id(*m_db, "Tables"));
    ASSERT_NE(tables, nullptr);
    TVDBScript press("press", "TVGuiCall('Go')", "");
    EXPECT_EQ(press.run(*tables, true), TVErrC_ok);
    EXPECT_EQ(pressed, 1);

    tables->add_script(new TVDBScript("broken", "var a = 1;\n\nTVGuiCall('Fly')", ""));
    EXPECT_EQ(tables->get_script("broken")->run(*tables, true), TVErrC_okCancel);
    ASSERT_EQ(m_window->initialise_notify(), TVErrC_ok);
    tick();
    const TVNotifyList& list = m_window->get_notify();
    std::vector<std::string> messages;
    for (int i = 0; i < list.get_nitems(); ++i)
        messages.push_back(list.get_item(i).get_message());
    EXPECT_NE(std::find(messages.begin(), messages.end(),
                        "Script errors in broken:3: Error: The window has no action Fly."),
              messages.end());
}

TEST_F(ManagerTest, WindowRecoversAKilledSessionEditsAutosavesUndoesAndCloses)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        TVDBQtTestDB db;
        TVLockFile lock;
        if (istvwarn(lock.lock(m_file, false)) ||
            istvwarn(db.load(m_file, false, "", true, true, true)) ||
            istvwarn(add(db, "Survivor")))
            _exit(1);
        raise(SIGKILL);
        _exit(2);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));

    // Qt may clear a dead process's lock by itself; if not, it is stolen.
    Labels titles;
    TVMessageBoxQt::set_answerer([&](const std::string& title, const std::string&, const Labels&) {
        titles.push_back(title);
        return std::string(title == "Load File" ? "Open Anyway" : "Yes");
    });
    start(60000);
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Survivor", "Tables"}));

    ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
    m_window->interact_timer_expired();
    EXPECT_EQ(tick(), 1);
    EXPECT_FALSE(m_db->changed_since_full_write());

    m_window->undo_selected();
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Survivor", "Tables"}));

    EXPECT_FALSE(m_window->close());
    ASSERT_TRUE(drain([&] { return !m_window->isVisible(); }));
    TVMessageBoxQt::set_answerer(nullptr);
    EXPECT_FALSE(m_db->is_loaded());
    for (const std::string& title : titles)
        EXPECT_TRUE(title == "Load File" || title == "Undo") << title;
    TVDBQtTestDB check;
    ASSERT_EQ(check.read(m_file, true, true), TVErrC_ok);
    EXPECT_EQ(names(check), (std::set<std::string>{"Survivor", "Tables"}));
}

} // namespace
