#include "LibComms/cloud/tvicloudservice.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibObject/object/tvtrail.h"

#include <memory>

TViCloudService* TViCloudService::instance()
{
    static std::unique_ptr<TViCloudService> s_service;
    if (s_service == nullptr) {
        s_service = std::make_unique<TViCloudService>();
        (void)s_service->start();
    }
    return s_service.get();
}

TViCloudService::TViCloudService() = default;

// The thread reads this class's members: it ends before they go.
TViCloudService::~TViCloudService()
{
    if (is_running()) {
        mark_stop();
        nudge();
        (void)wait_thread();
    }
}

bool TViCloudService::has_icloud()
{
    return false;
}

bool TViCloudService::icloud_available() const
{
    return m_containerFound && m_enabled;
}

std::string TViCloudService::icloud_name(const std::string&) const
{
    return std::string();
}

int TViCloudService::send(const std::string& name, const std::string& data)
{
    try {
        const std::string path = icloud_name(TVCFile::host_filename(name, own_host()));
        if (path.empty())
            return TVErrC_ok;
        TV_PASS_ON(write_file(path, data));
        TV_PASS_ON(mark_written(tv_filename(name)));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TViCloudService::check_thread()
{
    try {
        TV_PASS_ON(check_index());
        const std::string host = own_host();
        for (TVCFile* file : files()) {
            const std::string path = icloud_name(file->get_hostfile());
            if (file->get_active() && file->get_host() != host && !path.empty())
                TV_PASS_ON(file->check_read(path));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TViCloudService::index_file_name() const
{
    return icloud_name(tvapplication()->get_application() + "-iCloud-" + C_IndexName);
}

std::string TViCloudService::cloud_name(const std::string& name) const
{
    return icloud_name(tv_filename(name));
}
