#include "LibDatabase/db/tvquerycond.h"

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <cmath>
#include <cstdlib>
#include <ostream>
#include <regex>

const char* const TVQueryCond::C_QualStart = "Start";
const char* const TVQueryCond::C_QualEnd = "End";
const char* const TVQueryCond::C_QualFormat = "Format";
const char* const TVQueryCondId::C_QueryID = "ID";
const char* const TVQueryCondSpec::C_QuerySpec = "ObjectSpec";
const char* const TVQueryCondSpec::C_QualExact = "Exact";

namespace {
const TVObjectPreReg s_numReg("TVQueryCondNum", TVQueryCondNum::create_tvobject);
const TVObjectPreReg s_dateReg("TVQueryCondDate", TVQueryCondDate::create_tvobject);
const TVObjectPreReg s_idReg("TVQueryCondId", TVQueryCondId::create_tvobject);
const TVObjectPreReg s_regexReg("TVQueryCondRegex", TVQueryCondRegex::create_tvobject);
const TVObjectPreReg s_specReg("TVQueryCondSpec", TVQueryCondSpec::create_tvobject);
const TVObjectPreReg s_textReg("TVQueryCondText", TVQueryCondText::create_tvobject);

bool is_real(const TVDate& date)
{
    return !date.is_blank() && !date.is_invalid();
}
} // namespace

// ---- TVQueryCond ------------------------------------------------------------------

TVQueryCond::TVQueryCond(const std::string& objects, const std::string& field,
                         const std::string& qualifiers)
    : m_field(field)
{
    for (const std::string& object : tv_tokenise(objects, '+'))
        m_objects.push_back(tv_tolower(object));
    for (const std::string& part : tv_tokenise(qualifiers, ','))
        add_qualifier(part);
}

int TVQueryCond::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                           int version)
{
    try {
        TV_PASS_ON(serialise_string_vector(in, out, prefix, "object", m_objects));
        TV_PASS_ON(serialise_string(in, out, prefix, "field", m_field, true));
        TV_PASS_ON(serialise_string_vector(in, out, prefix, "qualifier", m_qualifierList));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        if (in != nullptr)
            rebuild_qualifiers();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVQueryCond::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << get_class_name() << " from";
    for (const std::string& object : m_objects)
        out << ' ' << object;
    out << " value " << m_field;
    for (const std::string& qualifier : m_qualifierList)
        out << ' ' << qualifier;
    out << '\n';
}

bool TVQueryCond::names_object(const std::string& name) const
{
    const std::string lower = tv_tolower(name);
    for (const std::string& object : m_objects)
        if (object == lower)
            return true;
    return false;
}

void TVQueryCond::add_qualifier(const std::string& text)
{
    std::string tag;
    std::string value;
    tv_tag_value(text, C_QualifierSep, tag, value);
    if (tag.empty())
        return;
    m_qualifierList.push_back(tag + C_QualifierSep + value);
    m_qualifiers[tag] = value;
}

std::string TVQueryCond::get_qualifier(const std::string& tag) const
{
    const auto it = m_qualifiers.find(tag);
    return it == m_qualifiers.end() ? std::string() : it->second;
}

void TVQueryCond::rebuild_qualifiers()
{
    m_qualifiers.clear();
    for (const std::string& text : m_qualifierList) {
        std::string tag;
        std::string value;
        tv_tag_value(text, C_QualifierSep, tag, value);
        m_qualifiers[tag] = value;
    }
}

// ---- TVQueryCondNum ---------------------------------------------------------------

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
        return std::fabs(number - m_minimum) >= m_epsilon;
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

// ---- TVQueryCondDate --------------------------------------------------------------

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

// ---- TVQueryCondId ----------------------------------------------------------------

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

// ---- TVQueryCondRegex -------------------------------------------------------------

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
        try {
            m_compiled = std::make_shared<const std::regex>(m_text);
        } catch (const std::regex_error&) {
            m_compiled.reset();
        }
    }
    return m_compiled != nullptr && std::regex_search(value, *m_compiled);
}

bool TVQueryCondRegex::match_regex(const std::string& regex, const std::string& value)
{
    try {
        return std::regex_search(value, std::regex(regex));
    } catch (const std::regex_error&) {
        // The user's text: a bad expression is a condition nothing meets.
        return false;
    }
}

// ---- TVQueryCondSpec --------------------------------------------------------------

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

// ---- TVQueryCondText --------------------------------------------------------------

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
