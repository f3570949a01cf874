#include "LibObject/object/tests/tvtestbase.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

namespace {
constexpr const char* C_ClassName = "TVTestBase";
const TVObjectPreReg s_preReg(C_ClassName, TVTestBase::create_tvobject);
} // namespace

TVTestBase::TVTestBase()
{
    register_tvobject();
}

int TVTestBase::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVTestBase>(out, source, C_ClassName);
}

void TVTestBase::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVTestBase::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                          int version)
{
    try {
        int result = serialise_value(in, out, prefix, "K", TVSrlValue<int>(m_key, 0), true);
        if (!istvwarn(result))
            result = serialise_string(in, out, prefix, "N", m_name, true);
        if (!istvwarn(result))
            result = TVObject::serialise(in, out, prefix, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
