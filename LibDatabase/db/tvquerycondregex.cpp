#include "LibDatabase/db/tvquerycondregex.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvtrail.h"

namespace {
const TVObjectPreReg s_preReg("TVQueryCondRegex", TVQueryCondRegex::create_tvobject);
} // namespace

TVQueryCondRegex::TVQueryCondRegex()
{
    register_tvobject();
}

TVQueryCondRegex::TVQueryCondRegex(const std::string& objects, const std::string& field,
                                   const std::string& regex, const std::string& qualifiers)
    : TVQueryCond(objects, field, qualifiers), m_text(regex)
{
    register_tvobject();
}

int TVQueryCondRegex::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryCondRegex>(out, source, "TVQueryCondRegex");
}

void TVQueryCondRegex::register_tvobject()
{
    register_objectname("TVQueryCondRegex", create_tvobject);
}

int TVQueryCondRegex::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version)
{
    try {
        TV_PASS_ON(serialise_string(in, out, prefix, "text", m_text, true));
        m_compileTried = false;
        return TVQueryCond::serialise(in, out, "TVQueryCond", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVQueryCondRegex::evaluate(const std::string& value, const TVDatabase&) const
{
    if (!m_compileTried) {
        m_compileTried = true;
        auto compiled = std::make_shared<QRegularExpression>(QString::fromStdString(m_text));
        if (compiled->isValid()) {
            compiled->optimize();
            m_compiled = std::move(compiled);
        } else {
            m_compiled.reset();
        }
    }
    return m_compiled != nullptr && m_compiled->match(QString::fromStdString(value)).hasMatch();
}

bool TVQueryCondRegex::match_regex(const std::string& regex, const std::string& value)
{
    // The user's text: a bad expression is a condition nothing meets.
    const QRegularExpression compiled(QString::fromStdString(regex));
    return compiled.isValid() && compiled.match(QString::fromStdString(value)).hasMatch();
}
