#include "LibDatabase/db/tvquerycondid.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <cstdlib>

const char* const TVQueryCondId::C_QueryID = "ID";

namespace {
const TVObjectPreReg s_preReg("TVQueryCondId", TVQueryCondId::create_tvobject);
} // namespace

TVQueryCondId::TVQueryCondId()
{
    register_tvobject();
}

TVQueryCondId::TVQueryCondId(const std::string& objects, int id, const std::string& qualifiers)
    : TVQueryCond(objects, C_QueryID, qualifiers), m_id(id)
{
    register_tvobject();
}

int TVQueryCondId::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryCondId>(out, source, "TVQueryCondId");
}

void TVQueryCondId::register_tvobject()
{
    register_objectname("TVQueryCondId", create_tvobject);
}

int TVQueryCondId::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                             int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "id", TVSrlValue<int>(m_id, -1)));
        return TVQueryCond::serialise(in, out, "TVQueryCond", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVQueryCondId::evaluate(const std::string& value, const TVDatabase&) const
{
    return m_id == -1 || std::atoi(value.c_str()) == m_id;
}
