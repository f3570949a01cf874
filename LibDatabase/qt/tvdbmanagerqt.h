#ifndef TVDBMANAGERQT_H
#define TVDBMANAGERQT_H

// TVDBManagerQt: the main window of a program that keeps a TVDatabase. It
// owns the life of the database on screen (load, new, save, save as,
// close, quit, undo, redo) and the heartbeat, do_periodic_update, which
// recalculates, syncs, rebuilds the notifications, autosaves and redraws.
//
// Timers, all single shot (a test fires them by calling the *_expired
// slots; each stops its own timer first, so a call stands for the expiry):
//   update timer       m_updatePeriod  marks an update due
//   frequent timer     1 s             runs the update when due
//   detail timer       m_detailPeriod  only its running counts: full passes
//                                      (recalculation level 1 and the
//                                      verified autosave) are that far apart
//   interaction timer  15 s            restarted by every key, click, wheel
//                                      or touch; while it runs nothing is
//                                      saved and no full pass runs
// An update is held while an object is open for editing or the window is
// minimised, until the last one is C_MaxRecalcWait seconds old. Only one
// update runs at a time.
//
// The database must outlive the window. Under a TVApplicationQt the window
// is listed with it and belongs to it. Main thread only.

#include "LibDatabase/db/tvdbheartbeat.h"
#include "LibDatabase/db/tvdbmanager.h"
#include "LibDate/core/tvdate.h"
#include "LibGui/qt/tvmainwindowqt.h"
#include "LibGui/qt/tvslotqt.h"
#include "LibObject/core/tvid.h"
#include "LibObject/core/tvidlist.h"

#include <QPoint>

#include <memory>
#include <string>

class QMenu;
class TVDatabase;
class TVDBClipboardQt;
class TVSettingsQt;
class TVLockFile;
class TVNotifyList;
class TVTagValue;

class TVDBManagerQt : public TVMainWindowQt, public TVDBManager
{
    Q_OBJECT

public:
    static constexpr int C_UserInteractionTimeout = 15; // seconds
    static constexpr int C_FrequentMs = 1000;
    // A one-off repeat while a pull changed the data.
    static constexpr int C_SyncRepeatMs = 1000;
    static constexpr long C_MaxRecalcWait = TVDBHeartbeat::C_MaxWaitSeconds;
    static constexpr int C_DefaultUpdatePeriod = 10000;
    static constexpr int C_DefaultDetailPeriod = 300000;
    // The first start's answer that takes the data from a cloud service.
    static constexpr const char* C_FromCloud = "From the Cloud";

    // Notification categories and ids of the heartbeat's own items.
    static constexpr int C_NotifySystem = 1000;
    static constexpr int C_NotifyNotes = 1001;
    static constexpr int C_SpecParseError = -101;
    static constexpr int C_ScriptError = -102;
    static constexpr double C_SystemPriority = 300.0;
    static constexpr double C_NotePriority = 199.0;
    static constexpr int C_MaxCheckItems = 100;

    explicit TVDBManagerQt(TVDatabase& db, QWidget* parent = nullptr);
    ~TVDBManagerQt() override;

    // Settles the file (get_filename), shows the window and loads; the
    // timers start once the file is in (db_loaded). update_period 0 starts
    // no timers: updates come only from on_db_changed.
    [[nodiscard]] int start(const std::string& file, bool multi_window, int update_period,
                            int detail_period, const std::string& ext_word, int last);
    // The word that names the program's default file ("maths" gives
    // maths.tvmaths); empty for the application's name.
    const std::string& get_ext_word() const { return m_extWord; }

    // ---- User commands (the menus' actions) ---------------------------------
    [[nodiscard]] int user_create(const std::string& caption, const std::string& filter,
                                  const std::string& default_name, bool multi_window);
    [[nodiscard]] int user_open(const std::string& caption, const std::string& filter,
                                bool multi_window);
    // choose: offer Open, Replace, Merge; select: let the user pick the file.
    [[nodiscard]] int user_import(const std::string& caption, const std::string& filter,
                                  bool choose, bool select);
    [[nodiscard]] int user_save();
    [[nodiscard]] int user_save_as();
    // A full copy of the database in a file the user picks.
    [[nodiscard]] int user_export(const std::string& caption, const std::string& filter);
    // Writes the database to every link, manual ones too.
    [[nodiscard]] int user_push();
    // Closes the file (and the window too with close_window).
    [[nodiscard]] int user_close(bool save_first, bool close_window);
    // Records the open windows, closes the file and ends the program
    // (db_quit, where the Drive mirror stops polling).
    [[nodiscard]] int user_quit(bool save_first);
    // Finds a database already in the cloud (TVCloudBrowseQt: 1 iCloud, 2
    // Google Drive, 3 the shared folder) and links this one to it: its data
    // comes in whole when this one holds nothing of the user's yet, and is
    // merged otherwise.
    [[nodiscard]] int cloud_browse(int service);

