#include "LibComms/web/tvwebservice.h"

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvdirectory.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdateutils.h"

#include <algorithm>
#include <memory>
#include <ostream>

TVWebService::TVWebService()
{
    m_lastSync = TVDateUtils::blank_date();
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &TVWebService::timer_triggred);
    // From inside a slot of the service itself: run the update later.
    connect(this, &TVWebService::wake_up_signal, this, &TVWebService::timer_triggred,
            Qt::QueuedConnection);
}

TVWebService::~TVWebService() = default;

void TVWebService::initialise(const std::string& folder, const TVDate& last_sync)
{
    m_folder = folder;
    m_lastSync = last_sync;
}

int TVWebService::start()
{
    try {
        m_running = true;
        m_timer.start(C_MinInterval);
        TV_PASS_ON(update());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVWebService::stop()
{
    try {
        m_timer.stop();
        if (!m_running)
            return TVErrC_ok;
        m_running = false;
        TV_PASS_ON(update());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVWebService::wake_up()
{
    if (m_timer.isActive())
        emit wake_up_signal();
}

int TVWebService::get_interval() const
{
    return m_timer.isActive() ? m_timer.interval() : 0;
}

void TVWebService::timer_triggred()
{
    const int interval = m_timer.interval();
    m_timer.stop();
    m_activity = false;
    int result = TVErrC_ok;
    try {
        result = update();
    } catch (const TVErrDetails&) {
        result = tverrorvalue();
    }
    if (tvhandle_error(result, TVSevWarning) >= 2)
        return;
    m_timer.start(m_activity ? C_MinInterval : std::min(interval * 3 / 2, C_MaxInterval));
}

int TVWebService::update()
{
    try {
        TV_PASS_ON(scan());
        for (TVWebFile* file : m_files)
            if (file->needs_push())
                TV_PASS_ON(push(*file));
        TV_PASS_ON(remote_start());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVWebService::scan()
{
    try {
        if (m_folder.empty() || !tv_dir_exists(m_folder))
            return TVErrC_ok;
        for (TVWebFile* file : m_files)
            file->set_remove(true);
        TVDirectory dir(m_folder);
        TV_PASS_ON(dir.load(false));
        for (int i = 0; i < dir.get_nfiles(); ++i) {
            const TVFile& found = *dir.get_file_by_index(i);
            TVWebFile* known = nullptr;
            for (TVWebFile* file : m_files)
                if (file->get_pathname() == found.get_pathname())
                    known = file;
            if (known != nullptr) {
                known->update(found, false, m_lastSync);
                continue;
            }
            auto* file = new TVWebFile(found.get_pathname());
            if (m_lastSync.is_blank() || m_lastSync < found.get_modified())
                file->update(found, true, m_lastSync);
            else
                file->TVFile::operator=(found);
            m_files.add(file);
        }
        // A file deleted here leaves the list, never the remote side: the
        // next listing brings it back.
        for (int i = m_files.size() - 1; i >= 0; --i)
            if (m_files[i]->needs_remove())
                delete m_files.remove(i);
        ++m_scanCount;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVWebService::remote_complete()
{
    try {
        for (TVWebFile* file : m_files) {
            if (!file->needs_pull())
                continue;
            // Activity: poll fast again.
            m_activity = true;
            if (m_timer.isActive())
                m_timer.start(C_MinInterval);
            TV_PASS_ON(pull(*file));
            break;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVWebService::is_downloading(const std::string& name) const
{
    const TVWebFile* file = find_file(name);
    return file != nullptr && file->is_downloading();
}

TVWebFile* TVWebService::find_file(const std::string& name) const
{
    for (TVWebFile* file : m_files)
        if (file->get_filename() == name)
            return file;
    return nullptr;
}

TVWebFile* TVWebService::find_id(const std::string& id) const
{
    for (TVWebFile* file : m_files)
        if (!id.empty() && file->get_id() == id)
            return file;
    return nullptr;
}

TVWebFile& TVWebService::add_file(const std::string& name)
{
    auto* file = new TVWebFile(m_folder + "/" + name);
    m_files.add(file);
    return *file;
}

int TVWebService::push(TVWebFile&)
{
    return TVErrC_ok;
}

int TVWebService::pull(TVWebFile&)
{
    return TVErrC_ok;
}

int TVWebService::remote_start()
{
    return TVErrC_ok;
}

void TVWebService::dump(std::ostream& out, int indent) const
{
    TVDump dump("TVWebService", out, indent);
    dump.add_entry("folder", m_folder);
    dump.add_entry("running", m_running);
    dump.add_entry("lastSync", m_lastSync);
    dump.add_entry("scanCount", m_scanCount);
    for (const TVWebFile* file : m_files)
        file->dump(out, indent + 1);
}
