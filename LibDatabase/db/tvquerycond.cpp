#include "LibDatabase/db/tvquerycond.h"

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <cctype>
#include <ostream>

const char* const TVQueryCond::C_QualStart = "Start";
const char* const TVQueryCond::C_QualEnd = "End";
const char* const TVQueryCond::C_QualFormat = "Format";

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
    // Asked for every object a run meets: compared in place, not lowered.
    const auto same = [&name](const std::string& object) {
        return object.size() == name.size() &&
               std::equal(object.begin(), object.end(), name.begin(), [](char a, char b) {
                   return a == std::tolower(static_cast<unsigned char>(b));
               });
    };
    return std::any_of(m_objects.begin(), m_objects.end(), same);
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
