#include "LibComms/cloud/tvlocalfile.h"

#include "LibComms/cloud/tvlocalservice.h"
#include "LibGui/base/tvwindow.h"

TVLocalFile::TVLocalFile(const std::string& name)
{
    set_filename(name);
}

// Without a chosen folder there is nowhere to write: the link is off,
// never a file beside the root.
bool TVLocalFile::is_available()
{
    return TVWindow::has_cloudshare() && !TVLocalService::get_syncdir().empty();
}

bool TVLocalFile::init_in_progress()
{
    (void)is_available();
    return false;
}

TVCloudService* TVLocalFile::service()
{
    return TVLocalService::instance();
}

std::string TVLocalFile::get_name()
{
    return "File: " + m_fileName;
}
