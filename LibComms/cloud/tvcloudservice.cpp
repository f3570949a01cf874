#include "LibComms/cloud/tvcloudservice.h"

#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/cloud/tvicloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibComms/thread/tvmutexlocker.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

TVCloudService::TVCloudService() = default;

TVCloudService::~TVCloudService()
{
    if (is_running()) {
        mark_stop();
        nudge();
        (void)wait_thread();
    }
}

int TVCloudService::start_services(const std::string& client_id, const std::string& client_secret)
{
    TVGoogleService::instance()->initialise(TVGCloudService::google_dir(), client_id,
                                            client_secret);
    (void)TViCloudService::instance();
    (void)TVGCloudService::instance();
    (void)TVLocalService::instance();
    return TVErrC_ok;
}

int TVCloudService::start()
{
    return start_thread();
}

void TVCloudService::nudge()
{
    m_signal.send_signal();
}

void TVCloudService::nudge_all()
{
    TViCloudService::instance()->nudge();
    TVGCloudService::instance()->nudge();
    TVLocalService::instance()->nudge();
}

void TVCloudService::override_host(const std::string& host)
{
    TVApplication::set_hostname_override(host);
}

std::string TVCloudService::own_host() const
{
    return TVApplication::get_hostname();
}

std::string TVCloudService::cloud_name(const std::string& name) const
{
    return name;
}

std::string TVCloudService::debug_info()
{
    std::ostringstream out;
    dump(out, 0);
    return out.str();
}

std::string TVCloudService::index_file_name() const
{
    return std::string();
}

void TVCloudService::set_index_file(const std::string& path)
{
    m_indexFile = path;
    m_indexRead = TVDateUtils::blank_date();
    m_indexVersion.clear();
}

