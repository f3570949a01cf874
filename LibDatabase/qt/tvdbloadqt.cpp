#include "LibDatabase/qt/tvdbloadqt.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvdbopener.h"
#include "LibDatabase/qt/tvdbflow_p.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibDatabase/qt/tvdbunloadqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"

#include <QDir>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

using tvslotcall::call;
using tvdbflow::label;

const char* const TVDBLoadQt::C_FindIt = "Find It";
const char* const TVDBLoadQt::C_CreateNew = "Create New";
const char* const TVDBLoadQt::C_Previous = "Previous";
const char* const TVDBLoadQt::C_OpenAnyway = "Open Anyway";
const char* const TVDBLoadQt::C_TryAgain = "Try Again";
const char* const TVDBLoadQt::C_AutoSaved = "Auto-Saved";
const char* const TVDBLoadQt::C_KeptExt = TVDBFileNames::C_KeptExt;

namespace {

constexpr const char* C_LoadTitle = "Load File";
constexpr const char* C_CorruptTitle = "Corrupt File";
constexpr const char* C_UncleanRun =
    "The application may not have been shut down cleanly last time is was run.  ";

} // namespace

TVDBLoadQt::TVDBLoadQt(TVDatabase& db, const std::string& file, const std::string& fallback,
                       bool multi_window, TVDBManagerQt* manager)
    : TVWidgetQt(manager),
      m_db(db),
      m_manager(manager),
      m_filename(file),
      m_fallback(fallback),
      m_multiWindow(multi_window)
{
    setObjectName("TVDBLoadQt");
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet("QWidget#TVDBLoadQt\n{\n  background: rgba(255, 255, 255, 55);\n}");
    auto* layout = new QVBoxLayout(this);
    m_label = new QLabel("Loading...", this);
    m_label->setObjectName("loadLabel");
    m_label->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_label);
}

TVDBLoadQt::~TVDBLoadQt() = default;

TVDBLoadQt* TVDBLoadQt::start_load(TVDatabase& db, const std::string& file,
                                   const std::string& fallback, bool create_if_missing,
                                   bool multi_window, TVDBManagerQt* manager,
                                   const TVSlotQt& on_complete, const TVSlotQt& on_failed,
                                   const TVSlotQt& on_cancelled)
{
    auto* flow = new TVDBLoadQt(db, file, fallback, multi_window, manager);
    flow->m_createIfMissing = create_if_missing;
    flow->begin(on_complete, on_failed, on_cancelled, SLOT(load_step1()));
    return flow;
}

TVDBLoadQt* TVDBLoadQt::start_create(TVDatabase& db, const std::string& file,
                                     const std::string& fallback, bool multi_window,
                                     TVDBManagerQt* manager, const TVSlotQt& on_complete,
                                     const TVSlotQt& on_failed, const TVSlotQt& on_cancelled)
{
    auto* flow = new TVDBLoadQt(db, file, fallback, multi_window, manager);
    flow->m_creating = true;
    flow->begin(on_complete, on_failed, on_cancelled, SLOT(create_step1()));
    return flow;
}

void TVDBLoadQt::begin(const TVSlotQt& on_complete, const TVSlotQt& on_failed,
                       const TVSlotQt& on_cancelled, const char* first_step)
{
    on_complete.connect_from(this, SIGNAL(load_complete(std::string)));
    on_failed.connect_from(this, SIGNAL(load_failed()));
    on_cancelled.connect_from(this, SIGNAL(load_cancelled()));
    if (m_manager != nullptr)
        cover_window(m_manager);
    show();
    raise();
    // From the event loop, so that "Loading..." is on the screen first.
    QTimer::singleShot(0, this, first_step);
}

// ---- Loading ------------------------------------------------------------------------

void TVDBLoadQt::load_step1()
{
    TVApplication* app = tvapplication();
    app->load_recent();
    std::string default_file;
    if (stopped(call([&] {
            return TVDBManager::get_default_filename(default_file, tvdbflow::default_word(m_manager));
        })))
        return;
    if (!tv_file_exists(default_file)) {
        // A first start; but a file that exists was asked for by name and
        // needs no welcome.
        if (app->get_recent().empty() && !tv_file_exists(m_filename)) {
            if (m_filename.empty())
                m_filename = default_file;
            // With no window to ask over, a first start makes the file.
            int result = TVErrC_okCreate;
            if (m_manager != nullptr) {
                result = call([&] { return m_manager->first_use(m_filename); });
                if (istvwarn(result) && stopped(result))
                    return;
            }
            load_step2(result);
            return;
        }
    } else if (app->get_recent().empty()) {
        // The recent list is a convenience: a failure to keep it stops nothing.
        if (istvwarn(call([&] { return app->add_recent(default_file, 0); })))
            get_tverror()->clear_all();
    }
    load_step2(TVErrC_ok);
}

