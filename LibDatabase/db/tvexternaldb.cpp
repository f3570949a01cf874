#include "LibDatabase/db/tvexternaldb.h"

#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlobjectarray.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVExternalDB";
const TVObjectPreReg s_preReg(C_ClassName, TVExternalDB::create_tvobject);
} // namespace

TVExternalDB::TVExternalDB()
{
    set_defaults(true);
    register_tvobject();
}

TVExternalDB::TVExternalDB(int type, const std::string& name)
{
    set_defaults(true);
    m_dbType = type;
    m_fileName = name;
    (void)m_file.set_file(TVCloudInstance::to_file_type(type), name);
    register_tvobject();
}

TVExternalDB::TVExternalDB(const TVExternalDB& other)
    : TVObject(other),
      m_dbType(other.m_dbType),
      m_manual(other.m_manual),
      m_fileName(other.m_fileName),
      m_merge(other.m_merge),
      m_lastPushTime(other.m_lastPushTime),
      m_lastRepTime(other.m_lastRepTime),
      m_file(other.m_file),
      m_details(other.m_details),
      m_dbWarning(other.m_dbWarning)
{
    register_tvobject();
}

TVExternalDB& TVExternalDB::operator=(const TVExternalDB& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        m_dbType = other.m_dbType;
        m_manual = other.m_manual;
        m_fileName = other.m_fileName;
        m_merge = other.m_merge;
        m_lastPushTime = other.m_lastPushTime;
        m_lastRepTime = other.m_lastRepTime;
        m_file = other.m_file;
        m_details = other.m_details;
        m_dbWarning = other.m_dbWarning;
    }
    return *this;
}

void TVExternalDB::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    m_dbType = TVCloudInstance::E_None;
    m_manual = false;
    m_fileName.clear();
    m_merge.clear();
    m_lastPushTime = TVDateUtils::invalid_date();
    m_lastRepTime = TVDateUtils::invalid_date();
    m_details = C_NoNews;
    m_dbWarning = false;
}

int TVExternalDB::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVExternalDB>(out, source, C_ClassName);
}

