#include "LibDatabase/db/tvquerycondnum.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <cmath>
#include <cstdlib>

namespace {
const TVObjectPreReg s_preReg("TVQueryCondNum", TVQueryCondNum::create_tvobject);
} // namespace

TVQueryCondNum::TVQueryCondNum()
{
    register_tvobject();
}

TVQueryCondNum::TVQueryCondNum(const std::string& objects, const std::string& field,
                               const std::string& qualifiers)
    : TVQueryCond(objects, field, qualifiers)
{
    register_tvobject();
}

int TVQueryCondNum::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryCondNum>(out, source, "TVQueryCondNum");
}

void TVQueryCondNum::register_tvobject()
{
    register_objectname("TVQueryCondNum", create_tvobject);
}

int TVQueryCondNum::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                              int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "conditionType",
                                   TVSrlValue<int>(m_conditionType, 0)));
        TV_PASS_ON(serialise_value(in, out, prefix, "minimum", TVSrlValue<double>(m_minimum, 0)));
        TV_PASS_ON(serialise_value(in, out, prefix, "maximum", TVSrlValue<double>(m_maximum, 0)));
        TV_PASS_ON(serialise_value(in, out, prefix, "epsilon", TVSrlValue<double>(m_epsilon, 0)));
        return TVQueryCond::serialise(in, out, "TVQueryCond", version);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVQueryCondNum::evaluate(const std::string& value, const TVDatabase&) const
{
    const double number = std::atof(value.c_str());
    const bool aboveMin = number >= m_minimum - m_epsilon;
    const bool belowMax = number <= m_maximum + m_epsilon;
    switch (m_conditionType) {
    case E_Minimum:
        return aboveMin;
    case E_Maximum:
        return belowMax;
    case E_Range:
        return aboveMin && belowMax;
    case E_Equal:
        return std::fabs(number - m_minimum) <= m_epsilon;
    case E_NotEqual:
        // Strictly: "not below" would let the value itself pass with the
        // parser's epsilon of 0, and NotEqual=1 would exclude nothing.
        return std::fabs(number - m_minimum) > m_epsilon;
    default:
        return true;
    }
}

void TVQueryCondNum::set_minimum(double minimum)
{
    m_conditionType = E_Minimum;
    m_minimum = minimum;
}

void TVQueryCondNum::set_maximum(double maximum)
{
    m_conditionType = E_Maximum;
    m_maximum = maximum;
}

void TVQueryCondNum::set_range(double minimum, double maximum)
{
    m_conditionType = E_Range;
    m_minimum = minimum;
    m_maximum = maximum;
}

void TVQueryCondNum::set_equal(double value)
{
    m_conditionType = E_Equal;
    m_minimum = value;
}

void TVQueryCondNum::set_notequal(double value)
{
    m_conditionType = E_NotEqual;
    m_minimum = value;
}
