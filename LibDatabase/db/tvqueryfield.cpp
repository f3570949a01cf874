#include "LibDatabase/db/tvqueryfield.h"

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"

#include <cstdlib>
#include <ostream>

const char* const TVQueryField::C_RangeTypeTag = "RangeType";
const char* const TVQueryField::C_RangeDate = "Date";
const char* const TVQueryField::C_RangeNumber = "Number";
const char* const TVQueryField::C_ShowTag = "Show";
const char* const TVQueryField::C_BoundaryFormat = "%Y-%m-%d %H:%M:%S";
const char* const TVQueryField::C_TitleFormat = "%Y-%m-%d";

namespace {
constexpr const char* C_ClassName = "TVQueryField";
const TVObjectPreReg s_preReg(C_ClassName, TVQueryField::create_tvobject);

bool is_real(const TVDate& date)
{
    return !date.is_blank() && !date.is_invalid();
}

std::string number_text(double value)
{
    return tv_sprintf("%g", value);
}
} // namespace

TVQueryField::TVQueryField()
{
    register_tvobject();
}

TVQueryField::TVQueryField(const std::string& title, const std::string& objects,
                           const std::string& field, const std::string& qualifiers)
    : TVQueryCond(objects, field, qualifiers), m_title(title)
{
    extract_qualifiers(*this);
    register_tvobject();
}

TVQueryField::TVQueryField(const std::string& title, const std::string& objects,
                           const std::string& field, const std::string& qualifiers, int type,
                           const std::string& start, const std::string& end,
                           const std::string& division)
    : TVQueryCond(objects, field, qualifiers), m_title(title), m_fieldType(type),
      m_expStart(start), m_expEnd(end), m_expDivision(division)
{
    extract_qualifiers(*this);
    register_tvobject();
}

int TVQueryField::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVQueryField>(out, source, C_ClassName);
}

void TVQueryField::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVQueryField::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                            int version)
{
    try {
        std::vector<TVDate> range{m_dateRange.get_start(), m_dateRange.get_end()};
        TV_PASS_ON(serialise_string(in, out, prefix, "Title", m_title, false));
        TV_PASS_ON(serialise_value(in, out, prefix, "FieldType",
                                   TVSrlValue<int>(m_fieldType, C_TypePlain)));
        TV_PASS_ON(serialise_value(in, out, prefix, "DateRange", TVSrlValueVector<TVDate>(range)));
        TV_PASS_ON(serialise_string(in, out, prefix, "ExpStart", m_expStart, true));
        TV_PASS_ON(serialise_string(in, out, prefix, "ExpEnd", m_expEnd, true));
        TV_PASS_ON(serialise_string(in, out, prefix, "ExpDivision", m_expDivision, true));
        TV_PASS_ON(TVQueryCond::serialise(in, out, "TVQueryCond", version));
        if (in != nullptr) {
            m_dateRange = range.size() == 2 ? TVDateSlot(range[0], range[1], false) : TVDateSlot();
            m_format = get_qualifier(C_QualFormat);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVQueryField::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "TVQueryField " << m_title << " type " << m_fieldType;
    if (m_fieldType != C_TypePlain)
        out << " " << m_expStart << " to " << m_expEnd << " by " << m_expDivision;
    out << '\n';
    TVQueryCond::dump(out, indent + 1);
}

bool TVQueryField::evaluate(const std::string&, const TVDatabase&) const
{
    return true;
}

bool TVQueryField::is_date_range() const
{
    return get_qualifier(C_RangeTypeTag) == C_RangeDate;
}

void TVQueryField::extract_qualifiers(const TVQueryCond& cond)
{
    m_format = cond.get_qualifier(C_QualFormat);
    const std::string start = cond.get_qualifier(C_QualStart);
    const std::string end = cond.get_qualifier(C_QualEnd);
    const TVDate a = start.empty() ? TVDate() : TVDateUtils::read_date(start, nullptr, nullptr);
    const TVDate b = end.empty() ? TVDate() : TVDateUtils::read_date(end, nullptr, nullptr);
    if (is_real(a) && is_real(b))
        m_dateRange = TVDateSlot(a, b, true);
    else
        m_dateRange.set_blank();
}

void TVQueryField::expand_dates(std::vector<TVDateSlot>& slots) const
{
    slots.clear();
    const TVDate end = TVDateUtils::read_date(m_expEnd, nullptr, nullptr);
    TVDate current = TVDateUtils::read_date(m_expStart, nullptr, nullptr);
    if (!is_real(current) || !is_real(end))
        return;
    while (current < end && static_cast<int>(slots.size()) < C_MaxColumns) {
        // The boundary is read back from text so that "1 month" means a
        // calendar month from wherever the step begins.
        const TVDate next = TVDateUtils::read_date(
            current.to_string(m_format.empty() ? C_BoundaryFormat : m_format) + " +" +
                m_expDivision,
            nullptr, nullptr);
        if (!is_real(next) || !(next > current))
            break;
        const TVDate last = next - TVDuration(1);
        slots.emplace_back(current, last < end ? last : end, false);
        current = next;
    }
}

std::vector<TVQueryField> TVQueryField::expand() const
{
    std::vector<TVQueryField> parts;
    if (!needs_expand())
        return parts;
    if (is_date_range()) {
        std::vector<TVDateSlot> slots;
        expand_dates(slots);
        for (const TVDateSlot& slot : slots) {
            TVQueryField part(*this);
            part.m_fieldType = C_TypePart;
            part.m_dateRange = slot;
            part.m_title = slot.get_start().to_string(m_format.empty() ? C_TitleFormat : m_format);
            parts.push_back(part);
        }
        return parts;
    }
    const double start = std::atof(m_expStart.c_str());
    const double end = std::atof(m_expEnd.c_str());
    const double step = std::atof(m_expDivision.c_str());
    // A step that doesn't move makes the one column of the whole range.
    const double stride = step > 0 ? step : end - start;
    double from = start;
    do {
        const double to = step > 0 && from + stride < end ? from + stride : end;
        TVQueryField part(*this);
        part.m_fieldType = C_TypePart;
        part.m_expStart = number_text(from);
        part.m_expEnd = number_text(to);
        part.m_title = part.m_expStart + "-" + part.m_expEnd;
        from = to;
        part.m_closedEnd = !(step > 0 && from < end);
        parts.push_back(part);
    } while (step > 0 && from < end && static_cast<int>(parts.size()) < C_MaxColumns);
    return parts;
}

bool TVQueryField::in_part(const std::string& value) const
{
    if (m_fieldType != C_TypePart)
        return true;
    if (is_date_range()) {
        const TVDate date = TVDateUtils::read_date(value, nullptr, nullptr);
        return is_real(date) && !(date < m_dateRange.get_start()) &&
               !(date > m_dateRange.get_end());
    }
    if (value.empty())
        return false;
    // Half open, so that a value on a boundary lands in one column only;
    // the last column takes its end as well.
    const double number = std::atof(value.c_str());
    const double from = std::atof(m_expStart.c_str());
    const double to = std::atof(m_expEnd.c_str());
    return number >= from && (number < to || (m_closedEnd && number <= to));
}

std::string TVQueryField::shown_field() const
{
    const std::string show = get_qualifier(C_ShowTag);
    return show.empty() ? get_field() : show;
}
