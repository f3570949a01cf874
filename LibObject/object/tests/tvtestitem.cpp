#include "LibObject/object/tests/tvtestitem.h"

#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlobjectarray.h"
#include "LibObject/object/tvsrlstringmaparray.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvsrlvaluearray.h"
#include "LibObject/object/tvsrlvaluevector.h"
#include "LibObject/object/tvtrail.h"

namespace {
constexpr const char* C_ClassName = "TVTestItem";
const TVObjectPreReg s_preReg(C_ClassName, TVTestItem::create_tvobject);

template <class T>
void clone_all(const TVPtrArray<T>& from, TVPtrArray<T>& to)
{
    to.clear();
    for (const T* object : from)
        to.add(dynamic_cast<T*>(object->clone_class()));
}
} // namespace

TVTestItem::TVTestItem() : m_when(TVDate::C_Blank)
{
    register_tvobject();
}

TVTestItem::TVTestItem(const TVTestItem& other) : TVTestBase(other)
{
    copy_members(other);
    register_tvobject();
}

TVTestItem& TVTestItem::operator=(const TVTestItem& other)
{
    if (this != &other) {
        TVTestBase::operator=(other);
        copy_members(other);
    }
    return *this;
}

void TVTestItem::copy_members(const TVTestItem& other)
{
    m_flag = other.m_flag;
    m_letter = other.m_letter;
    m_count = other.m_count;
    m_total = other.m_total;
    m_ratio = other.m_ratio;
    m_scale = other.m_scale;
    m_ref = other.m_ref;
    m_when = other.m_when;
    m_span = other.m_span;
    m_valueText = other.m_valueText;
    m_text = other.m_text;
    m_numbers = other.m_numbers;
    m_refs = other.m_refs;
    m_spans = other.m_spans;
    m_words = other.m_words;
    m_phrases = other.m_phrases;
    m_settings = other.m_settings;
    m_labels = other.m_labels;
    clone_all(other.m_kids, m_kids);
    clone_all(other.m_notes, m_notes);
    m_lines = other.m_lines;
}

int TVTestItem::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVTestItem>(out, source, C_ClassName);
}

void TVTestItem::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVTestItem::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                          int version)
{
    try {
        int result = serialise_value(in, out, prefix, "b", TVSrlValue<bool>(m_flag, false));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "c", TVSrlValue<char>(m_letter, C_DefaultChar));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "i", TVSrlValue<int>(m_count, 0));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "l", TVSrlValue<long>(m_total, 0L));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "d", TVSrlValue<double>(m_ratio, 0.0, 2));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "g", TVSrlValue<double>(m_scale, 0.0));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "id", TVSrlValue<TVId>(m_ref, TVId::C_Empty));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "dt", TVSrlValue<TVDate>(m_when, TVDate::C_Blank));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "du", TVSrlValue<TVDuration>(m_span, TVDuration()));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "sv",
                                     TVSrlValue<std::string>(m_valueText, std::string()));
        if (!istvwarn(result))
            result = serialise_string(in, out, prefix, "t", m_text, true);
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "iv", TVSrlValueVector<int>(m_numbers));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "idv", TVSrlValueVector<TVId>(m_refs));
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "dua", TVSrlValueArray<TVDuration>(m_spans));
        if (!istvwarn(result))
            result = serialise_string_array(in, out, prefix, "sa", m_words);
        if (!istvwarn(result))
            result = serialise_string_vector(in, out, prefix, "ss", m_phrases);
        if (!istvwarn(result))
            result = serialise_string_maparray(in, out, prefix, "m", m_settings, true);
        if (!istvwarn(result))
            result = serialise_value(in, out, prefix, "mb", TVSrlStringMapArray(m_labels, false));
        if (!istvwarn(result))
            result = serialise_object(in, out, prefix, "kid", TVSrlObjectArray<TVTestBase>(m_kids, version));
        if (!istvwarn(result))
            result = serialise_object(in, out, prefix, "note",
                                      TVSrlObjectArray<TVTestNote>(m_notes, version));
        if (!istvwarn(result))
            result = serialise_data(in, out, m_lines);
        if (!istvwarn(result))
            result = TVTestBase::serialise(in, out, "TVTestBase", version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
