#include "LibDatabase/db/tvqueryprompt.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

namespace {
constexpr const char* C_ClassName = "TVQueryPrompt";
const TVObjectPreReg s_preReg(C_ClassName, TVQueryPrompt::create_tvobject);
} // namespace

TVQueryPrompt::TVQueryPrompt()
{
    register_tvobject();
}

TVQueryPrompt::TVQueryPrompt(const std::string& title, const std::string& value)
    : m_title(title), m_value(value)
{
    register_tvobject();
}

int TVQueryPrompt::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryPrompt>(out, source, C_ClassName);
}

void TVQueryPrompt::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVQueryPrompt::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                             int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "Title", m_title, false));
        TV_PASS_ON(serialise_string(in, out, prefix, "Value", m_value, true));
        return TVObject::serialise(in, out, "TVObject", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVQueryPrompt::pop_supplied()
{
    if (!m_hasSupplied)
        return;
    m_value = m_supplied;
    m_supplied.clear();
    m_hasSupplied = false;
}
