#ifndef TVDBLOADQT_H
#define TVDBLOADQT_H

// TVDBLoadQt: opens (or creates) a database file as a chain of steps over
// the manager's window, asking the user wherever the file can't simply be
// used: missing, locked, left behind by a crash, or damaged. It ends with
// exactly one of its three signals and then deletes itself.
//
// Every question is a modal TVMessageBoxQt::start, so a test answers the
// whole chain through the message box's answerer. The chain begins from the
// event loop (a 0 ms timer), so the window shows "Loading..." first.
//
// What a file is found to be (missing, locked, damaged...) and the
// recoveries are TVDBOpener's; this flow asks the user and goes on by the
// answer. Recovery of a file that won't load ("Auto-Saved"): the last known
// good copy, else the newest backup; the damaged file is kept as its name +
// ".bak" (a later failure overwrites that copy).
//
// The database and the manager must outlive the flow. Main thread only.

#include "LibGui/qt/tvslotqt.h"
#include "LibGui/qt/tvwidgetqt.h"

#include <string>

class QLabel;
class TVDatabase;
class TVDBManagerQt;

class TVDBLoadQt : public TVWidgetQt
{
    Q_OBJECT

public:
    // The words of the flow's buttons.
    static const char* const C_FindIt;     // "Find It"
    static const char* const C_CreateNew;  // "Create New"
    static const char* const C_Previous;   // "Previous"
    static const char* const C_OpenAnyway; // "Open Anyway"
    static const char* const C_TryAgain;   // "Try Again"
    static const char* const C_AutoSaved;  // "Auto-Saved"
    // Suffix of the damaged file kept aside by Delete and "Auto-Saved".
    static const char* const C_KeptExt; // ".bak"

    // Opens file, falling back on fallback (the file open before; empty for
    // none) when the user gives up. A missing file is created without
    // asking with create_if_missing. on_complete gets the file now open
    // (std::string), the others nothing. Gives the flow (owned by the
    // manager's window until it ends).
    static TVDBLoadQt* start_load(TVDatabase& db, const std::string& file,
                                  const std::string& fallback, bool create_if_missing,
                                  bool multi_window, TVDBManagerQt* manager,
                                  const TVSlotQt& on_complete, const TVSlotQt& on_failed,
                                  const TVSlotQt& on_cancelled);
    // Makes a new file (asking before overwriting one).
    static TVDBLoadQt* start_create(TVDatabase& db, const std::string& file,
                                    const std::string& fallback, bool multi_window,
                                    TVDBManagerQt* manager, const TVSlotQt& on_complete,
                                    const TVSlotQt& on_failed, const TVSlotQt& on_cancelled);

    ~TVDBLoadQt() override;

signals:
    void load_complete(std::string file);
    void load_failed();
    void load_cancelled();

public slots:
    void load_step1();
    void load_step2(int result);
    void load_step3();
    void load_step4();
    void load_step5();
    void load_file_selected(std::string file);
    void handle_partial(std::string answer);
    void handle_load_fail(std::string answer);
    void handle_delete_corrupt(std::string answer);
    void create_step1();
    void create_step2();
    void create_step3();

private:
    TVDBLoadQt(TVDatabase& db, const std::string& file, const std::string& fallback,
               bool multi_window, TVDBManagerQt* manager);
    void begin(const TVSlotQt& on_complete, const TVSlotQt& on_failed,
               const TVSlotQt& on_cancelled, const char* first_step);

    // Locks and loads through TVDBOpener (taking a left lock with steal)
    // and asks about what it finds.
    void open_file(bool steal);
    // Lets the user pick a template; then create_step3 (creating) or step 4.
    void find_base(bool create);
    // The file open before, instead of giving up; failed when there is none.
    void reload();
    // tvslotcall::stopped, and a stop ends the flow (failed).
    bool stopped(int value);
    void complete(const std::string& file);
    void failed();
    void cancelled();
    void finish();

    TVDatabase& m_db;
    TVDBManagerQt* m_manager;
    std::string m_filename;
    std::string m_fallback;
    std::string m_template;
    bool m_createIfMissing = false;
    bool m_creating = false;
    bool m_multiWindow = false;
    bool m_finished = false;
    // The question of handle_partial was about leftovers of a save, not a
    // damaged session file: Delete then keeps the session.
    bool m_leftovers = false;
    // The value of the failed load, for the details the user may ask for.
    int m_loadResult = 0;
    QLabel* m_label = nullptr;
};

#endif // TVDBLOADQT_H
