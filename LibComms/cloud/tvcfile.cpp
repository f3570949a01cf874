#include "LibComms/cloud/tvcfile.h"

#include "LibComms/cloud/tvcloudservice.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVCFile";
const TVObjectPreReg s_preReg(C_ClassName, TVCFile::create_tvobject);
} // namespace

TVCFile::TVCFile()
{
    set_defaults(true);
    register_tvobject();
}

TVCFile::TVCFile(const std::string& file_name, const std::string& host)
{
    set_defaults(true);
    m_fileName = file_name;
    m_host = host;
    m_hostFile = host_filename(file_name, host);
    mark_changed();
    register_tvobject();
}

TVCFile::TVCFile(const TVCFile& other)
    : TVObject(other),
      m_fileName(other.m_fileName),
      m_host(other.m_host),
      m_hostFile(other.m_hostFile),
      m_lastWrite(other.m_lastWrite),
      m_lastRead(other.m_lastRead),
      m_lastModified(other.m_lastModified),
      m_expire(other.m_expire),
      m_active(other.m_active),
      m_data(other.m_data),
      m_readVersion(other.m_readVersion)
{
    register_tvobject();
}

TVCFile& TVCFile::operator=(const TVCFile& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        m_fileName = other.m_fileName;
        m_host = other.m_host;
        m_hostFile = other.m_hostFile;
        m_lastWrite = other.m_lastWrite;
        m_lastRead = other.m_lastRead;
        m_lastModified = other.m_lastModified;
        m_expire = other.m_expire;
        m_active = other.m_active;
        m_data = other.m_data;
        m_readVersion = other.m_readVersion;
    }
    return *this;
}

void TVCFile::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    m_fileName.clear();
    m_host.clear();
    m_hostFile.clear();
    m_lastWrite = TVDateUtils::blank_date();
    m_lastRead = TVDateUtils::blank_date();
    m_lastModified = TVDateUtils::blank_date();
    m_expire = TVDateUtils::blank_date();
    m_active = false;
    m_data.clear();
    m_readVersion.clear();
}

int TVCFile::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVCFile>(out, source, C_ClassName);
}

void TVCFile::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVCFile::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "f", m_fileName, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "h", m_host, false));
        TV_PASS_ON(serialise_value(in, out, prefix, "w", TVSrlValue<TVDate>(m_lastWrite)));
        TV_PASS_ON(serialise_value(in, out, prefix, "e", TVSrlValue<TVDate>(m_expire)));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        if (in != nullptr)
            m_hostFile = host_filename(m_fileName, m_host);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVCFile::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVCFile " << m_hostFile << " written " << m_lastWrite.to_string("%D %T")
        << (m_active ? " wanted" : "") << (m_data.empty() ? "" : " with data") << '\n';
}

bool TVCFile::operator==(const TVCFile& other) const
{
    return m_fileName == other.m_fileName && m_host == other.m_host &&
           m_lastWrite == other.m_lastWrite && m_expire == other.m_expire &&
           TVObject::operator==(other);
}

std::string TVCFile::host_filename(const std::string& file_name, const std::string& host)
{
    return host + "@" + tv_filename(file_name);
}

void TVCFile::mark_changed()
{
    const TVDate now = TVDateUtils::now();
    m_lastWrite = now;
    m_lastRead = now;
    m_lastModified = now;
    m_expire = now + TVDuration(C_ExpireSeconds);
    m_active = true;
}

bool TVCFile::match(const TVCFile& other) const
{
    return match(other.m_fileName, other.m_host);
}

bool TVCFile::match(const std::string& file_name, const std::string& host) const
{
    return m_fileName == file_name && m_host == host;
}

void TVCFile::update(const TVCFile& other)
{
    m_lastWrite = other.m_lastWrite;
    m_expire = other.m_expire;
}

void TVCFile::reset()
{
    m_lastRead = TVDateUtils::blank_date();
    m_lastModified = TVDateUtils::blank_date();
    m_readVersion.clear();
    m_data.clear();
}

int TVCFile::check_read(const std::string& path)
{
    try {
        const TVDate date = tv_file_modified(path);
        const std::string version = tv_file_version(path);
        if (m_lastModified.is_ok() && !(date > m_lastModified) && version == m_readVersion)
            return TVErrC_ok;
        const int result = TVCloudService::read_file(path, m_data, true);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        if (result != TVErrC_ok)
            return TVErrC_ok;
        m_lastModified = date;
        m_readVersion = version;
        m_lastRead = m_lastWrite;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

std::string TVCFile::pop_data()
{
    m_active = true;
    std::string data;
    data.swap(m_data);
    return data;
}

bool TVCFile::compare(const TVCFile& a, const TVCFile& b)
{
    if (a.m_host != b.m_host)
        return a.m_host > b.m_host;
    return a.m_fileName > b.m_fileName;
}

std::ostream& operator<<(std::ostream& out, const TVCFile& file)
{
    file.dump(out, 0);
    return out;
}
