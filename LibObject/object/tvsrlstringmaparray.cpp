#include "LibObject/object/tvsrlstringmaparray.h"

#include "LibCore/error/tverror.h"
#include "LibCore/textstr/tvtextstr.h"

#include <algorithm>
#include <ostream>

TVSrlStringMapArray::TVSrlStringMapArray(TVPtrArrayIndex<std::string>& values, bool replace)
    : m_values(&values), m_replace(replace)
{
}

void TVSrlStringMapArray::dump(std::ostream& out, int indent) const
{
    TVSrl::dump(out, indent);
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    for (int i = 0; i < m_values->size(); ++i)
        out << pad << "    " << tv_stream_out(pair_text(*m_values, i)) << '\n';
}

int TVSrlStringMapArray::start_read()
{
    m_values->clear();
    return TVErrC_ok;
}

int TVSrlStringMapArray::read(std::istream& in)
{
    std::string line;
    tv_srl_extract(in, line);
    insert_pair(*m_values, line, m_replace);
    return TVErrC_ok;
}

int TVSrlStringMapArray::write(std::ostream& out, int index) const
{
    if (index < 0 || index >= m_values->size())
        return tverror(TVErrC_ArrayBounds, TVLOCATION, "Array index %d out of bounds %d.", index,
                       m_values->size());
    out << pair_text(*m_values, index);
    return TVErrC_ok;
}

void TVSrlStringMapArray::insert_pair(TVPtrArrayIndex<std::string>& values,
                                      const std::string& line, bool replace)
{
    std::string key;
    std::string value;
    tv_tag_value(line, '=', key, value);
    if (replace)
        values.erase(key);
    auto* stored = new std::string(value);
    if (!values.add(key, stored))
        delete stored; // the key's first pair stays
}

std::string TVSrlStringMapArray::pair_text(const TVPtrArrayIndex<std::string>& values, int index)
{
    const std::string* value = values[index];
    // The map is keyed by text; find this value's key by its pointer.
    for (const auto& entry : values.index())
        if (entry.second == value)
            return entry.first + "=" + (value != nullptr ? *value : std::string());
    return std::string();
}
