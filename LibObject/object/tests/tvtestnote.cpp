#include "LibObject/object/tests/tvtestnote.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

namespace {
constexpr const char* C_ClassName = "TVTestNote";
const TVObjectPreReg s_preReg(C_ClassName, TVTestNote::create_tvobject);
} // namespace

TVTestNote::TVTestNote()
{
    register_tvobject();
}

int TVTestNote::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVTestNote>(out, source, C_ClassName);
}

void TVTestNote::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVTestNote::serialise(std::istream* in, std::ostream* out, const std::string& prefix, int)
{
    try {
        int result = serialise_value(in, out, prefix, "w", TVSrlValue<int>(m_weight));
        if (!istvwarn(result))
            result = serialise_string(in, out, prefix, "x", m_text, false);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
