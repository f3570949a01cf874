#include "LibDatabase/qt/tvdbimportqt.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbmanager.h"
#include "LibDatabase/qt/tvdbflow_p.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxqt.h"

#include <QTimer>

#include <fstream>
#include <sstream>

using tvdbflow::call;
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
        complete(m_db.get_filename());
    } else if (choice == C_Replace) {
        std::ifstream in(m_filename, std::ios::binary);
        if (!in) {
            tvhandle_error(tvwarnuser(TVErrC_FileRead, TVLOCATION, "Could not open the file %s",
                                      m_filename.c_str()),
                           TVSevWarning);
            failed();
            return;
        }
        std::ostringstream text;
        text << in.rdbuf();
        if (stopped(call([&] {
                TV_PASS_ON(m_db.replace_file(text.str()));
                return m_db.push_all(true, true);
            })))
            return;
        complete(m_db.get_filename());
    } else if (choice == C_Open) {
        // Into the application's folder, where its files live; a first
        // import becomes the default file.
        std::string target;
        if (stopped(call([&] {
            return TVDBManager::get_default_filename(target, tvdbflow::default_word(m_manager));
        })))
            return;
        if (tv_file_exists(target))
            target = tvapplication()->get_data_dir() + "/" + tv_filename(m_filename);
        if (stopped(call([&] { return tv_copy_file(m_filename, target, true, true); })))
            return;
        complete(target);
    } else {
        cancelled();
    }
}

bool TVDBImportQt::stopped(int value)
{
    if (tvhandle_error(value, TVSevWarning) < 2)
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
