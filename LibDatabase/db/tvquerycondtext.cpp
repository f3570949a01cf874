#include "LibDatabase/db/tvquerycondtext.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

namespace {
const TVObjectPreReg s_preReg("TVQueryCondText", TVQueryCondText::create_tvobject);
} // namespace

TVQueryCondText::TVQueryCondText()
{
    register_tvobject();
}

TVQueryCondText::TVQueryCondText(const std::string& objects, const std::string& field,
                                 const std::string& text, const std::string& qualifiers)
    : TVQueryCond(objects, field, qualifiers), m_text(text)
{
    register_tvobject();
}

int TVQueryCondText::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryCondText>(out, source, "TVQueryCondText");
}

void TVQueryCondText::register_tvobject()
{
    register_objectname("TVQueryCondText", create_tvobject);
}

int TVQueryCondText::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                               int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "text", m_text, true));
        return TVQueryCond::serialise(in, out, "TVQueryCond", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVQueryCondText::evaluate(const std::string& value, const TVDatabase&) const
{
    return value == m_text;
}
