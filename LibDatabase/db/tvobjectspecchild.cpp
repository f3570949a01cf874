#include "LibDatabase/db/tvobjectspecchild.h"

#include "LibCore/log/tvdump.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <ostream>

namespace {
constexpr const char* C_ClassName = "TVObjectSpecChild";
const TVObjectPreReg s_preReg(C_ClassName, TVObjectSpecChild::create_tvobject);
} // namespace

TVObjectSpecChild::TVObjectSpecChild()
{
    register_tvobject();
}

TVObjectSpecChild::TVObjectSpecChild(const std::string& spec_name,
                                     const std::string& default_spec_name,
                                     const std::string& member_tag, bool mandatory, bool array,
                                     bool add_create, int line_no)
    : m_specName(spec_name), m_defaultSpecName(default_spec_name), m_memberTag(member_tag),
      m_mandatory(mandatory), m_array(array), m_addCreate(add_create), m_lineNo(line_no)
{
    register_tvobject();
}

int TVObjectSpecChild::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVObjectSpecChild>(out, source, C_ClassName);
}

void TVObjectSpecChild::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVObjectSpecChild::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                 int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "N", m_specName, true));
        TV_PASS_ON(serialise_string(in, out, prefix, "E", m_defaultSpecName, true));
        TV_PASS_ON(serialise_string(in, out, prefix, "M", m_memberTag, true));
        TV_PASS_ON(serialise_value(in, out, prefix, "D", TVSrlValue<bool>(m_mandatory, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "A", TVSrlValue<bool>(m_array, false)));
        TV_PASS_ON(serialise_value(in, out, prefix, "C", TVSrlValue<bool>(m_addCreate, false)));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVObjectSpecChild::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVObjectSpecChild " << m_memberTag << " = "
        << m_specName << "(" << m_specId << ")";
    if (!m_defaultSpecName.empty())
        out << " default " << m_defaultSpecName << "(" << m_defaultSpecId << ")";
    out << (m_array ? " array" : "") << (m_mandatory ? " mandatory" : "")
        << (m_addCreate ? " add-create" : "") << " line " << m_lineNo << '\n';
}
