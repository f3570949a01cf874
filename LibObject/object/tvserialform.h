#ifndef TVSERIALFORM_H
#define TVSERIALFORM_H

// The reserved characters of the serial form, named once so that the
// reader (TVSerialisationEntry::read_entry, TVObject::read_class) and the
// writers can't drift apart. The grammar is in doc/serial-form.md.
//
// These characters are part of every stored file: none may change, and a
// retired one must not be given a new meaning.

#include <algorithm>
#include <string>
#include <string_view>

namespace TVSerialForm {

constexpr char C_ClassStart = '{';   // "{Name": an object begins
constexpr char C_ClassEnd = '}';     // "}...": the object ends
constexpr char C_FieldMark = '!';    // "!tag!value": one tagged field
constexpr char C_ClassTag = '@';     // "@tag": the next object is a member
constexpr char C_Escape = '\\';      // escapes, and protects a raw line
constexpr char C_PrefixSep = '+';    // joins a base class's prefix to a tag

// Whether a raw line needs a protecting backslash: its first character
// would otherwise be taken for one of the line kinds above.
inline bool is_reserved_first(char c)
{
    return c == C_ClassTag || c == C_Escape || c == C_ClassStart || c == C_FieldMark ||
           c == C_ClassEnd;
}

// prefix "+" tag, or the tag alone for an empty prefix.
inline std::string make_ctag(std::string_view prefix, std::string_view tag)
{
    std::string ctag;
    ctag.reserve(prefix.size() + 1 + tag.size());
    if (!prefix.empty()) {
        ctag.append(prefix.data(), prefix.size());
        ctag += C_PrefixSep;
    }
    ctag.append(tag.data(), tag.size());
    return ctag;
}

// What follows the last "+" of a tag; the whole tag if it has none.
inline std::string strip_prefix(const std::string& tag)
{
    const size_t pos = tag.rfind(C_PrefixSep);
    return pos == std::string::npos ? tag : tag.substr(pos + 1);
}

// Lines may come from systems that end them with CR LF, or carry stray
// CRs; neither is ever part of the text. Nor is NUL, which the writer's
// escape drops: kept on reading, it would make a tag match differently
// before and after the next save. Every reader drops all three.
inline void strip_line_ends(std::string& line)
{
    line.erase(std::remove_if(line.begin(), line.end(),
                              [](char c) { return c == '\r' || c == '\n' || c == '\0'; }),
               line.end());
}

// The next line of text, without its LF, as getline would take it from a
// stream of that text; false at the end.
inline bool next_line(std::string_view& text, std::string_view& line)
{
    if (text.empty())
        return false;
    const size_t eol = text.find('\n');
    if (eol == std::string_view::npos) {
        line = text;
        text = std::string_view();
    } else {
        line = text.substr(0, eol);
        text.remove_prefix(eol + 1);
    }
    return true;
}

// line as strip_line_ends leaves it: itself, or a copy in scratch when it
// holds a CR or NUL.
inline std::string_view clean_line(std::string_view line, std::string& scratch)
{
    if (line.find('\r') == std::string_view::npos && line.find('\0') == std::string_view::npos)
        return line;
    scratch.assign(line.data(), line.size());
    strip_line_ends(scratch);
    return scratch;
}

} // namespace TVSerialForm

#endif // TVSERIALFORM_H