    // ---- Steps (the flows call these) ---------------------------------------
    [[nodiscard]] int do_load(const std::string& file, const std::string& fallback,
                              bool create_if_missing, bool multi_window);
    [[nodiscard]] int do_save(bool manual);
    // fallback: the file to open again if the user gives up on this one.
    [[nodiscard]] int do_create(const std::string& file, const std::string& fallback);
    // Closes the database, through TVDBUnloadQt when the user must be
    // asked (then TVErrC_okCancel: the answer comes to on_done or
    // on_cancel later). on_done may be empty.
    [[nodiscard]] int do_unload(bool save_first, const TVSlotQt& on_done,
                                const TVSlotQt& on_cancel);
    // Unloads the database as it is, asking nothing; the lock stays.
    [[nodiscard]] int do_unload();
    [[nodiscard]] int do_periodic_update();
    // on_db_changed with its errors handled here (severity 2).
    int do_update();
    [[nodiscard]] int on_db_changed();
    // The main file is behind what the database holds.
    bool needs_save() const;
    [[nodiscard]] int lock(const std::string& file, bool steal);
    void unlock();
    const TVLockFile& get_lock() const;
    // The lock the flows take the window's file with.
    TVLockFile& edit_lock();

    // ---- For subclasses ------------------------------------------------------
    void add_menus(QMenu& file_menu, QMenu& edit_menu);
    void set_window_title();
    // Holds the update while the interaction timer runs.
    void set_ui_pause(bool pause) { m_uiPause = pause; }
    void trigger_detail_calculate() { m_detailDue = true; }
    [[nodiscard]] int initialise_notify();
    // The database's pages of a program's settings window (the cloud page).
    void add_settings_forms(TVSettingsQt& settings);
    TVNotifyList& get_notify() const;
    // The window's clipboard for cut, copy and paste in its database.
    TVDBClipboardQt& get_clipboard();

    bool multiple_windows() const { return m_multiWindow; }
    int get_update_period() const { return m_updatePeriod; }
    const TVDate& get_last_update() const { return m_lastUpdate; }
    bool is_update_due() const { return m_updateDue; }
    bool is_detail_due() const { return m_detailDue; }
    bool is_updating() const;
    // Which timers run (tests and the status line ask).
    bool update_timer_active() const;
    bool frequent_timer_active() const;
    bool detail_timer_active() const;
    bool interaction_timer_active() const;

    // ---- What a program overrides -------------------------------------------
    // A window for another file, in programs with several windows; the base
    // has none and says so.
    [[nodiscard]] virtual int new_window(const std::string& file, bool create,
                                         TVDBManagerQt*& window);
    // The program's share of the periodic update, after the recalculation.
    [[nodiscard]] virtual int update_calcs();
    // Adds the program's own notifications to the list being rebuilt.
    [[nodiscard]] virtual int generate_notify(TVNotifyList& list);
    [[nodiscard]] virtual int activate_notify(int index);
    [[nodiscard]] virtual int select_notify(const TVIdList& ids);
    [[nodiscard]] virtual int context_notify(const QPoint& pos, const TVId& id);
    // Once the window is up after a load.
    [[nodiscard]] virtual int display_started();
    // A first start: no recent files and no file to open yet. The base asks
    // once ("Welcome"): make file (TVErrC_okCreate), open one the user has
    // ("Find It": TVErrC_ok with file set to it), make file and take the
    // data in from a cloud service the user chooses ("From the Cloud":
    // TVErrC_okCreate, the link made once the file is in), or quit
    // (TVErrC_okCancel).
    [[nodiscard]] virtual int first_use(std::string& file);
    // Once the file is in.
    bool takes_url() const override;
    void url_called(const std::string& command, const std::string& argument,
                    const TVTagValue& query) override;
    void update_all_display() override;

signals:
    void push_state_changed();
    // The database is closed and the window is going (or the program ends).
    void window_closed();

public slots:
    void db_loaded(std::string file);
    void db_failed();
    void db_cancelled();
    void db_close_file();
    void db_close_window();
    void db_quit();
    void gui_started();
    void file_new_selected(std::string file);
    void file_open_selected(std::string file);
    void file_saveas_selected(std::string file);
    void undo_selected();
    void confirm_undo(std::string answer);
    void redo_selected();
    void confirm_redo(std::string answer);

    void periodic_timer_expired();
    void frequent_timer_expired();
    void interact_timer_expired();
    void app_state_changed(Qt::ApplicationState state);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void import_loaded(std::string file);
    void create_after_unload();

private:
    struct TVDBManagerQtImpl;

    // Step 13 of the heartbeat: the list rebuilt from what holds now.
    [[nodiscard]] int rebuild_notify();
    void start_timers();
    void stop_timers();

    // A new database's first link, chosen at the first start (db_loaded).
    [[nodiscard]] int link_pending_cloud();
    // How a first start takes the data from the cloud.
    [[nodiscard]] int first_use_cloud();

    std::unique_ptr<TVDBManagerQtImpl> d;
    bool m_multiWindow = true;
    int m_startArg = -1;
    std::string m_extWord;
    int m_updatePeriod = C_DefaultUpdatePeriod;
    int m_detailPeriod = C_DefaultDetailPeriod;
    bool m_uiPause = false;
    bool m_detailDue = false;
    bool m_updateDue = false;
    TVDate m_lastUpdate;
};

#endif // TVDBMANAGERQT_H
