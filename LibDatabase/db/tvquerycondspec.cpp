#include "LibDatabase/db/tvquerycondspec.h"

#include "LibDatabase/db/tvdatabase.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

const char* const TVQueryCondSpec::C_QuerySpec = "ObjectSpec";
const char* const TVQueryCondSpec::C_QualExact = "Exact";

namespace {
const TVObjectPreReg s_preReg("TVQueryCondSpec", TVQueryCondSpec::create_tvobject);
} // namespace

TVQueryCondSpec::TVQueryCondSpec()
{
    register_tvobject();
}

TVQueryCondSpec::TVQueryCondSpec(const std::string& objects, const std::string& spec,
                                 const std::string& qualifiers)
    : TVQueryCond(objects, C_QuerySpec, qualifiers), m_spec(spec)
{
    register_tvobject();
}

int TVQueryCondSpec::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryCondSpec>(out, source, "TVQueryCondSpec");
}

void TVQueryCondSpec::register_tvobject()
{
    register_objectname("TVQueryCondSpec", create_tvobject);
}

int TVQueryCondSpec::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                               int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "spec", m_spec, true));
        return TVQueryCond::serialise(in, out, "TVQueryCond", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVQueryCondSpec::evaluate(const std::string& value, const TVDatabase& db) const
{
    if (!get_qualifier(C_QualExact).empty())
        return value == m_spec;
    const int base = db.get_objectspec_id_for_name(m_spec);
    const int spec = db.get_objectspec_id_for_name(value);
    return base >= 0 && spec >= 0 && db.is_spec_derived_from(base, spec);
}
