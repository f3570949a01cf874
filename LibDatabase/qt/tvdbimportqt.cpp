#include "LibDatabase/qt/tvdbimportqt.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbmanager.h"
#include "LibDatabase/db/tvdbsaver.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDatabase/qt/tvdbflow_p.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"

#include <QTimer>

#include <filesystem>


using tvslotcall::call;
using tvdbflow::label;

const char* const TVDBImportQt::C_Open = "Open";
const char* const TVDBImportQt::C_Replace = "Replace";
const char* const TVDBImportQt::C_Merge = "Merge";

TVDBImportQt::TVDBImportQt(TVDatabase& db, const std::string& file, TVDBManagerQt* manager)
    : TVWidgetQt(manager), m_db(db), m_manager(manager), m_filename(file)
{
    setObjectName("TVDBImportQt");
    hide();
}

TVDBImportQt::~TVDBImportQt() = default;

TVDBImportQt* TVDBImportQt::start_import(TVDatabase& db, const std::string& file,
                                         const std::string& fallback, bool choose, bool select,
                                         TVDBManagerQt* manager, const TVSlotQt& on_complete,
                                         const TVSlotQt& on_failed, const TVSlotQt& on_cancelled)
{
    auto* flow = new TVDBImportQt(db, file, manager);
    flow->m_fallback = fallback;
    flow->m_choose = choose;
    flow->m_select = select;
    on_complete.connect_from(flow, SIGNAL(load_complete(std::string)));
    on_failed.connect_from(flow, SIGNAL(load_failed()));
    on_cancelled.connect_from(flow, SIGNAL(load_cancelled()));
    QTimer::singleShot(0, flow, &TVDBImportQt::db_import1);
    return flow;
}

void TVDBImportQt::db_import1()
{
    if (!m_select) {
        db_import2(m_filename);
        return;
    }
    const std::string& ext = tvapplication()->get_extension();
    db_import2(TVFileSelectQt::get_open_file(this, "Import", m_filename, "*" + ext));
}

void TVDBImportQt::db_import2(std::string file)
{
    if (file.empty()) {
        cancelled();
        return;
    }
    m_filename = file;
    if (!m_db.is_loaded() || !m_choose) {
        db_import3(C_Open);
        return;
    }
    db_import3(TVMessageBoxQt::start(
        this, "Import Type",
        "Choose one of the following:\n- Open - Load the import file into the app directory and "
        "open it in a new window.\n- Replace - Replace your current data with the import file.\n- "
        "Merge - Merge the import file into this database.",
        C_Open, C_Replace, C_Merge, TVMessageBox::C_Cancel));
}

void TVDBImportQt::db_import3(std::string choice)
{
    if (choice == C_Merge) {
        if (stopped(call([&] { return m_db.import_db(m_filename, nullptr); })))
            return;
        const int count = m_db.get_import_count();
        TVMessageBoxQt::information("Import",
                                    "Merged " + std::to_string(count) +
                                        (count == 1 ? " object from " : " objects from ") +
                                        m_filename + ".",
                                    this);
        complete(m_db.get_filename());
    } else if (choice == C_Replace) {
        std::string text;
        if (istvwarn(tv_db_read_file(m_filename, text))) {
            get_tverror()->clear_all();
            tvhandle_error(tvwarnuser(TVErrC_FileRead, TVLOCATION, "Could not open the file %s",
                                      m_filename.c_str()),
                           TVSevWarning);
            failed();
            return;
        }
        if (stopped(call([&] {
                TV_PASS_ON(m_db.replace_file(text, m_filename));
                return m_db.push_all(true, true);
            })))
            return;
        complete(m_db.get_filename());
    } else if (choice == C_Open) {
        std::string target;
        if (stopped(call([&] { return open_target(target); })))
            return;
        std::error_code ec;
        if (!std::filesystem::equivalent(target, m_filename, ec) &&
            stopped(call([&] { return TVDBSaver::copy_in(m_filename, target); })))
            return;
        complete(target);
    } else {
        cancelled();
    }
}

// Into the application's folder, where its files live; a first import
// becomes the default file. A file already there is never written over:
// the source itself, when it is there already, opens where it is, and
// another of its name makes the copy take a numbered name.
int TVDBImportQt::open_target(std::string& target) const
{
    TV_PASS_ON(TVDBManager::get_default_filename(target, tvdbflow::default_word(m_manager)));
    if (!tv_file_exists(target))
        return TVErrC_ok;
    const std::string dir = tvapplication()->get_data_dir();
    target = dir + "/" + tv_filename(m_filename);
    std::error_code ec;
    if (!tv_file_exists(target) || std::filesystem::equivalent(target, m_filename, ec))
        return TVErrC_ok;
    const std::string base = tv_basename(m_filename);
    const std::string ext = tv_extension(m_filename).empty() ? "" : "." + tv_extension(m_filename);
    for (int n = 2;; ++n) {
        target = dir + "/" + base + " (" + std::to_string(n) + ")" + ext;
        if (!tv_file_exists(target))
            return TVErrC_ok;
    }
}

bool TVDBImportQt::stopped(int value)
{
    if (!tvslotcall::stopped(value))
        return false;
    failed();
    return true;
}

void TVDBImportQt::complete(const std::string& file)
{
    if (m_finished)
        return;
    finish();
    emit load_complete(file);
}

void TVDBImportQt::failed()
{
    if (m_finished)
        return;
    finish();
    emit load_failed();
}

void TVDBImportQt::cancelled()
{
    if (m_finished)
        return;
    finish();
    emit load_cancelled();
}

void TVDBImportQt::finish()
{
    m_finished = true;
    deleteLater();
}