void TVExternalDB::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVExternalDB::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                            int version)
{
    try {
        if (out != nullptr)
            prune_merges();
        TV_PASS_ON(serialise_value(in, out, prefix, "dbType", TVSrlValue<int>(m_dbType)));
        TV_PASS_ON(serialise_value(in, out, prefix, "manual", TVSrlValue<bool>(m_manual)));
        TV_PASS_ON(serialise_string(in, out, prefix, "fileName", m_fileName, false));
        TV_PASS_ON(serialise_object(in, out, prefix, "merge",
                                    TVSrlObjectArray<TVExternalDBMerge>(m_merge, version)));
        TV_PASS_ON(serialise_value(in, out, prefix, "lastSyncTime",
                                   TVSrlValue<TVDate>(m_lastPushTime)));
        TV_PASS_ON(serialise_value(in, out, prefix, "repTime", TVSrlValue<TVDate>(m_lastRepTime)));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        if (in != nullptr) {
            prune_merges();
            TV_PASS_ON(m_file.set_file(TVCloudInstance::to_file_type(m_dbType), m_fileName));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// A peer's merge older than a week no longer counts: its next file is news.
void TVExternalDB::prune_merges()
{
    const TVDate cutoff = TVDateUtils::now() - TVDuration(C_MergeKeepSeconds);
    for (int i = m_merge.size(); i-- > 0;) {
        const TVExternalDBMerge& merge = *m_merge[i];
        if (!merge.m_write.is_ok() || merge.m_host.empty() || merge.m_write < cutoff)
            (void)m_merge.erase(i);
    }
}

void TVExternalDB::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVExternalDB " << m_fileName << " type " << m_dbType
        << (m_manual ? " manual" : "") << " pushed " << m_lastPushTime.to_string("%D %T")
        << " replaced " << m_lastRepTime.to_string("%D %T") << '\n';
    for (const TVExternalDBMerge* merge : m_merge)
        merge->dump(out, indent + 1);
}

bool TVExternalDB::operator==(const TVExternalDB& other) const
{
    if (m_dbType != other.m_dbType || m_manual != other.m_manual ||
        m_fileName != other.m_fileName || m_merge.size() != other.m_merge.size() ||
        m_lastPushTime != other.m_lastPushTime || m_lastRepTime != other.m_lastRepTime)
        return false;
    for (int i = 0; i < m_merge.size(); ++i)
        if (!(*m_merge[i] == *other.m_merge[i]))
            return false;
    return TVObject::operator==(other);
}

void TVExternalDB::set_dbname(const std::string& name)
{
    if (name == m_fileName)
        return;
    m_fileName = name;
    (void)m_file.set_file(TVCloudInstance::to_file_type(m_dbType), name);
}

bool TVExternalDB::is_available()
{
    return m_file.is_available();
}

bool TVExternalDB::download_in_progress()
{
    return m_file.download_in_progress();
}

bool TVExternalDB::upload_in_progress()
{
    return m_file.upload_in_progress();
}

bool TVExternalDB::init_in_progress()
{
    return m_file.init_in_progress();
}

int TVExternalDB::get_state()
{
    return m_file.get_state();
}

std::string TVExternalDB::read()
{
    return m_file.read();
}

int TVExternalDB::write(const std::string& data)
{
    try {
        TV_PASS_ON(m_file.write(data));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVExternalDB::has_data()
{
    return !m_fileName.empty() && m_file.has_new_data();
}

TVDate TVExternalDB::get_pulltime(const std::string& host) const
{
    for (const TVExternalDBMerge* merge : m_merge)
        if (merge->m_host == host)
            return merge->m_write;
    return TVDate::C_Blank;
}

void TVExternalDB::set_pulltime(const TVDate& date, const std::string& host)
{
    for (TVExternalDBMerge* merge : m_merge)
        if (merge->m_host == host) {
            merge->m_write = date;
            return;
        }
    m_merge.add(new TVExternalDBMerge(host, date));
}

void TVExternalDB::mark_replace()
{
    m_lastRepTime = TVDateUtils::now();
}

void TVExternalDB::mark_push(const TVDate& date)
{
    m_lastPushTime = date;
}

bool TVExternalDB::should_pull(const TVDate& their_write, const TVDate& our_push,
                               const std::string& their_host) const
{
    if (their_write == our_push || !their_write.is_ok())
        return false;
    const TVDate seen = get_pulltime(their_host);
    if (!seen.is_ok())
        return true;
    return their_write > seen;
}

bool TVExternalDB::should_push(const TVDate& date) const
{
    if (!date.is_ok())
        return false;
    const TVDate rep = m_lastRepTime.is_ok() ? m_lastRepTime : date;
    const TVDate push = m_lastPushTime.is_ok() ? m_lastPushTime : date;
    return date > rep && date > push;
}

bool TVExternalDB::can_push()
{
    return m_file.is_available() && !m_file.download_in_progress() &&
           !m_file.init_in_progress() && !m_dbWarning && !m_fileName.empty();
}

std::string TVExternalDB::get_details()
{
    return m_file.get_name() + "\n\n" + m_details;
}

void TVExternalDB::set_details(const std::string& details)
{
    if (!details.empty())
        m_details = details;
}

std::string TVExternalDB::debug_info()
{
    const std::string cloud = m_file.get_name();
    std::string text;
    if (m_lastRepTime.is_ok())
        text += "Complete reload from " + cloud + ": " + m_lastRepTime.to_string("%C") + ".\n";
    else
        text += "No complete reload from " + cloud + " yet.\n";
    for (const TVExternalDBMerge* merge : m_merge)
        text += "Last merge from " + merge->m_host + ": " + merge->m_write.to_string("%C") + ".\n";
    if (m_lastPushTime.is_ok())
        text += "Last write to " + cloud + ": " + m_lastPushTime.to_string("%C") + ".\n";
    else
        text += "No write to " + cloud + " yet.\n";
    return text;
}
