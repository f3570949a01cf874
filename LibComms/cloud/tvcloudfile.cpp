#include "LibComms/cloud/tvcloudfile.h"

#include "LibComms/cloud/tvcloudservice.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

void TVCloudFile::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVCloudFile " << m_fileName << '\n';
}

void TVCloudFile::set_filename(const std::string& name)
{
    m_fileName = tv_filename(name);
}

bool TVCloudFile::is_available()
{
    return true;
}

bool TVCloudFile::download_in_progress()
{
    return false;
}

bool TVCloudFile::upload_in_progress()
{
    return false;
}

bool TVCloudFile::init_in_progress()
{
    return false;
}

TVCloudService* TVCloudFile::service()
{
    return nullptr;
}

bool TVCloudFile::has_data()
{
    return service() != nullptr && service()->has_data(m_fileName);
}

// Nothing read now is read at the next ask.
std::string TVCloudFile::read()
{
    std::string data;
    if (service() != nullptr && istvwarn(service()->fetch(m_fileName, data)))
        get_tverror()->clear_last_error();
    return data;
}

int TVCloudFile::write(const std::string& data)
{
    try {
        if (service() != nullptr)
            TV_PASS_ON(service()->send(m_fileName, data));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVCloudFile::get_name()
{
    return "???";
}

std::string TVCloudFile::debug_info()
{
    return service() != nullptr ? service()->debug_info() : "???";
}

int TVCloudFile::get_state()
{
    if (!is_available())
        return E_StateOff;
    if (init_in_progress())
        return E_StateInitialising;
    if (download_in_progress())
        return E_StateDownloading;
    if (upload_in_progress())
        return E_StateUploading;
    return E_StateIdle;
}
