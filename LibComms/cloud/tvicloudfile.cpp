#include "LibComms/cloud/tvicloudfile.h"

#include "LibComms/cloud/tvicloudservice.h"
#include "LibCore/error/tverror.h"
#include "LibGui/base/tvwindow.h"
#include "LibObject/object/tvtrail.h"

TViCloudFile::TViCloudFile(const std::string& name)
{
    set_filename(name);
}

bool TViCloudFile::is_available()
{
    return TVWindow::has_icloud();
}

bool TViCloudFile::init_in_progress()
{
    return TViCloudService::instance()->icloud_available();
}

bool TViCloudFile::has_data()
{
    return TViCloudService::instance()->has_data(m_fileName);
}

std::string TViCloudFile::read()
{
    std::string data;
    if (istvwarn(TViCloudService::instance()->fetch(m_fileName, data)))
        get_tverror()->clear_last_error();
    return data;
}

int TViCloudFile::write(const std::string& data)
{
    try {
        TV_PASS_ON(TViCloudService::instance()->send(m_fileName, data));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TViCloudFile::get_name()
{
    return "iCloud";
}

std::string TViCloudFile::debug_info()
{
    return TViCloudService::instance()->debug_info();
}
