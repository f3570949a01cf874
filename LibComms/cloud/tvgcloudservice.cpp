#include "LibComms/cloud/tvgcloudservice.h"

#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibObject/object/tvtrail.h"

#include <memory>

namespace {
TVGCloudService* g_installed = nullptr;
} // namespace

TVGCloudService* TVGCloudService::instance()
{
    if (g_installed != nullptr)
        return g_installed;
    static std::unique_ptr<TVGCloudService> s_service(new TVGCloudService);
    return s_service.get();
}

TVGCloudService* TVGCloudService::swap_instance(TVGCloudService* service)
{
    TVGCloudService* before = g_installed;
    g_installed = service;
    return before;
}

std::string TVGCloudService::google_dir()
{
    return tvapplication()->get_cache_dir() + "/" + C_GDriveDir;
}

TVGCloudService::TVGCloudService() : m_folder(google_dir())
{
}

void TVGCloudService::set_folder(const std::string& folder)
{
    m_folder = folder;
    set_index_file(index_file_name());
}

std::string TVGCloudService::gcloud_name(const std::string& name) const
{
    return m_folder + "/" + name;
}

int TVGCloudService::check_google_dir()
{
    try {
        if (!tv_dir_exists(m_folder))
            TV_PASS_ON(tv_create_dir(m_folder, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVGCloudService::send(const std::string& name, const std::string& data)
{
    try {
        const std::string base = tv_filename(name);
        TV_PASS_ON(check_google_dir());
        TV_PASS_ON(write_file(gcloud_name(TVCFile::host_filename(base, own_host())), data));
        TV_PASS_ON(mark_written(base));
        // Up to Drive at once, not at the next poll.
        TVGoogleService::instance()->wake_up();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVGCloudService::check_thread()
{
    try {
        TV_PASS_ON(check_google_dir());
        TV_PASS_ON(check_index());
        const std::string host = own_host();
        for (TVCFile* file : files())
            if (file->get_active() && file->get_host() != host)
                TV_PASS_ON(file->check_read(gcloud_name(file->get_hostfile())));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVGCloudService::index_file_name() const
{
    return gcloud_name(tvapplication()->get_application() + "-Google-" + C_IndexName);
}

std::string TVGCloudService::cloud_name(const std::string& name) const
{
    return gcloud_name(tv_filename(name));
}
