#include "LibComms/cloud/tvlocalservice.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/fileutils/tvsecuritybookmark.h"
#include "LibCore/param/tvparam.h"
#include "LibObject/object/tvtrail.h"

#include <memory>

namespace {
TVLocalService* g_installed = nullptr;
} // namespace

TVLocalService* TVLocalService::instance()
{
    if (g_installed != nullptr)
        return g_installed;
    static std::unique_ptr<TVLocalService> s_service(new TVLocalService);
    return s_service.get();
}

TVLocalService* TVLocalService::swap_instance(TVLocalService* service)
{
    TVLocalService* before = g_installed;
    g_installed = service;
    return before;
}

TVLocalService::TVLocalService()
{
    set_defaults(true);
}

void TVLocalService::set_defaults(bool)
{
    (void)get_syncdir();
}

std::string& TVLocalService::sync_dir()
{
    static std::string dir;
    return dir;
}

std::string TVLocalService::get_syncdir()
{
    std::string& dir = sync_dir();
    if (dir.empty()) {
        dir = tvparam()->get_system_value(C_CloudShareParam);
        if (!dir.empty())
            tv_access_security_bookmark(C_CloudShareBookmark);
    }
    return dir;
}

int TVLocalService::set_syncdir(const std::string& path)
{
    try {
        std::string target = path;
        std::string dir = tv_dirname(path);
        if (tv_dir_exists(path)) {
            target.clear();
            dir = path;
        } else if (!tv_dir_exists(dir)) {
            return tvwarning(TVErrC_FileNotExist, TVLOCATION, "The directory %s does not exist.",
                             path.c_str());
        }
        sync_dir() = dir;
        // A folder that can't be remembered is still the folder for now.
        int stored = TVErrC_ok;
        try {
            stored = tvparam()->set_system_value(C_CloudShareParam, dir);
            if (istvwarn(stored))
                tvsysinfo_append(TVLOCATION, "");
        } catch (const TVErrDetails&) {
            stored = tverrorvalue();
        }
        if (tvhandle_error(stored, TVSevError) > 2)
            return stored;
        if (!target.empty())
            tv_store_security_bookmark(C_CloudShareBookmark, target);
        instance()->set_index_file(instance()->index_file_name());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVLocalService::local_name(const std::string& name)
{
    return get_syncdir() + "/" + name;
}

int TVLocalService::send(const std::string& name, const std::string& data)
{
    try {
        const std::string base = tv_filename(name);
        if (get_syncdir().empty())
            return tvwarning(TVErrC_FileNotExist, TVLOCATION,
                             "No shared folder is chosen for %s.", base.c_str());
        TV_PASS_ON(write_file(local_name(TVCFile::host_filename(base, own_host())), data));
        TV_PASS_ON(mark_written(base));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVLocalService::check_thread()
{
    try {
        if (get_syncdir().empty())
            return TVErrC_ok;
        TV_PASS_ON(check_index());
        for (TVCFile* file : files())
            if (file->get_active())
                TV_PASS_ON(file->check_read(local_name(file->get_hostfile())));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVLocalService::index_file_name() const
{
    return local_name(tvapplication()->get_application() + "-Local-" + C_IndexName);
}

std::string TVLocalService::cloud_name(const std::string& name) const
{
    return local_name(tv_filename(name));
}
