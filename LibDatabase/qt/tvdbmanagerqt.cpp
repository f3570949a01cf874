#include "LibDatabase/qt/tvdbmanagerqt.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/textstr/tvscopeguard.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/qt/tvcloudbrowseqt.h"
#include "LibDatabase/qt/tvcloudbuttonqt.h"
#include "LibDatabase/qt/tvcloudsettingsformqt.h"
#include "LibDatabase/db/tvlockfile.h"
#include "LibDatabase/qt/tvdbflow_p.h"
#include "LibDatabase/qt/tvdbclipboardqt.h"
#include "LibDatabase/qt/tvdbimportqt.h"
#include "LibDatabase/db/tvdbnote.h"
#include "LibDatabase/qt/tvdbloadqt.h"
#include "LibDatabase/qt/tvdbscripthostqt.h"
#include "LibDatabase/qt/tvdbunloadqt.h"
#include "LibDatabase/db/tvdbheartbeat.h"
#include "LibDate/core/tvdateutils.h"
#include "LibGui/base/tvnotifylist.h"
#include "LibGui/base/tvnotifyscheme.h"
#include "LibGui/qt/tvapplicationqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvnotifylistqt.h"
#include "LibGui/qt/tvsettingsqt.h"
#include "LibGui/qt/tvslotcall.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QMenu>
#include <QTimer>

#include <algorithm>

using tvslotcall::call;
using tvslotcall::stopped;
using tvdbflow::label;

struct TVDBManagerQt::TVDBManagerQtImpl
{
    // On the screen: the bar's tree, the tray and the badge follow it.
    TVNotifyListQt m_notify;
    QTimer m_updateTimer;
    QTimer m_frequentTimer;
    QTimer m_detailTimer;
    QTimer m_interactTimer;
    TVLockFile m_lock;
    std::unique_ptr<TVDBScriptHostQt> m_scriptHost;
    // Made at the first get_clipboard.
    std::unique_ptr<TVDBClipboardQt> m_clipboard;
    bool m_paused = false;
    bool m_updating = false;
    // closeEvent lets the window go only once do_unload has finished.
    bool m_closing = false;
    std::string m_pendingFile;
    std::string m_pendingFallback;
    bool m_pendingMulti = false;
    // The cloud file a first start chose to take the data from.
    int m_pendingCloudType = TVCloudInstance::E_None;
    std::string m_pendingCloudName;
};

namespace {

// Pushes a status for the length of a scope.
class StatusScope
{
public:
    explicit StatusScope(const std::string& text) : m_text(text)
    {
        tvapplication()->push_status(m_text, -1.0, true, TVDatabase::C_SaveStatusDelayMicro);
    }
    ~StatusScope() { tvapplication()->pop_status(m_text, true); }
    StatusScope(const StatusScope&) = delete;
    StatusScope& operator=(const StatusScope&) = delete;

private:
    std::string m_text;
};

} // namespace

TVDBManagerQt::TVDBManagerQt(TVDatabase& db, QWidget* parent)
    : TVMainWindowQt(parent), TVDBManager(db), d(std::make_unique<TVDBManagerQtImpl>())
{
    m_lastUpdate = TVDateUtils::invalid_date();
    for (QTimer* timer : {&d->m_updateTimer, &d->m_frequentTimer, &d->m_detailTimer,
                          &d->m_interactTimer})
        timer->setSingleShot(true);
    // Scripts of this window's database prompt over it and reach its actions.
    d->m_scriptHost = std::make_unique<TVDBScriptHostQt>(*this);
    connect(&d->m_updateTimer, &QTimer::timeout, this, &TVDBManagerQt::periodic_timer_expired,
            Qt::QueuedConnection);
    connect(&d->m_frequentTimer, &QTimer::timeout, this, &TVDBManagerQt::frequent_timer_expired,
            Qt::QueuedConnection);
    connect(&d->m_interactTimer, &QTimer::timeout, this, &TVDBManagerQt::interact_timer_expired,
            Qt::QueuedConnection);
    // Listed, the window belongs to the application from here on.
    if (has_tvapplicationqt())
        tvapplicationqt()->add_window(this);
    if (qApp != nullptr) {
        qApp->installEventFilter(this);
        connect(qApp, &QGuiApplication::applicationStateChanged, this,
                &TVDBManagerQt::app_state_changed);
    }
}

