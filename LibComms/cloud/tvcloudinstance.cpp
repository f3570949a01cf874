#include "LibComms/cloud/tvcloudinstance.h"

#include "LibComms/cloud/tvcloudfile.h"
#include "LibComms/cloud/tvgcloudfile.h"
#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/cloud/tvlocalfile.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibCore/error/tverror.h"

TVCloudInstance::TVCloudInstance() = default;

TVCloudInstance::~TVCloudInstance() = default;

// A copy is bound to the same file, by a handle of its own.
TVCloudInstance::TVCloudInstance(const TVCloudInstance& other)
{
    (void)set_file(other.m_fileType, other.m_fileName);
}

TVCloudInstance& TVCloudInstance::operator=(const TVCloudInstance& other)
{
    if (this != &other)
        (void)set_file(other.m_fileType, other.m_fileName);
    return *this;
}

TVCloudInstance::E_FileType TVCloudInstance::to_file_type(int type)
{
    switch (type) {
    case E_GDrive:
    case E_ICloud:
    case E_LocalShare:
        return static_cast<E_FileType>(type);
    default:
        return E_None;
    }
}

bool TVCloudInstance::filename_based(int type)
{
    return type == E_GDrive || type == E_ICloud;
}

void TVCloudInstance::refresh_cloud()
{
}

int TVCloudInstance::set_file(E_FileType type, const std::string& name)
{
    if (type != m_fileType || (m_file == nullptr && (type == E_LocalShare || type == E_GDrive))) {
        m_file.reset();
        m_fileType = type;
        // iCloud has no handle on this platform.
        if (type == E_LocalShare) {
            (void)TVLocalService::instance();
            m_file = std::make_unique<TVLocalFile>(name);
        } else if (type == E_GDrive) {
            (void)TVGCloudService::instance();
            m_file = std::make_unique<TVGCloudFile>(name);
        }
    }
    m_fileName = name;
    if (m_file != nullptr)
        m_file->set_filename(name);
    return TVErrC_ok;
}

bool TVCloudInstance::is_available()
{
    return m_file != nullptr && m_file->is_available();
}

bool TVCloudInstance::download_in_progress()
{
    return m_file != nullptr && m_file->download_in_progress();
}

bool TVCloudInstance::upload_in_progress()
{
    return m_file != nullptr && m_file->upload_in_progress();
}

bool TVCloudInstance::init_in_progress()
{
    return m_file != nullptr && m_file->init_in_progress();
}

bool TVCloudInstance::has_new_data()
{
    return m_file != nullptr && m_file->has_data();
}

int TVCloudInstance::get_state()
{
    return m_file != nullptr ? m_file->get_state() : TVCloudFile::E_StateOff;
}

std::string TVCloudInstance::read()
{
    return m_file != nullptr ? m_file->read() : std::string();
}

int TVCloudInstance::write(const std::string& data)
{
    return m_file != nullptr ? m_file->write(data) : TVErrC_ok;
}

std::string TVCloudInstance::get_name()
{
    return m_file != nullptr ? m_file->get_name() : "???";
}

std::string TVCloudInstance::debug_info()
{
    return m_file != nullptr ? m_file->debug_info() : "???";
}
