#include "LibComms/cloud/tvgcloudfile.h"

#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibGui/base/tvwindow.h"

TVGCloudFile::TVGCloudFile(const std::string& name)
{
    set_filename(name);
}

bool TVGCloudFile::is_available()
{
    return TVWindow::has_gdrive() && TVGoogleService::instance()->is_available();
}

bool TVGCloudFile::download_in_progress()
{
    return TVWindow::has_gdrive() && TVGoogleService::instance()->download_in_progress();
}

bool TVGCloudFile::upload_in_progress()
{
    return TVWindow::has_gdrive() && TVGoogleService::instance()->upload_in_progress();
}

bool TVGCloudFile::init_in_progress()
{
    return is_available() && !TVGoogleService::instance()->is_connected();
}

std::string TVGCloudFile::get_name()
{
    return "Google Drive";
}

TVCloudService* TVGCloudFile::service()
{
    return TVGCloudService::instance();
}
