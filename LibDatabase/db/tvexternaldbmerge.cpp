#include "LibDatabase/db/tvexternaldbmerge.h"

#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVExternalDBMerge";
const TVObjectPreReg s_preReg(C_ClassName, TVExternalDBMerge::create_tvobject);
} // namespace

TVExternalDBMerge::TVExternalDBMerge()
{
    set_defaults(true);
    register_tvobject();
}

TVExternalDBMerge::TVExternalDBMerge(const std::string& host, const TVDate& write)
    : m_host(host), m_write(write)
{
    register_tvobject();
}

TVExternalDBMerge::TVExternalDBMerge(const TVExternalDBMerge& other)
    : TVObject(other), m_host(other.m_host), m_write(other.m_write)
{
    register_tvobject();
}

TVExternalDBMerge& TVExternalDBMerge::operator=(const TVExternalDBMerge& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        m_host = other.m_host;
        m_write = other.m_write;
    }
    return *this;
}

void TVExternalDBMerge::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    m_host.clear();
    m_write = TVDateUtils::invalid_date();
}

int TVExternalDBMerge::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVExternalDBMerge>(out, source, C_ClassName);
}

void TVExternalDBMerge::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVExternalDBMerge::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                 int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "host", m_host, false));
        TV_PASS_ON(serialise_value(in, out, prefix, "write", TVSrlValue<TVDate>(m_write)));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVExternalDBMerge::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVExternalDBMerge " << m_host << " "
        << m_write.to_string("%D %T") << '\n';
}

bool TVExternalDBMerge::operator==(const TVExternalDBMerge& other) const
{
    return m_host == other.m_host && m_write == other.m_write && TVObject::operator==(other);
}