TVDBManagerQt::~TVDBManagerQt()
{
    if (qApp != nullptr)
        qApp->removeEventFilter(this);
}

int TVDBManagerQt::start(const std::string& file, bool multi_window, int update_period,
                         int detail_period, const std::string& ext_word, int last)
{
    try {
        m_multiWindow = multi_window;
        m_updatePeriod = update_period;
        m_detailPeriod = detail_period;
        m_startArg = last;
        m_extWord = ext_word;
        std::string name = file;
        if (name.empty())
            TV_PASS_ON(get_filename(name, ext_word, false));
        const bool exists = tv_file_exists(name);
        TVMainWindowQt::show_dialog();
        TV_PASS_ON(do_load(name, "", exists, multi_window));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Loading and closing --------------------------------------------------------------

int TVDBManagerQt::do_load(const std::string& file, const std::string& fallback,
                           bool create_if_missing, bool multi_window)
{
    stop_timers();
    TVDBLoadQt::start_load(get_database(), file, fallback, create_if_missing, multi_window, this,
                           TVSlotQt(this, SLOT(db_loaded(std::string))),
                           TVSlotQt(this, SLOT(db_failed())), TVSlotQt(this, SLOT(db_cancelled())));
    return TVErrC_ok;
}

int TVDBManagerQt::do_create(const std::string& file, const std::string& fallback)
{
    stop_timers();
    TVDBLoadQt::start_create(get_database(), file, fallback, m_multiWindow,
                             this, TVSlotQt(this, SLOT(db_loaded(std::string))),
                             TVSlotQt(this, SLOT(db_failed())),
                             TVSlotQt(this, SLOT(db_cancelled())));
    return TVErrC_ok;
}

void TVDBManagerQt::db_loaded(std::string file)
{
    TVDatabase& db = get_database();
    // Autosave is on unless the user turned it off.
    db.set_autosave(true);
    read_settings();
    // The recent list is a convenience: a failure to keep it stops nothing.
    const int position = has_tvapplicationqt() ? tvapplicationqt()->window_count() - 1 : 0;
    if (!file.empty() &&
        istvwarn(call([&] { return tvapplication()->add_recent(file, std::max(0, position)); })))
        get_tverror()->clear_all();
    set_window_title();
    if (stopped(call([&] { return link_pending_cloud(); })))
        return;
    show_dialog();
    if (stopped(call([&] { return do_periodic_update(); })))
        return;
    if (m_updatePeriod > 0)
        start_timers();
    // The Drive mirror runs while a database has a Drive link.
    if (db.get_external_type(TVCloudInstance::E_GDrive) != nullptr &&
        stopped(call([] { return TVGoogleService::instance()->start(); })))
        return;
    QTimer::singleShot(100, this, &TVDBManagerQt::gui_started);
    // A URL that came while the file was loading is for this file.
    if (has_tvapplicationqt())
        tvapplicationqt()->handle_pending_url();
}

void TVDBManagerQt::db_failed()
{
    // Nothing to show: the window goes, and with it a single-window program.
    db_close_window();
}

void TVDBManagerQt::db_cancelled()
{
    // The file open before stays; its timers go on.
    if (get_database().is_loaded() && m_updatePeriod > 0)
        start_timers();
}

void TVDBManagerQt::gui_started()
{
    stopped(call([&] { return display_started(); }));
}

int TVDBManagerQt::do_unload(bool save_first, const TVSlotQt& on_done, const TVSlotQt& on_cancel)
{
    try {
        TVDatabase& db = get_database();
        if (!db.is_loaded()) {
            unlock();
            on_done.invoke();
            return TVErrC_ok;
        }
        const bool quiet = !db.is_syncing() && !db.needs_push() &&
                           (!needs_save() || db.get_autosave() || !save_first);
        if (quiet) {
            stop_timers();
            if (save_first && needs_save())
                TV_PASS_ON(db.save(true, true, true));
            TV_PASS_ON(db.unload());
            unlock();
            on_done.invoke();
            return TVErrC_ok;
        }
        auto* unload = new TVDBUnloadQt(db, this, false);
        on_done.connect_from(unload, SIGNAL(unload_complete()));
        on_cancel.connect_from(unload, SIGNAL(unload_cancelled()));
        on_cancel.connect_from(unload, SIGNAL(unload_failed()));
        // The timers stop for the questions and come back if the user stays.
        stop_timers();
        connect(unload, &TVDBUnloadQt::unload_cancelled, this, &TVDBManagerQt::db_cancelled);
        connect(unload, &TVDBUnloadQt::unload_failed, this, &TVDBManagerQt::db_cancelled);
        unload->step1();
        return TVErrC_okCancel;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManagerQt::do_unload()
{
    stop_timers();
    return get_database().unload();
}

void TVDBManagerQt::db_close_file()
{
    set_window_title();
    update_display();
}

void TVDBManagerQt::db_close_window()
{
    d->m_closing = true;
    // From the event loop: this may run inside the close event that asked
    // for it, where a second close does nothing.
    QTimer::singleShot(0, this, [this] {
        close();
        emit window_closed();
    });
}

void TVDBManagerQt::db_quit()
{
    // The file is closed: the Drive mirror stops polling, after one last
    // look at what the closing save wrote. A quit the user called off
    // never gets here, and the mirror goes on.
    (void)tvhandle_error(tvslotcall::call([] { return TVGoogleService::instance()->stop(); }),
                         TVSevWarning);
    db_close_window();
    QCoreApplication::quit();
}

void TVDBManagerQt::closeEvent(QCloseEvent* event)
{
    if (d->m_closing || !get_database().is_loaded()) {
        stop_timers();
        TVMainWindowQt::closeEvent(event);
        return;
    }
    // The window goes once the database is closed (db_close_window).
    event->ignore();
    stopped(call([&] {
        return do_unload(true, TVSlotQt(this, SLOT(db_close_window())), TVSlotQt());
    }));
}

bool TVDBManagerQt::needs_save() const
{
    const TVDatabase& db = get_database();
    return db.is_loaded() && !db.is_read_only() && db.changed_since_full_write();
}

int TVDBManagerQt::lock(const std::string& file, bool steal)
{
    return d->m_lock.lock(file, steal);
}

void TVDBManagerQt::unlock()
{
    d->m_lock.unlock();
}

const TVLockFile& TVDBManagerQt::get_lock() const
{
    return d->m_lock;
}

TVLockFile& TVDBManagerQt::edit_lock()
{
    return d->m_lock;
}

// ---- The heartbeat --------------------------------------------------------------------

int TVDBManagerQt::do_periodic_update()
{
    try {
        TVDatabase& db = get_database();
        const bool interacting = d->m_interactTimer.isActive();
        TVDBHeartbeat::Gate gate;
        gate.loaded = db.is_loaded();
        gate.paused = d->m_paused || is_paused();
        gate.updating = d->m_updating;
        gate.interacting = interacting;
        gate.uiPause = m_uiPause;
        if (gate.loaded && !gate.paused && !gate.updating) {
            gate.overdue = TVDBHeartbeat::is_overdue(m_lastUpdate, TVDateUtils::now());
            gate.edited = db.object_edited();
            gate.minimised = (windowState() & Qt::WindowMinimized) != 0;
        }
        const TVDBHeartbeat::GateAnswer answer = TVDBHeartbeat::gate(gate);
        if (answer.clearUiPause)
            m_uiPause = false;
        if (!answer.run)
            return TVErrC_ok;
        TVScopeGuard updating(d->m_updating);
        StatusScope status("Recalculating...");
        if (tvusererror_handle(true) == TVErrC_okHandled)
            return TVErrC_ok;

        TV_PASS_ON(db.pull_all(!db.needs_save()));
        TVDBHeartbeat::Pass pass;
        pass.detailRunning = d->m_detailTimer.isActive();
        pass.interacting = interacting;
        pass.detailDue = m_detailDue;
        pass.syncing = db.sync_state() == 2 || db.sync_state() == 3;
        const TVDBHeartbeat::Plan plan = TVDBHeartbeat::plan(pass);
        m_detailDue = plan.detailDue;
        if (plan.full)
            d->m_detailTimer.start(m_detailPeriod);
        TV_PASS_ON(db.recalculate(plan.level));
        TV_PASS_ON(update_calcs());
        TV_PASS_ON(rebuild_notify());
        if (plan.autosave)
            TV_PASS_ON(do_autosave(plan.verify));

        update_display();
        emit push_state_changed();
        m_lastUpdate = TVDateUtils::now();
        m_updateDue = false;
        if (plan.repeatSoon)
            QTimer::singleShot(C_SyncRepeatMs, this, &TVDBManagerQt::periodic_timer_expired);
        else if (m_updatePeriod > 0)
            d->m_updateTimer.start(m_updatePeriod);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManagerQt::rebuild_notify()
{
    try {
        TVDatabase& db = get_database();
        TVNotifyList& list = d->m_notify;
        list.reset();
        std::vector<TVDatabase::TVCheckIssue> issues;
        TV_PASS_ON(db.periodic_check(1, true, issues));
        for (size_t i = 0; i < issues.size() && i < static_cast<size_t>(C_MaxCheckItems); ++i)
            list.add(TVNotifyItem(issues[i].short_message, TVId(issues[i].id, 0, 0),
                                  C_NotifySystem, C_SystemPriority, TVDateUtils::blank_date()));
        for (int i = 0; i < db.get_nnotes(); ++i) {
            const TVDBNote* note = db.get_note_no(i);
            list.add(TVNotifyItem("Note: " + note->get_note_line(), TVId(note->get_id(), 0, 0),
                                  C_NotifyNotes, C_NotePriority, TVDateUtils::blank_date()));
        }
        TV_PASS_ON(generate_notify(list));
        if (istvwarn(call([&] { return db.validate_specs(); }))) {
            get_tverror()->clear_all();
            list.add(TVNotifyItem("Object spec errors", TVId(C_SpecParseError, 0, 0),
                                  C_NotifySystem, C_SystemPriority, TVDateUtils::blank_date()));
        }
        std::string script;
        int line = 0;
        std::string message;
        // A query's script that doesn't parse, else a script whose last run
        // raised: the first of either is listed.
        int holder = 0;
        bool failed = istvwarn(call([&] { return db.validate_queries(script, line, message); }));
        if (failed)
            get_tverror()->clear_all();
        else
            failed = db.get_error_script(script, holder, line, &message);
        if (failed)
            list.add(TVNotifyItem("Script errors in " + script + ":" + std::to_string(line) +
                                      ": " + message,
                                  TVId(C_ScriptError, 0, 0), C_NotifySystem, C_SystemPriority,
                                  TVDateUtils::blank_date()));
        list.update();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManagerQt::do_update()
{
    const int result = call([&] { return on_db_changed(); });
    tvhandle_error(result, TVSevWarning);
    return result;
}

int TVDBManagerQt::on_db_changed()
{
    try {
        if (!get_database().is_loaded())
            return TVErrC_ok;
        TV_PASS_ON(do_periodic_update());
        d->m_notify.reset();
        update_display();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBManagerQt::update_all_display()
{
    do_update();
    TVMainWindowQt::update_all_display();
}

void TVDBManagerQt::periodic_timer_expired()
{
    d->m_updateTimer.stop();
    m_updateDue = true;
}

void TVDBManagerQt::frequent_timer_expired()
{
    d->m_frequentTimer.stop();
    TVDatabase& db = get_database();
    // All three are read: recalc_complete clears its flag.
    const bool due = m_updateDue;
    const bool recalculated = db.recalc_complete();
    const bool external = db.has_ext_data();
    if (due || recalculated || external) {
        if (stopped(call([&] { return do_periodic_update(); })))
            return;
    }
    if (m_updatePeriod > 0 && db.is_loaded())
        d->m_frequentTimer.start(C_FrequentMs);
}

void TVDBManagerQt::interact_timer_expired()
{
    d->m_interactTimer.stop();
    m_updateDue = true;
    if (m_updatePeriod > 0)
        d->m_updateTimer.start(m_updatePeriod);
}

bool TVDBManagerQt::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::Gesture:
        d->m_interactTimer.start(C_UserInteractionTimeout * 1000);
        break;
    default:
        break;
    }
    return TVMainWindowQt::eventFilter(watched, event);
}

void TVDBManagerQt::app_state_changed(Qt::ApplicationState state)
{
    TVDatabase& db = get_database();
    switch (state) {
    case Qt::ApplicationSuspended: {
        d->m_paused = true;
        const int result = call([&] {
            if (!db.is_loaded() || db.is_read_only())
                return TVErrC_ok;
            if (needs_save())
                TV_PASS_ON(db.save(false, false, false));
            return db.clean_intermediate(false, true);
        });
        tvhandle_error(result, TVSevError);
        break;
    }
    case Qt::ApplicationHidden:
    case Qt::ApplicationInactive:
        tvhandle_error(call([&] { return do_autosave(false); }), TVSevError);
        d->m_paused = false;
        break;
    case Qt::ApplicationActive:
        d->m_interactTimer.start(C_UserInteractionTimeout * 1000);
        d->m_paused = false;
        break;
    }
}

void TVDBManagerQt::start_timers()
{
    d->m_updateTimer.start(m_updatePeriod);
    d->m_frequentTimer.start(C_FrequentMs);
}

void TVDBManagerQt::stop_timers()
{
    d->m_updateTimer.stop();
    d->m_frequentTimer.stop();
}

bool TVDBManagerQt::is_updating() const
{
    return d->m_updating;
}

bool TVDBManagerQt::update_timer_active() const
{
    return d->m_updateTimer.isActive();
}

bool TVDBManagerQt::frequent_timer_active() const
{
    return d->m_frequentTimer.isActive();
}

bool TVDBManagerQt::detail_timer_active() const
{
    return d->m_detailTimer.isActive();
}

bool TVDBManagerQt::interaction_timer_active() const
{
    return d->m_interactTimer.isActive();
}

// ---- Saving, undo and redo ------------------------------------------------------------

int TVDBManagerQt::do_save(bool manual)
{
    try {
        TVDatabase& db = get_database();
        if (!db.is_loaded()) {
            TVMessageBoxQt::information("Save", "There is no database file loaded.", this);
            return TVErrC_ok;
        }
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const int result = call([&] { return db.save(true, manual, true); });
        QApplication::restoreOverrideCursor();
        TV_PASS_ON(result);
        emit push_state_changed();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBManagerQt::undo_selected()
{
    TVDatabase& db = get_database();
    if (!db.is_loaded() || !db.can_undo())
        return;
    confirm_undo(TVMessageBoxQt::start(this, "Undo", "Undo " + db.get_undo_operation() + "?",
                                       TVMessageBox::C_Yes, TVMessageBox::C_No));
}

void TVDBManagerQt::confirm_undo(std::string answer)
{
    if (answer != label(TVMessageBox::C_Yes))
        return;
    if (stopped(call([&] { return get_database().undo(); })))
        return;
    update_display();
}

void TVDBManagerQt::redo_selected()
{
    TVDatabase& db = get_database();
    if (!db.is_loaded() || !db.can_redo())
        return;
    confirm_redo(TVMessageBoxQt::start(this, "Redo", "Redo " + db.get_redo_operation() + "?",
                                       TVMessageBox::C_Yes, TVMessageBox::C_No));
}

void TVDBManagerQt::confirm_redo(std::string answer)
{
    if (answer != label(TVMessageBox::C_Yes))
        return;
    if (stopped(call([&] { return get_database().redo(); })))
        return;
    update_display();
}

// ---- User commands --------------------------------------------------------------------

int TVDBManagerQt::user_create(const std::string& caption, const std::string& filter,
                               const std::string& default_name, bool multi_window)
{
    d->m_pendingMulti = multi_window;
    const std::string dir = tvapplication()->get_data_dir() + "/" + default_name;
    file_new_selected(TVFileSelectQt::get_save_file(this, caption, dir, filter));
    return TVErrC_ok;
}

void TVDBManagerQt::file_new_selected(std::string file)
{
    if (file.empty())
        return;
    if (d->m_pendingMulti && get_database().is_loaded()) {
        TVDBManagerQt* window = nullptr;
        stopped(call([&] { return new_window(file, true, window); }));
        return;
    }
    // The file open now is closed first, asking about its changes; a
    // create the user gives up on goes back to it.
    d->m_pendingFile = file;
    d->m_pendingFallback = get_database().get_filename();
    stopped(call([&] {
        return do_unload(true, TVSlotQt(this, SLOT(create_after_unload())), TVSlotQt());
    }));
}

void TVDBManagerQt::create_after_unload()
{
    stopped(call([&] { return do_create(d->m_pendingFile, d->m_pendingFallback); }));
}

int TVDBManagerQt::user_open(const std::string& caption, const std::string& filter,
                             bool multi_window)
{
    d->m_pendingMulti = multi_window;
    const std::string& current = get_database().get_filename();
    const std::string dir = current.empty() ? tvapplication()->get_data_dir() : tv_dirname(current);
    file_open_selected(TVFileSelectQt::get_open_file(this, caption, dir, filter));
    return TVErrC_ok;
}

void TVDBManagerQt::file_open_selected(std::string file)
{
    if (file.empty() || file == get_database().get_filename())
        return;
    if (d->m_pendingMulti && get_database().is_loaded()) {
        TVDBManagerQt* window = nullptr;
        stopped(call([&] { return new_window(file, false, window); }));
        return;
    }
    // The load closes the open file itself, once it knows there is one to
    // take its place, and goes back to it if the user gives up on the new.
    stopped(call([&] { return do_load(file, get_database().get_filename(), false, m_multiWindow); }));
}

int TVDBManagerQt::user_import(const std::string& caption, const std::string& filter, bool choose,
                               bool select)
{
    (void)caption;
    (void)filter;
    stop_timers();
    TVDBImportQt::start_import(get_database(), tvapplication()->get_documents_dir(),
                               get_database().get_filename(), choose, select, this,
                               TVSlotQt(this, SLOT(import_loaded(std::string))),
                               TVSlotQt(this, SLOT(db_cancelled())),
                               TVSlotQt(this, SLOT(db_cancelled())));
    return TVErrC_ok;
}

void TVDBManagerQt::import_loaded(std::string file)
{
    if (file == get_database().get_filename()) {
        // Replaced or merged in place.
        do_update();
        db_cancelled();
        return;
    }
    file_open_selected(file);
}

int TVDBManagerQt::user_save()
{
    return do_save(false);
}

int TVDBManagerQt::user_save_as()
{
    const std::string& current = get_database().get_filename();
    const std::string& ext = tvapplication()->get_extension();
    file_saveas_selected(TVFileSelectQt::get_save_file(this, "Save As", current, "*" + ext));
    return TVErrC_ok;
}

void TVDBManagerQt::file_saveas_selected(std::string file)
{
    if (file.empty())
        return;
    const int result = call([&] {
        TVDatabase& db = get_database();
        TV_PASS_ON(db.save_as(file, true));
        // The new name is ours now; the old one is free for others.
        TV_PASS_ON(lock(file, true));
        return tvapplication()->add_recent(file, 0);
    });
    if (stopped(result))
        return;
    set_window_title();
}

int TVDBManagerQt::user_export(const std::string& caption, const std::string& filter)
{
    try {
        TVDatabase& db = get_database();
        if (!db.is_loaded())
            return TVErrC_ok;
        const std::string file = TVFileSelectQt::get_save_file(this, caption, "", filter);
        if (file.empty())
            return TVErrC_ok;
        return db.export_db(file, nullptr, false, std::string());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManagerQt::user_push()
{
    return do_save(true);
}

int TVDBManagerQt::user_close(bool save_first, bool close_window)
{
    const char* next = close_window ? SLOT(db_close_window()) : SLOT(db_close_file());
    return do_unload(save_first, TVSlotQt(this, next), TVSlotQt());
}

int TVDBManagerQt::user_quit(bool save_first)
{
    try {
        // Like the recent list, the remembered session stops nothing.
        const int windows = has_tvapplicationqt() ? std::max(1, tvapplicationqt()->window_count()) : 1;
        if (istvwarn(call([&] { return tvapplication()->record_open_windows(windows, true); })))
            get_tverror()->clear_all();
        const int result = do_unload(save_first, TVSlotQt(this, SLOT(db_quit())), TVSlotQt());
        return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- For subclasses -------------------------------------------------------------------

void TVDBManagerQt::add_menus(QMenu& file_menu, QMenu& edit_menu)
{
    const std::string& ext = tvapplication()->get_extension();
    const std::string filter = "*" + ext;
    file_menu.addAction("New...", this, [this, filter] { (void)user_create("New", filter, "", false); });
    file_menu.addAction("Open...", this, [this, filter] { (void)user_open("Open", filter, false); });
    file_menu.addAction("Import...", this, [this, filter] { (void)user_import("Import", filter, true, true); });
    file_menu.addAction("Save", this, [this] { (void)user_save(); }, QKeySequence::Save);
    file_menu.addAction("Save As...", this, [this] { (void)user_save_as(); });
    file_menu.addAction("Export...", this, [this, filter] { (void)user_export("Export", filter); });
    file_menu.addSeparator();
    file_menu.addAction("Quit", this, [this] { (void)user_quit(true); }, QKeySequence::Quit);
    edit_menu.addAction("Undo", this, &TVDBManagerQt::undo_selected, QKeySequence::Undo);
    edit_menu.addAction("Redo", this, &TVDBManagerQt::redo_selected, QKeySequence::Redo);
}

void TVDBManagerQt::set_window_title()
{
    const std::string name = get_dbname();
    const std::string& title = tvapplication()->get_title();
    setWindowTitle(QString::fromStdString(name.empty() ? title : name + " - " + title));
}

TVDBClipboardQt& TVDBManagerQt::get_clipboard()
{
    if (!d->m_clipboard)
        d->m_clipboard = std::make_unique<TVDBClipboardQt>(get_database());
    return *d->m_clipboard;
}

int TVDBManagerQt::initialise_notify()
{
    TVNotifyList& list = d->m_notify;
    list.add_scheme(new TVNotifyScheme(C_NotifySystem, "NotifySystem",
                                       TVNotifyScheme::C_ResponseBadge, "", true, TVColour()));
    list.add_scheme(new TVNotifyScheme(C_NotifyNotes, "NotifyNotes",
                                       TVNotifyScheme::C_ResponseBadge, "", true, TVColour()));
    return list.initialise();
}

void TVDBManagerQt::add_settings_forms(TVSettingsQt& settings)
{
    auto* cloud = new TVCloudSettingsFormQt;
    cloud->initialise(get_database(), *this);
    settings.add_form(cloud, TVCloudButtonQt::C_CloudOK);
}

int TVDBManagerQt::cloud_browse(int service)
{
    try {
        int type = TVCloudInstance::E_None;
        std::string name;
        const int chosen = TVCloudBrowseQt::choose(this, service, type, name);
        if (chosen != TVErrC_ok)
            return istvwarn(chosen) ? tv_trail_return(chosen, TVLOCATION) : chosen;
        TVDatabase& db = get_database();
        TVExternalDB* link = db.get_external_name(name);
        if (link != nullptr && link->get_dbtype() == type)
            return TVErrC_ok;
        db.remove_external(type);
        TV_PASS_ON(db.add_external(type, name, db.has_user_data() ? 2 : 1, link));
        TV_PASS_ON(on_db_changed());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManagerQt::first_use_cloud()
{
    try {
        const std::string google = TVGoogleService::instance()->is_available() ? "Google Drive" : "";
        const std::string answer = TVMessageBoxQt::start(
            this, "From the Cloud", "Where is the data you want to use?", google, "Cloud Share",
            TVMessageBox::C_Cancel);
        const int service = answer == "Google Drive"  ? TVCloudBrowseQt::E_Google
                            : answer == "Cloud Share" ? TVCloudBrowseQt::E_Share
                                                      : 0;
        if (service == 0)
            return TVErrC_okCancel;
        const int chosen = TVCloudBrowseQt::choose(this, service, d->m_pendingCloudType,
                                                   d->m_pendingCloudName);
        if (istvwarn(chosen))
            return tv_trail_return(chosen, TVLOCATION);
        return chosen;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManagerQt::link_pending_cloud()
{
    try {
        if (d->m_pendingCloudType == TVCloudInstance::E_None)
            return TVErrC_ok;
        const int type = d->m_pendingCloudType;
        d->m_pendingCloudType = TVCloudInstance::E_None;
        TVExternalDB* link = nullptr;
        TV_PASS_ON(get_database().add_external(type, d->m_pendingCloudName, 1, link));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

TVNotifyList& TVDBManagerQt::get_notify() const
{
    return d->m_notify;
}

int TVDBManagerQt::new_window(const std::string& file, bool, TVDBManagerQt*& window)
{
    window = nullptr;
    return tvwarning(TVErrC_InvalidState, TVLOCATION,
                     "This program opens one file at a time: %s was not opened.", file.c_str());
}

int TVDBManagerQt::update_calcs()
{
    return TVErrC_ok;
}

int TVDBManagerQt::generate_notify(TVNotifyList&)
{
    return TVErrC_ok;
}

int TVDBManagerQt::activate_notify(int)
{
    return TVErrC_ok;
}

int TVDBManagerQt::select_notify(const TVIdList&)
{
    return TVErrC_ok;
}

int TVDBManagerQt::context_notify(const QPoint&, const TVId&)
{
    return TVErrC_ok;
}

int TVDBManagerQt::display_started()
{
    return TVErrC_ok;
}

int TVDBManagerQt::first_use(std::string& file)
{
    const TVApplication* app = tvapplication();
    const std::string text = "Welcome to " + app->get_title() +
                             "!\n\nEverything you do here is kept in one file. A new one will be " +
                             file +
                             ".\n\nCreate it now, find a file you already have, take your data "
                             "from the cloud, or quit.";
    const std::string create = TVMessageBox::construct_key(TVDBLoadQt::C_CreateNew, true, false, "", "");
    const std::string quit = TVMessageBox::construct_key(label(TVMessageBox::C_Quit), false, true, "", "q");
    // A chooser or a cloud closed without a choice asks again.
    for (;;) {
        const std::string answer = TVMessageBoxQt::start(this, "Welcome", text, create,
                                                         TVDBLoadQt::C_FindIt, C_FromCloud, quit);
        if (answer == TVDBLoadQt::C_CreateNew)
            return TVErrC_okCreate;
        if (answer == C_FromCloud) {
            const int cloud = call([this] { return first_use_cloud(); });
            if (cloud == TVErrC_ok)
                return TVErrC_okCreate;
            // What went wrong is shown, and the question comes again.
            if (istvwarn(cloud) && stopped(cloud))
                return TVErrC_okCancel;
            continue;
        }
        if (answer != TVDBLoadQt::C_FindIt)
            return TVErrC_okCancel;
        const std::string chosen = TVFileSelectQt::get_open_file(
            this, "Find It", app->get_documents_dir(), "*" + app->get_extension());
        if (!chosen.empty()) {
            file = chosen;
            return TVErrC_ok;
        }
    }
}

bool TVDBManagerQt::takes_url() const
{
    return get_database().is_loaded();
}

void TVDBManagerQt::url_called(const std::string&, const std::string&, const TVTagValue&)
{
}
