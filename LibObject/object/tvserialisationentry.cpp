#include "LibObject/object/tvserialisationentry.h"

#include "LibCore/error/tverror.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibObject/object/tvobject.h"
#include "LibObject/object/tvserialform.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <istream>
#include <ostream>

using namespace TVSerialForm;

namespace {

// Called for every line written: the location is only made on a failure.
int check_written(const std::ostream& out, const char* file, int line)
{
    if (out)
        return TVErrC_ok;
    return tvwarning(TVErrC_FileWrite, tvlocation(file, line), "Write operation failed.");
}

} // namespace

TVSerialisationEntry::TVSerialisationEntry() : m_entryType(E_RawData)
{
}

TVSerialisationEntry::TVSerialisationEntry(E_ReadMode type, const std::string& tag,
                                           const std::string& value)
    : m_entryType(type), m_tag(tag), m_value(value)
{
}

void TVSerialisationEntry::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    out << pad << "TVSerialisationEntry\n"
        << pad << "    m_entryType = " << static_cast<int>(m_entryType) << '\n'
        << pad << "    m_tag = " << m_tag << '\n'
        << pad << "    m_value = " << tv_stream_out(m_value) << '\n';
}

bool TVSerialisationEntry::operator==(const TVSerialisationEntry& other) const
{
    return m_entryType == other.m_entryType && m_tag == other.m_tag && m_value == other.m_value;
}

template <class Next>
int TVSerialisationEntry::read_lines(Next next)
{
    std::string_view line;
    if (!next(line))
        return TVErrC_okEndOfRecord;

    if (line.size() >= 2 && line[0] == C_FieldMark) {
        // Escapes can't hide a "!", so the tag ends at the first one.
        m_entryType = E_TaggedField;
        const size_t end = line.find(C_FieldMark, 1);
        m_tag.clear();
        m_value.clear();
        if (end == std::string_view::npos) {
            tv_stream_in_append(line.substr(1), m_tag);
        } else if (line.find(C_Escape) == std::string_view::npos ||
                   line.find(C_Escape) > end) {
            tv_stream_in_append(line.substr(1, end - 1), m_tag);
            tv_stream_in_append(line.substr(end + 1), m_value);
        } else {
            // An escape before the first "!" changes where it falls in the
            // unescaped text: the whole line is unescaped first.
            std::string text;
            tv_stream_in_append(line, text);
            const size_t mark = text.find(C_FieldMark, 1);
            if (mark == std::string::npos) {
                m_tag.assign(text, 1, std::string::npos);
            } else {
                m_tag.assign(text, 1, mark - 1);
                m_value.assign(text, mark + 1, std::string::npos);
            }
        }
        return TVErrC_ok;
    }

    if (line.size() >= 2 && line[0] == C_ClassTag) {
        m_entryType = E_TaggedClass;
        m_tag.assign(line.data() + 1, line.size() - 1);
        m_value.clear();
        // The member's object runs until its braces balance; nested objects
        // and their own tagged classes are kept as they stand.
        int depth = 0;
        bool opened = false;
        while (next(line)) {
            m_value.append(line.data(), line.size());
            m_value += '\n';
            if (!line.empty() && line[0] == C_ClassStart) {
                ++depth;
                opened = true;
            } else if (!line.empty() && line[0] == C_ClassEnd) {
                --depth;
            }
            if (opened && depth == 0)
                return TVErrC_ok;
        }
        return tvwarning(TVErrC_FileTooShort, TVLOCATION,
                         "Could not find the end of the class marker.");
    }

    if (!line.empty() && line[0] == C_ClassEnd)
        return TVErrC_okEndOfRecord;

    m_entryType = E_RawData;
    m_tag.clear();
    m_value.clear();
    if (!line.empty() && line[0] == C_Escape)
        tv_stream_in_append(line.substr(1), m_value);
    else
        tv_stream_in_append(line, m_value);
    return TVErrC_ok;
}