int TVCloudService::check_index()
{
    try {
        if (m_indexFile.empty())
            m_indexFile = index_file_name();
        const TVDate date = tv_file_modified(m_indexFile);
        if (!date.is_ok())
            return TVErrC_ok;
        const std::string version = tv_file_version(m_indexFile);
        if (m_indexRead.is_ok() && !(m_indexRead < date) && version == m_indexVersion)
            return TVErrC_ok;
        TV_PASS_ON(read_index_file());
        m_indexRead = date;
        m_indexVersion = version;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVCloudService::check_thread()
{
    return check_index();
}

int TVCloudService::check_main()
{
    TVMutexLocker lock(m_mutex);
    return check_thread();
}

bool TVCloudService::has_data(const std::string& name)
{
    TVMutexLocker lock(m_mutex, C_LockWaitMs);
    if (!lock.is_locked())
        return false;
    if (!is_running()) {
        int result = TVErrC_ok;
        try {
            result = check_thread();
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        if (istvwarn(result))
            return result != 0;
    }
    const std::string host = own_host();
    for (TVCFile* file : m_file) {
        if (file->get_filename() != name || file->get_host() == host)
            continue;
        if (file->has_data())
            return true;
        file->set_active(true);
    }
    return false;
}

int TVCloudService::fetch(const std::string& name, std::string& out)
{
    try {
        out.clear();
        if (!is_running())
            TV_PASS_ON(check_main());
        TVMutexLocker lock(m_mutex, C_LockWaitMs);
        if (!lock.is_locked())
            return TVErrC_ok;
        for (TVCFile* file : m_file) {
            if (file->get_filename() != name)
                continue;
            file->set_active(true);
            out = file->pop_data();
            if (!out.empty())
                break;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVCloudService::send(const std::string&, const std::string&)
{
    return TVErrC_ok;
}

std::vector<std::string> TVCloudService::file_list()
{
    if (!is_running()) {
        try {
            if (istvwarn(check_main()))
                get_tverror()->clear_last_error();
        } catch (const TVErrDetails&) {
            get_tverror()->clear_last_error();
        }
    }
    TVMutexLocker lock(m_mutex);
    std::vector<std::string> names;
    for (const TVCFile* file : m_file)
        if (std::find(names.begin(), names.end(), file->get_filename()) == names.end())
            names.push_back(file->get_filename());
    return names;
}

void TVCloudService::reset_files()
{
    TVMutexLocker lock(m_mutex);
    for (TVCFile* file : m_file)
        file->reset();
}

void TVCloudService::reset_all()
{
    TViCloudService::instance()->reset_files();
    TVGCloudService::instance()->reset_files();
    TVLocalService::instance()->reset_files();
}

int TVCloudService::read_file(const std::string& path, std::string& out, bool quiet)
{
    out.clear();
    std::ifstream in(path, std::ios::binary);
    if (TVFileFaults::should_fail(TVFileFaults::E_OpRead, path) || !in) {
        if (quiet)
            return TVErrC_FileOpen;
        return tvwarning(TVErrC_FileCreate, TVLOCATION, "Could not read the file %s",
                         path.c_str());
    }
    std::ostringstream all;
    all << in.rdbuf();
    out = all.str();
    return TVErrC_ok;
}

// A peer, or the program that carries the folder between devices, must
// never see half a file: the bytes go to a hidden name beside it, are
// flushed, and are renamed over it in one step.
int TVCloudService::write_file(const std::string& path, const std::string& data)
{
    const auto failed = [&path] {
        return tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not write the file %s",
                         path.c_str());
    };
    if (TVFileFaults::should_fail(TVFileFaults::E_OpWrite, path))
        return failed();
    std::string temp = tv_dirname(path) + "/." + tv_filename(path) + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0)
        return failed();
    bool ok = ::fchmod(fd, 0644) == 0;
    for (size_t done = 0; ok && done < data.size();) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        ok = n > 0;
        done += n > 0 ? static_cast<size_t>(n) : 0;
    }
    ok = ok && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(temp.c_str(), path.c_str()) == 0;
    if (!ok) {
        ::unlink(temp.c_str());
        return failed();
    }
    return TVErrC_ok;
}

int TVCloudService::read_index_file()
{
    try {
        if (m_indexFile.empty() || !tv_file_exists(m_indexFile))
            return TVErrC_ok;
        std::string text;
        if (read_file(m_indexFile, text, true) != TVErrC_ok)
            return tvwarning(TVErrC_FileCreate, TVLOCATION, "Could not read the index file %s",
                             m_indexFile.c_str());
        std::istringstream in(text);
        TVPtrArray<TVCFile> read(true);
        for (;;) {
            TVObject* made = nullptr;
            const int result = TVObject::read_class(in, made, 0);
            std::unique_ptr<TVObject> owned(made);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            if (result != TVErrC_ok || owned == nullptr)
                break;
            if (auto* file = dynamic_cast<TVCFile*>(owned.get())) {
                owned.release();
                read.add(file);
            }
        }
        for (const TVCFile* record : read) {
            const auto match = std::find_if(m_file.begin(), m_file.end(),
                                            [record](const TVCFile* f) { return f->match(*record); });
            if (match != m_file.end()) {
                (*match)->update(*record);
            } else {
                auto* copy = new TVCFile(*record);
                copy->set_active(false);
                insert_sorted(copy);
            }
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVCloudService::write_index_file()
{
    try {
        if (m_indexFile.empty())
            return TVErrC_ok;
        std::ostringstream out;
        for (const TVCFile* file : m_file)
            TV_PASS_ON(file->write_class(out, 0));
        if (istvwarn(write_file(m_indexFile, out.str()))) {
            get_tverror()->clear_last_error();
            return tvwarning(TVErrC_FileWrite, TVLOCATION, "Could not write the index file %s",
                             m_indexFile.c_str());
        }
        // Our own write is no change to read back.
        m_indexRead = tv_file_modified(m_indexFile);
        m_indexVersion = tv_file_version(m_indexFile);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVCloudService::mark_written(const std::string& name)
{
    try {
        TVMutexLocker lock(m_mutex);
        // The index is rewritten whole: take in what others wrote to it
        // first, so that their records go out again with ours.
        TV_PASS_ON(check_index());
        const std::string host = own_host();
        bool own = false;
        for (TVCFile* file : m_file) {
            if (file->match(name, host)) {
                file->mark_changed();
                own = true;
            } else if (file->get_filename() == name) {
                file->set_active(true);
            }
        }
        if (!own)
            insert_sorted(new TVCFile(name, host));
        TV_PASS_ON(write_index_file());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVCloudService::insert_sorted(TVCFile* file)
{
    int at = 0;
    while (at < m_file.size() && !TVCFile::compare(*m_file[at], *file))
        ++at;
    (void)m_file.insert(at, file);
}

int TVCloudService::func()
{
    while (!is_stopping()) {
        int result = TVErrC_ok;
        {
            TVMutexLocker lock(m_mutex);
            try {
                result = check_thread();
            } catch (const TVErrDetails&) {
                result = tverrorvalue();
            }
        }
        if (istvwarn(result))
            return result;
        if (is_stopping())
            break;
        (void)m_signal.wait_signal(C_WaitMs);
    }
    return TVErrC_ok;
}

void TVCloudService::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "Index: " << m_indexFile << '\n';
    for (const TVCFile* file : m_file)
        file->dump(out, indent + 1);
}