void TVDBLoadQt::load_step2(int result)
{
    if (result == TVErrC_okCreate) {
        m_creating = true;
        create_step1();
        return;
    }
    if (result != TVErrC_ok) {
        reload();
        return;
    }
    if (m_filename.empty()) {
        complete(m_filename);
        return;
    }
    if (!m_db.is_loaded()) {
        load_step3();
        return;
    }
    if (m_db.get_filename() == m_filename) {
        complete(m_filename);
        return;
    }
    if (m_multiWindow) {
        // The present database stays; the file goes to a window of its own.
        complete(m_db.get_filename());
        return;
    }
    auto* unload = new TVDBUnloadQt(m_db, m_manager, false);
    connect(unload, SIGNAL(unload_complete()), this, SLOT(load_step3()));
    connect(unload, &TVDBUnloadQt::unload_cancelled, this, [this] { cancelled(); });
    connect(unload, &TVDBUnloadQt::unload_failed, this, [this] { failed(); });
    unload->step1();
}

void TVDBLoadQt::load_step3()
{
    if (tv_file_exists(m_filename)) {
        load_step4();
        return;
    }
    if (m_createIfMissing) {
        m_creating = true;
        find_base(false);
        return;
    }
    const std::vector<std::string>& recent = tvapplication()->get_recent();
    const std::string answer = TVMessageBoxQt::start(
        this, C_LoadTitle, "Could not find or access " + m_filename + ". Do you want to:",
        C_FindIt, C_CreateNew, recent.size() > 1 ? C_Previous : "", TVMessageBox::C_Quit);
    if (answer == C_FindIt) {
        const std::string& ext = tvapplication()->get_extension();
        load_file_selected(TVFileSelectQt::get_open_file(this, "Find " + tv_basename(m_filename),
                                                         tv_dirname(m_filename), "*" + ext));
    } else if (answer == C_CreateNew) {
        m_creating = true;
        find_base(false);
    } else if (answer == C_Previous) {
        for (const std::string& file : recent)
            if (file != m_filename) {
                m_filename = file;
                break;
            }
        load_step3();
    } else {
        reload();
    }
}

void TVDBLoadQt::load_file_selected(std::string file)
{
    // A chooser closed without a choice asks again.
    if (file.empty()) {
        load_step3();
        return;
    }
    m_filename = file;
    load_step4();
}

// Steps 4 and 5: the opener locks and loads; what it finds is asked about.
void TVDBLoadQt::load_step4()
{
    open_file(false);
}

void TVDBLoadQt::load_step5()
{
    open_file(true);
}

void TVDBLoadQt::open_file(bool steal)
{
    if (m_db.is_loaded()) {
        complete(m_db.get_filename());
        return;
    }
    TVDBOpener opener(m_db, m_manager != nullptr ? &m_manager->edit_lock() : nullptr);
    for (;;) {
        const TVDBOpener::Result found = opener.open(m_filename, m_creating, m_template, steal);
        switch (found.outcome) {
        case TVDBOpener::E_Opened:
            complete(m_db.is_loaded() ? m_db.get_filename() : m_filename);
            return;
        case TVDBOpener::E_Missing:
            load_step3();
            return;
        case TVDBOpener::E_Failed:
            if (!stopped(found.result))
                reload();
            return;
        case TVDBOpener::E_Locked: {
            const std::string answer = TVMessageBoxQt::start(
                this, C_LoadTitle, m_filename + " is locked by another user.  Do you want to:",
                TVMessageBox::C_Quit, C_OpenAnyway, C_TryAgain);
            if (answer == C_OpenAnyway) {
                steal = true;
                continue;
            }
            if (answer == C_TryAgain)
                continue;
            reload();
            return;
        }
        case TVDBOpener::E_DamagedPartial:
            m_leftovers = false;
            handle_partial(TVMessageBoxQt::start(
                this, "Partial Save",
                "A partially saved version of " + m_filename + " has been located, but is corrupt.\n" +
                    C_UncleanRun + "You can delete the file, or just quit.",
                TVMessageBox::C_Delete, TVMessageBox::C_Quit));
            return;
        case TVDBOpener::E_Leftovers:
            m_leftovers = true;
            handle_partial(TVMessageBoxQt::start(
                this, "Temp Files",
                "Some temporary files from " + m_filename + " have been located.\n" + C_UncleanRun +
                    "You can delete these files, or just quit.",
                TVMessageBox::C_Delete, TVMessageBox::C_Quit));
            return;
        case TVDBOpener::E_Damaged:
            // The error stays pending: Ok shows its details.
            m_loadResult = found.result;
            handle_load_fail(TVMessageBoxQt::start(
                this, C_CorruptTitle,
                "There was a problem opening " + m_filename +
                    ".  Press OK to view the error details.\nIf the file is corrupt, then you can "
                    "delete it, and restore from a backup or open the Auto-Saved file.",
                TVMessageBox::C_Ok, TVMessageBox::C_Delete, C_AutoSaved));
            return;
        }
    }
}

