#include "LibDatabase/db/tvvariable.h"

#include "LibCore/log/tvdump.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVVariable";
const TVObjectPreReg s_preReg(C_ClassName, TVVariable::create_tvobject);
} // namespace

TVVariable::TVVariable()
{
    register_tvobject();
}

TVVariable::TVVariable(const std::string& tag, const std::string& value, bool initialised)
    : TVVarSpec(tag), m_value(value), m_isCached(true), m_isInitialised(initialised)
{
    register_tvobject();
}

TVVariable::TVVariable(const TVVariable& other)
    : TVVarSpec(other), m_value(other.m_value), m_isCached(other.m_isCached),
      m_isInitialised(other.m_isInitialised), m_scriptCache(other.m_scriptCache)
{
    register_tvobject();
}

TVVariable& TVVariable::operator=(const TVVariable& other)
{
    if (this != &other) {
        TVVarSpec::operator=(other);
        m_value = other.m_value;
        m_isCached = other.m_isCached;
        m_isInitialised = other.m_isInitialised;
        m_scriptCache = other.m_scriptCache;
    }
    return *this;
}

void TVVariable::set_defaults(bool constructing)
{
    TVVarSpec::set_defaults(constructing);
    m_value.clear();
    m_isCached = false;
    m_isInitialised = false;
    m_scriptCache.set_defaults(constructing);
}

int TVVariable::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVVariable>(out, source, C_ClassName);
}

void TVVariable::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVVariable::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                          int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "v", m_value, true));
        TV_PASS_ON(serialise_value(in, out, prefix, "i", TVSrlValue<bool>(m_isInitialised, false)));
        TV_PASS_ON(TVVarSpec::serialise(in, out, "VS", version));
        if (in != nullptr)
            m_isCached = true;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVVariable::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVVariable " << get_tag() << " = \"" << m_value
        << "\"" << (m_isCached ? " cached" : "") << (m_isInitialised ? " initialised" : "")
        << '\n';
    TVVarSpec::dump(out, indent + 1);
}

void TVVariable::set_value(const std::string& value, bool initialised)
{
    m_value = value;
    m_isCached = true;
    m_isInitialised = initialised;
}

void TVVariable::mark_initialised()
{
    if (is_prompt() && !is_derived())
        m_isInitialised = true;
}

void TVVariable::clear_cache()
{
    if (!is_derived() && !is_sysvalue())
        return;
    m_value.clear();
    m_isCached = false;
    m_isInitialised = false;
}

void TVVariable::clone_spec()
{
    if (m_isInitialised && !is_derived())
        return;
    m_value = get_spec();
    m_isCached = true;
    m_isInitialised = false;
}
