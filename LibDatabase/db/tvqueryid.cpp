#include "LibDatabase/db/tvqueryid.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"

namespace {
constexpr const char* C_ClassName = "TVQueryId";
const TVObjectPreReg s_preReg(C_ClassName, TVQueryId::create_tvobject);
} // namespace

TVQueryId::TVQueryId()
{
    register_tvobject();
}

TVQueryId::TVQueryId(const std::vector<TVId>& ids) : m_ids(ids)
{
    register_tvobject();
}

int TVQueryId::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryId>(out, source, C_ClassName);
}

void TVQueryId::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVQueryId::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                         int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "i", TVSrlValueVector<TVId>(m_ids)));
        return TVObject::serialise(in, out, "TVObject", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