void TVDBLoadQt::handle_partial(std::string answer)
{
    if (answer != label(TVMessageBox::C_Delete)) {
        reload();
        return;
    }
    TVDBOpener opener(m_db, nullptr);
    if (stopped(call([&] {
            return m_leftovers ? opener.discard_leftovers(m_filename, m_creating, m_template)
                               : opener.discard_session(m_filename, m_creating, m_template);
        })))
        return;
    complete(m_filename);
}

void TVDBLoadQt::handle_load_fail(std::string answer)
{
    if (answer == label(TVMessageBox::C_Delete)) {
        get_tverror()->clear_all();
        handle_delete_corrupt(TVMessageBoxQt::start(this, C_CorruptTitle,
                                                    "Are you sure you want to delete " + m_filename,
                                                    TVMessageBox::C_Ok, TVMessageBox::C_Cancel));
        return;
    }
    if (answer == C_AutoSaved) {
        get_tverror()->clear_all();
        TVDBOpener opener(m_db, nullptr);
        const int result = call([&] { return opener.recover(m_filename); });
        if (istvwarn(result)) {
            tvhandle_error(result, TVSevWarning);
            failed();
            return;
        }
        complete(m_filename);
        return;
    }
    // Ok: the details of what went wrong, then give up on this file.
    tvhandle_error(m_loadResult, TVSevWarning);
    reload();
}

void TVDBLoadQt::handle_delete_corrupt(std::string answer)
{
    if (answer != label(TVMessageBox::C_Ok)) {
        reload();
        return;
    }
    TVDBOpener opener(m_db, nullptr);
    if (stopped(call([&] { return opener.give_up(m_filename); })))
        return;
    m_creating = true;
    create_step1();
}

// ---- Creating -----------------------------------------------------------------------

void TVDBLoadQt::create_step1()
{
    if (m_filename.empty()) {
        complete(m_filename);
        return;
    }
    if (tv_file_exists(m_filename)) {
        const std::string answer = TVMessageBoxQt::start(
            this, "Overrwrite File",
            "The file " + m_filename + " already exists.\nDo you want to overwrite it?\nNOTE: All " +
                "data in " + m_filename + " will be lost.",
            TVMessageBox::C_Yes, TVMessageBox::C_No, TVMessageBox::C_Quit);
        if (answer == label(TVMessageBox::C_No)) {
            // The file that was open stays, or comes back.
            if (m_db.is_loaded() || m_fallback.empty())
                complete(m_db.get_filename());
            else
                reload();
            return;
        }
        if (answer != label(TVMessageBox::C_Yes)) {
            reload();
            return;
        }
        if (stopped(call([&] {
                TV_PASS_ON(m_db.remove_partial(m_filename));
                return tv_delete_file(m_filename, false);
            })))
            return;
    }
    create_step2();
}

void TVDBLoadQt::create_step2()
{
    if (m_manager != nullptr && stopped(call([&] { return m_manager->lock(m_filename, true); })))
        return;
    if (m_db.is_loaded()) {
        complete(tv_basename(m_filename));
        return;
    }
    find_base(true);
}

void TVDBLoadQt::create_step3()
{
    if (stopped(call([&] {
            return m_db.load(m_filename, true, m_template, false, false, true);
        })))
        return;
    complete(m_filename);
}

void TVDBLoadQt::find_base(bool create)
{
    const std::string& ext = tvapplication()->get_extension();
    const std::string dir = tvapplication()->get_documents_dir();
    const QStringList templates =
        QDir(QString::fromStdString(dir)).entryList({QString::fromStdString("*" + ext)}, QDir::Files);
    m_template.clear();
    if (!templates.isEmpty())
        m_template = TVFileSelectQt::get_open_file(this, "Select a template to use", dir, "*." +
                                                   (ext.empty() || ext[0] != '.' ? ext : ext.substr(1)));
    if (create)
        create_step3();
    else
        load_step4();
}

// ---- Ends ---------------------------------------------------------------------------

void TVDBLoadQt::reload()
{
    if (m_fallback.empty()) {
        failed();
        return;
    }
    // Once only: a fallback that fails too ends the flow.
    m_filename = m_fallback;
    m_fallback.clear();
    m_creating = false;
    load_step4();
}

bool TVDBLoadQt::stopped(int value)
{
    if (!tvslotcall::stopped(value))
        return false;
    failed();
    return true;
}

void TVDBLoadQt::complete(const std::string& file)
{
    if (m_finished)
        return;
    finish();
    emit load_complete(file);
}

void TVDBLoadQt::failed()
{
    if (m_finished)
        return;
    finish();
    emit load_failed();
}

void TVDBLoadQt::cancelled()
{
    if (m_finished)
        return;
    finish();
    emit load_cancelled();
}

void TVDBLoadQt::finish()
{
    m_finished = true;
    hide();
    deleteLater();
}
