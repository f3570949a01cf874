#include "LibComms/cloud/tvicloudfile.h"

#include "LibComms/cloud/tvicloudservice.h"
#include "LibGui/base/tvwindow.h"

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

TVCloudService* TViCloudFile::service()
{
    return TViCloudService::instance();
}

std::string TViCloudFile::get_name()
{
    return "iCloud";
}
