#include "LibComms/cloud/tvlocalfile.h"

#include "LibComms/cloud/tvlocalservice.h"
#include "LibCore/error/tverror.h"
#include "LibGui/base/tvwindow.h"
#include "LibObject/object/tvtrail.h"

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

bool TVLocalFile::has_data()
{
    return TVLocalService::instance()->has_data(m_fileName);
}

std::string TVLocalFile::read()
{
    std::string data;
    if (istvwarn(TVLocalService::instance()->fetch(m_fileName, data)))
        get_tverror()->clear_last_error();
    return data;
}

int TVLocalFile::write(const std::string& data)
{
    try {
        TV_PASS_ON(TVLocalService::instance()->send(m_fileName, data));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVLocalFile::get_name()
{
    return "File: " + m_fileName;
}

std::string TVLocalFile::debug_info()
{
    return TVLocalService::instance()->debug_info();
}
