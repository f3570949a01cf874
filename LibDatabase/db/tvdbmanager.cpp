#include "LibDatabase/db/tvdbmanager.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/param/tvparam.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvupdatecounter.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>

TVDBManager::TVDBManager(TVDatabase& db) : m_db(db)
{
}

TVDBManager::~TVDBManager() = default;

void TVDBManager::read_settings()
{
    if (!TVParam::has_object())
        return;
    const std::string autosave = tvparam()->get_system_value(C_AutoSave);
    if (!autosave.empty())
        m_db.set_autosave(std::atoi(autosave.c_str()) != 0);
    const std::string backups = tvparam()->get_system_value(C_Backups);
    if (!backups.empty())
        m_db.set_backup_count(std::max(0, std::atoi(backups.c_str())));
}

int TVDBManager::do_autosave(bool closing)
{
    try {
        if (!m_db.is_loaded() || !m_db.get_autosave() || m_db.is_read_only())
            return TVErrC_ok;
        // Not needs_save: complete_operation answers that, while the main
        // file still lacks what only the partial file holds.
        if (!m_db.changed_since_full_write())
            return TVErrC_ok;
        TV_PASS_ON(m_db.save(!closing, false, closing));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManager::get_default_filename(std::string& out, const std::string& name)
{
    try {
        const TVApplication* app = tvapplication();
        const std::string dir = app->get_data_dir();
        TV_PASS_ON(tv_create_dir(dir, true));
        const std::string& extension = app->get_extension();
        out = dir + "/" + (name.empty() ? app->get_application() : name);
        if (!extension.empty() && extension[0] != '.')
            out += ".";
        out += extension;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBManager::get_filename(std::string& out, const std::string& name, bool use_recent)
{
    if (use_recent) {
        TVApplication* app = tvapplication();
        app->load_recent();
        const std::vector<std::string>& recent = app->get_recent();
        if (!recent.empty() && tv_file_exists(recent.front())) {
            out = recent.front();
            return TVErrC_ok;
        }
    }
    return get_default_filename(out, name);
}

bool TVDBManager::needs_push() const
{
    return m_db.needs_push();
}

bool TVDBManager::has_cloud() const
{
    return m_db.get_nexternals() > 0;
}

std::string TVDBManager::get_dbname() const
{
    const std::string& file = m_db.get_filename();
    return file.empty() ? std::string() : tv_basename(file);
}

std::string TVDBManager::default_paste_buffer() const
{
    return tvapplication()->get_scratch_dir() + "/paste" + tvapplication()->get_extension();
}

int TVDBManager::export_paste_buffer(const std::string& /*file*/)
{
    return TVErrC_ok;
}

int TVDBManager::import_paste_buffer(const std::string& /*file*/)
{
    return TVErrC_ok;
}

bool TVDBManager::paste_buffer_available() const
{
    return false;
}

void TVDBManager::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(indent), ' ');
    out << pad << "TVDBManager of \"" << m_db.get_filename() << "\"" << (m_paused ? " paused" : "")
        << (m_db.changed_since_full_write() ? " behind" : "") << "\n";
}

std::ostream& operator<<(std::ostream& out, const TVDBManager& manager)
{
    manager.dump(out, 0);
    return out;
}