int TVSerialisationEntry::read_entry(std::istream& in)
{
    std::string held;
    return read_lines([&in, &held](std::string_view& line) {
        if (!std::getline(in, held))
            return false;
        strip_line_ends(held);
        line = held;
        return true;
    });
}

int TVSerialisationEntry::read_entry(std::string_view& in)
{
    std::string scratch;
    return read_lines([&in, &scratch](std::string_view& line) {
        if (!next_line(in, line))
            return false;
        line = clean_line(line, scratch);
        return true;
    });
}

int TVSerialisationEntry::read_entry(std::string_view& in, std::string_view& lines)
{
    lines = std::string_view();
    std::string_view rest = in;
    std::string_view line;
    std::string scratch;
    if (!next_line(rest, line))
        return read_entry(in);
    const std::string_view first = clean_line(line, scratch);
    if (first.size() < 2 || first[0] != C_ClassTag)
        return read_entry(in);
    // The same walk as read_lines, over the lines as they stand.
    const char* const begin = rest.data();
    int depth = 0;
    bool opened = false;
    while (next_line(rest, line)) {
        const bool ended = !rest.empty() || line.data() + line.size() < in.data() + in.size();
        if (!ended || line.find('\r') != std::string_view::npos ||
            line.find('\0') != std::string_view::npos)
            return read_entry(in);
        if (!line.empty() && line[0] == C_ClassStart) {
            ++depth;
            opened = true;
        } else if (!line.empty() && line[0] == C_ClassEnd) {
            --depth;
        }
        if (opened && depth == 0) {
            m_entryType = E_TaggedClass;
            m_tag.assign(first.data() + 1, first.size() - 1);
            m_value.clear();
            lines = std::string_view(begin, static_cast<size_t>(rest.data() - begin));
            in = rest;
            return TVErrC_ok;
        }
    }
    return read_entry(in);
}

int TVSerialisationEntry::write_entry(std::ostream& out) const
{
    try {
        int result = TVErrC_ok;
        switch (m_entryType) {
        case E_TaggedField:
            result = write_tagged_field(m_tag, m_value, out);
            break;
        case E_RawData:
            result = write_raw_data(m_value, out);
            break;
        case E_TaggedClass:
            out << m_value;
            out.flush();
            return check_written(out, __FILE__, __LINE__);
        default:
            return tverror(TVErrC_CaseMissing, TVLOCATION, "Unknown entry type %d",
                           static_cast<int>(m_entryType));
        }
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVSerialisationEntry::write_tagged_field(const std::string& tag, const std::string& value,
                                             std::ostream& out)
{
    // Escaped as one string; the escape goes byte by byte, so in parts.
    thread_local std::string line; // one line at a time: nothing nests in here
    line.clear();
    line += C_FieldMark;
    tv_stream_out_append(tag, line);
    line += C_FieldMark;
    tv_stream_out_append(value, line);
    line += '\n';
    out.write(line.data(), static_cast<std::streamsize>(line.size()));
    return check_written(out, __FILE__, __LINE__);
}

int TVSerialisationEntry::write_tagged_field(const std::string& tag, std::ostream& out,
                                             const char* format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    try {
        const int result = write_tagged_field(tag, std::string(buffer), out);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVSerialisationEntry::write_raw_data(const std::string& value, std::ostream& out)
{
    const std::string text = tv_stream_out(value);
    if (!text.empty() && is_reserved_first(text[0]))
        out << C_Escape;
    out << text << '\n';
    return check_written(out, __FILE__, __LINE__);
}

int TVSerialisationEntry::write_tagged_class(const std::string& tag, const TVObject& object,
                                             std::ostream& out, int version)
{
    try {
        out << C_ClassTag << tv_stream_out(tag) << '\n';
        int result = check_written(out, __FILE__, __LINE__);
        if (istvwarn(result))
            return result;
        result = object.write_class(out, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
