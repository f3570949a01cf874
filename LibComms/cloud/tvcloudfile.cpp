#include "LibComms/cloud/tvcloudfile.h"

#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"

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

bool TVCloudFile::has_data()
{
    return false;
}

std::string TVCloudFile::read()
{
    return std::string();
}

int TVCloudFile::write(const std::string&)
{
    return TVErrC_ok;
}

std::string TVCloudFile::get_name()
{
    return "???";
}

std::string TVCloudFile::debug_info()
{
    return "???";
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
