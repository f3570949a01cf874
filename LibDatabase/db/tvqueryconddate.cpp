#include "LibDatabase/db/tvqueryconddate.h"

#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

namespace {
const TVObjectPreReg s_preReg("TVQueryCondDate", TVQueryCondDate::create_tvobject);

bool is_real(const TVDate& date)
{
    return !date.is_blank() && !date.is_invalid();
}
} // namespace

TVQueryCondDate::TVQueryCondDate()
{
    register_tvobject();
}

TVQueryCondDate::TVQueryCondDate(const std::string& objects, const std::string& field,
                                 const std::string& date, bool min, const std::string& qualifiers)
    : TVQueryCond(objects, field, qualifiers),
      m_date(TVDateUtils::read_date(date, nullptr, nullptr)), m_min(min)
{
    register_tvobject();
}

int TVQueryCondDate::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryCondDate>(out, source, "TVQueryCondDate");
}

void TVQueryCondDate::register_tvobject()
{
    register_objectname("TVQueryCondDate", create_tvobject);
}

int TVQueryCondDate::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                               int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "date", TVSrlValue<TVDate>(m_date)));
        TV_PASS_ON(serialise_value(in, out, prefix, "min", TVSrlValue<bool>(m_min, true)));
        return TVQueryCond::serialise(in, out, "TVQueryCond", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVQueryCondDate::evaluate(const std::string& value, const TVDatabase&) const
{
    const TVDate date = TVDateUtils::read_date(value, nullptr, nullptr);
    if (!is_real(date) || !is_real(m_date))
        return false;
    return m_min ? !(date < m_date) : !(date > m_date);
}
