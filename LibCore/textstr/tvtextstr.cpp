#include "LibCore/textstr/tvtextstr.h"

#include "LibCore/error/tverror.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <istream>

std::string tv_vsprintf(const char* format, va_list args)
{
    if (format == nullptr)
        return std::string();
    char buffer[256];
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(buffer, sizeof buffer, format, copy);
    va_end(copy);
    if (n < 0)
        return std::string();
    if (static_cast<size_t>(n) < sizeof buffer)
        return std::string(buffer, static_cast<size_t>(n));
    std::string out(static_cast<size_t>(n) + 1, '\0');
    std::vsnprintf(&out[0], out.size(), format, args);
    out.resize(static_cast<size_t>(n));
    return out;
}

std::string tv_sprintf(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::string out = tv_vsprintf(format, args);
    va_end(args);
    return out;
}

namespace {

// Shared search core: both string forms and both C forms end up here once
// their arguments are checked. len is the length of source.
int find_char(const char* source, int len, char ch, int start)
{
    const void* hit = std::memchr(source + start, ch, static_cast<size_t>(len - start));
    return hit ? static_cast<int>(static_cast<const char*>(hit) - source) : len;
}

int find_text(const char* source, int len, const char* match, int mlen, int start)
{
    if (mlen == 0)
        return start;
    const char* end = source + len;
    const char* hit = std::search(source + start, end, match, match + mlen);
    return hit == end ? len : static_cast<int>(hit - source);
}

bool start_ok(int start, size_t len)
{
    return start >= 0 && static_cast<size_t>(start) <= len;
}

int move_bounds_error(const char* file, int line)
{
    tverror(TVErrC_StringBounds, tvlocation(file, line), "Position out of bounds.");
    return -1;
}

int read_bounds_error(const char* file, int line)
{
    tverror(TVErrC_StringBounds, tvlocation(file, line), "String position out of bounds.");
    return -1;
}

} // namespace

// ---- Searching and copying ------------------------------------------------

int tv_move_to(const char* source, char ch, int start)
{
    if (source == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (source != nullptr)");
        return -1;
    }
    size_t len = std::strlen(source);
    if (!start_ok(start, len))
        return move_bounds_error(__FILE__, __LINE__);
    return find_char(source, static_cast<int>(len), ch, start);
}

int tv_move_to(const char* source, const char* match, int start)
{
    if (source == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (source != nullptr)");
        return -1;
    }
    if (match == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (match != nullptr)");
        return -1;
    }
    size_t len = std::strlen(source);
    if (!start_ok(start, len))
        return move_bounds_error(__FILE__, __LINE__);
    return find_text(source, static_cast<int>(len), match, static_cast<int>(std::strlen(match)),
                     start);
}

int tv_move_to(const std::string& source, char ch, int start)
{
    if (!start_ok(start, source.size()))
        return move_bounds_error(__FILE__, __LINE__);
    return find_char(source.data(), static_cast<int>(source.size()), ch, start);
}

int tv_move_to(const std::string& source, const std::string& match, int start)
{
    if (!start_ok(start, source.size()))
        return move_bounds_error(__FILE__, __LINE__);
    return find_text(source.data(), static_cast<int>(source.size()), match.data(),
                     static_cast<int>(match.size()), start);
}

namespace {

// Checks common to the C forms of tv_read_to; gives the source length or -1.
int check_read_args(const char* source, const char* target, int start)
{
    if (source == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (source != nullptr)");
        return -1;
    }
    if (target == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (target != nullptr)");
        return -1;
    }
    size_t len = std::strlen(source);
    if (!start_ok(start, len))
        return read_bounds_error(__FILE__, __LINE__);
    return static_cast<int>(len);
}

} // namespace

int tv_read_to(const char* source, char* target, char ch, int start)
{
    int len = check_read_args(source, target, start);
    if (len < 0)
        return -1;
    int pos = find_char(source, len, ch, start);
    std::memcpy(target, source + start, static_cast<size_t>(pos - start));
    target[pos - start] = '\0';
    return pos;
}

int tv_read_to(const char* source, char* target, const char* match, int start)
{
    int len = check_read_args(source, target, start);
    if (len < 0)
        return -1;
    if (match == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (match != nullptr)");
        return -1;
    }
    int pos = find_text(source, len, match, static_cast<int>(std::strlen(match)), start);
    std::memcpy(target, source + start, static_cast<size_t>(pos - start));
    target[pos - start] = '\0';
    return pos;
}

int tv_read_to(const std::string& source, std::string& target, char ch, int start)
{
    if (!start_ok(start, source.size()))
        return read_bounds_error(__FILE__, __LINE__);
    int pos = find_char(source.data(), static_cast<int>(source.size()), ch, start);
    target.assign(source, static_cast<size_t>(start), static_cast<size_t>(pos - start));
    return pos;
}

int tv_read_to(const std::string& source, std::string& target, const std::string& match,
               int start)
{
    if (!start_ok(start, source.size()))
        return read_bounds_error(__FILE__, __LINE__);
    int pos = find_text(source.data(), static_cast<int>(source.size()), match.data(),
                        static_cast<int>(match.size()), start);
    target.assign(source, static_cast<size_t>(start), static_cast<size_t>(pos - start));
    return pos;
}

int tv_skip_space(const char* text, int start)
{
    if (text == nullptr) {
        tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                "Assertion Failed: (strng != nullptr )");
        return -1;
    }
    size_t len = std::strlen(text);
    if (!start_ok(start, len)) {
        tverror(TVErrC_StringBounds, tvlocation(__FILE__, __LINE__),
                "Start position %d out of bounds in %s.", start, text);
        return -1;
    }
    int pos = start;
    while (text[pos] == ' ' || text[pos] == '\t')
        ++pos;
    return pos;
}

int tv_skip_space(const std::string& text, int start)
{
    if (!start_ok(start, text.size())) {
        tverror(TVErrC_StringBounds, tvlocation(__FILE__, __LINE__),
                "Start position %d out of bounds in %s.", start, text.c_str());
        return -1;
    }
    size_t pos = text.find_first_not_of(" \t", static_cast<size_t>(start));
    return pos == std::string::npos ? static_cast<int>(text.size()) : static_cast<int>(pos);
}

namespace {

char upper(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

} // namespace

bool tv_compare_nocase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (upper(a[i]) != upper(b[i]))
            return false;
    return true;
}

size_t tv_find_nocase(const std::string& text, const std::string& match)
{
    if (match.empty())
        return 0;
    auto same = [](char x, char y) { return upper(x) == upper(y); };
    auto hit = std::search(text.begin(), text.end(), match.begin(), match.end(), same);
    return hit == text.end() ? std::string::npos : static_cast<size_t>(hit - text.begin());
}

int tv_find_in_vector(const std::string& text, const std::vector<std::string>& list,
                      bool ignoreCase)
{
    for (size_t i = 0; i < list.size(); ++i) {
        if (ignoreCase ? tv_compare_nocase(text, list[i]) : text == list[i])
            return static_cast<int>(i);
    }
    return -1;
}

int tv_copy_string(const char* source, char* target, int length)
{
    if (source == nullptr)
        return tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                       "Assertion Failed: (source != nullptr)");
    if (target == nullptr)
        return tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                       "Assertion Failed: (target != nullptr)");
    if (length <= 0)
        return tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                       "Assertion Failed: (length > 0)");
    size_t n = strnlen(source, static_cast<size_t>(length - 1));
    std::memmove(target, source, n);
    target[n] = '\0';
    return TVErrC_ok;
}

std::string tv_tolower(const std::string& text)
{
    std::string out(text);
    for (char& c : out)
        c = lower(c);
    return out;
}

// ---- Splitting and joining ------------------------------------------------

void tv_tokenise(const std::string& text, char sep, std::vector<std::string>& tokens)
{
    // Reuse the strings already in tokens: a caller that tokenises line
    // after line into one vector then allocates almost nothing.
    size_t count = 0;
    auto put = [&](const char* from, const char* to) {
        if (count < tokens.size())
            tokens[count].assign(from, to);
        else
            tokens.emplace_back(from, to);
        ++count;
    };
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        const char* hit = static_cast<const char*>(std::memchr(p, sep, static_cast<size_t>(end - p)));
        if (hit == nullptr) {
            // The last token has no separator behind it; it is non-empty here.
            put(p, end);
            break;
        }
        put(p, hit);
        p = hit + 1;
    }
    tokens.resize(count);
}

std::vector<std::string> tv_tokenise(const std::string& text, char sep)
{
    std::vector<std::string> tokens;
    tv_tokenise(text, sep, tokens);
    return tokens;
}

bool tv_tag_value(const std::string& text, const std::string& sep, std::string& tag,
                  std::string& value)
{
    size_t pos = sep.empty() ? std::string::npos : text.find(sep);
    if (pos == std::string::npos) {
        tag.clear();
        value = text;
        return false;
    }
    // Copy both parts before assigning: text may be tag or value itself.
    std::string rest = text.substr(pos + sep.size());
    tag = text.substr(0, pos);
    value = std::move(rest);
    return true;
}

bool tv_tag_value(const std::string& text, char sep, std::string& tag, std::string& value)
{
    return tv_tag_value(text, std::string(1, sep), tag, value);
}

std::string tv_replace_substr(const std::string& text, const std::string& from,
                              const std::string& to, bool once)
{
    if (from.empty() || from == to)
        return text;
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    for (;;) {
        size_t hit = text.find(from, pos);
        if (hit == std::string::npos)
            break;
        out.append(text, pos, hit - pos);
        out += to;
        // The search resumes in the original text, so inserted text is never rescanned.
        pos = hit + from.size();
        if (once)
            break;
    }
    out.append(text, pos, std::string::npos);
    return out;
}

namespace {

void wrap_one_line(const std::string& line, int width, int indent, bool keepLeading,
                   std::string& out)
{
    const size_t n = line.size();
    const int leading = static_cast<int>(std::min(line.find_first_not_of(' '), n));
    const int cap = width < 21 ? width / 2 : width - 10;
    const int cont = std::max(0, std::min(indent + (keepLeading ? leading : 0), cap));

    size_t pos = 0;
    size_t room = static_cast<size_t>(width);
    for (;;) {
        size_t word = line.find_first_not_of(' ', pos);
        if (n - pos <= room || word == std::string::npos) {
            out.append(line, pos, std::string::npos);
            return;
        }
        // Break at the last blank that leaves at most room bytes before it,
        // but not inside the blanks that open the piece.
        size_t brk = line.rfind(' ', pos + room);
        if (brk == std::string::npos || brk < word) {
            // A word longer than the room: keep it whole, break behind it.
            brk = line.find(' ', std::max(word, pos + room));
            if (brk == std::string::npos) {
                out.append(line, pos, std::string::npos);
                return;
            }
        }
        size_t pieceEnd = brk;
        while (pieceEnd > word && line[pieceEnd - 1] == ' ')
            --pieceEnd;
        out.append(line, pos, pieceEnd - pos);
        size_t next = line.find_first_not_of(' ', brk);
        if (next == std::string::npos)
            return;  // only blanks were left; they'd make an empty line
        out += '\n';
        out.append(static_cast<size_t>(cont), ' ');
        pos = next;
        room = static_cast<size_t>(width - cont);
    }
}

} // namespace

std::string tv_line_wrap(const std::string& text, int width, int indent, bool keepLeading)
{
    if (width <= 0)
        return text;
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    size_t pos = 0;
    for (;;) {
        size_t nl = text.find('\n', pos);
        wrap_one_line(text.substr(pos, nl == std::string::npos ? std::string::npos : nl - pos),
                      width, indent, keepLeading, out);
        if (nl == std::string::npos)
            break;
        out += '\n';
        pos = nl + 1;
    }
    return out;
}

// ---- Comma-separated values -----------------------------------------------

std::string tv_csv_out(const std::string& value)
{
    std::string out;
    out.reserve(value.size() + 2);
    out += '"';
    for (char c : value) {
        if (c == '"')
            out += '"';
        out += c;
    }
    out += '"';
    return out;
}

void tv_add_csv_entry(std::string& list, const std::string& entry)
{
    if (!list.empty())
        list += ", ";
    list += entry;
}

std::vector<std::string> tv_read_csv(std::istream& in)
{
    std::vector<std::string> fields;
    std::string field;
    bool quoted = false;      // inside quotes now
    bool wasQuoted = false;   // the current field had quotes
    bool afterComma = false;  // the last field ended at a comma
    bool any = false;         // read at least one character
    std::streambuf* buf = in.rdbuf();
    if (buf == nullptr)
        return fields;

    for (;;) {
        int c = buf->sbumpc();
        if (c == std::char_traits<char>::eof()) {
            in.setstate(std::ios::eofbit);
            break;
        }
        any = true;
        char ch = static_cast<char>(c);
        if (quoted) {
            if (ch == '"') {
                if (buf->sgetc() == '"') {
                    buf->sbumpc();
                    field += '"';
                } else {
                    quoted = false;
                }
            } else if (ch == '\r') {
                // CR LF inside quotes is one line break.
                if (buf->sgetc() == '\n')
                    buf->sbumpc();
                field += '\n';
            } else {
                field += ch;
            }
            continue;
        }
        if (ch == ',') {
            fields.push_back(std::move(field));
            field.clear();
            wasQuoted = false;
            afterComma = true;
            continue;
        }
        if (ch == '\n' || ch == '\r') {
            if (ch == '\r' && buf->sgetc() == '\n')
                buf->sbumpc();
            break;
        }
        if (ch == '"') {
            // Blanks that only separated the comma from the quote are padding.
            if (field.find_first_not_of(" \t") == std::string::npos)
                field.clear();
            quoted = true;
            wasQuoted = true;
            continue;
        }
        afterComma = false;
        field += ch;
    }
    if (!any)
        return fields;
    if (!field.empty() || wasQuoted || afterComma)
        fields.push_back(std::move(field));
    return fields;
}

// ---- Number forms ---------------------------------------------------------

std::string tv_double_to_string(double value, const std::string& format)
{
    return tv_sprintf(format.empty() ? "%f" : format.c_str(), value);
}

std::string tv_double_to_string(double value, const std::string& format, double blank)
{
    return value == blank ? std::string() : tv_double_to_string(value, format);
}

std::string tv_long_to_string(long value, const std::string& format)
{
    return tv_sprintf(format.empty() ? "%ld" : format.c_str(), value);
}

std::string tv_long_to_string(long value, const std::string& format, long blank)
{
    return value == blank ? std::string() : tv_long_to_string(value, format);
}

std::string tv_int_to_string(int value, const std::string& format)
{
    return tv_sprintf(format.empty() ? "%d" : format.c_str(), value);
}

std::string tv_int_to_string(int value, const std::string& format, int blank)
{
    return value == blank ? std::string() : tv_int_to_string(value, format);
}

std::string tv_bool_to_string(bool value)
{
    return value ? "1" : "0";
}

double tv_string_to_double(const std::string& text, double defaultValue)
{
    return text.empty() ? defaultValue : std::atof(text.c_str());
}

long tv_string_to_long(const std::string& text, long defaultValue)
{
    return text.empty() ? defaultValue : std::atol(text.c_str());
}

int tv_string_to_int(const std::string& text, int defaultValue)
{
    return text.empty() ? defaultValue : std::atoi(text.c_str());
}

bool tv_string_to_bool(const std::string& text, bool defaultValue)
{
    return text.empty() ? defaultValue : std::atoi(text.c_str()) != 0;
}

// ---- White space and cleaning ---------------------------------------------

namespace {

// A carriage return at the front is kept on purpose: the leading set is one
// smaller than the trailing set.
bool is_leading_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

bool is_trailing_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The in-place work of tv_elim_whitespace on a buffer of n bytes; gives the
// new length.
size_t elim_whitespace(char* text, size_t n, bool tabs, bool lines, bool leading,
                       bool trailing)
{
    if (tabs)
        std::replace(text, text + n, '\t', ' ');
    if (lines)
        n = static_cast<size_t>(
            std::remove_if(text, text + n, [](char c) { return c == '\r' || c == '\n'; }) - text);
    if (leading) {
        size_t skip = 0;
        while (skip < n && is_leading_space(text[skip]))
            ++skip;
        std::memmove(text, text + skip, n - skip);
        n -= skip;
    }
    if (trailing)
        while (n > 0 && is_trailing_space(text[n - 1]))
            --n;
    return n;
}

} // namespace

int tv_elim_whitespace(char* text, bool tabs, bool lines, bool leading, bool trailing)
{
    if (text == nullptr)
        return tverror(TVErrC_Assert, tvlocation(__FILE__, __LINE__),
                       "Assertion Failed: (text != nullptr)");
    size_t n = elim_whitespace(text, std::strlen(text), tabs, lines, leading, trailing);
    text[n] = '\0';
    return TVErrC_ok;
}

void tv_elim_whitespace(std::string& text, bool tabs, bool lines, bool leading, bool trailing)
{
    if (text.empty())
        return;
    text.resize(elim_whitespace(&text[0], text.size(), tabs, lines, leading, trailing));
}

std::string tv_clean_string(const std::string& text, bool tabs, bool lines, bool leading,
                            bool trailing)
{
    std::string out(text);
    for (char& c : out) {
        if (tabs && c == '\t')
            c = ' ';
        else if (lines && (c == '\r' || c == '\n'))
            c = ' ';
    }
    tv_elim_whitespace(out, false, false, leading, trailing);
    return out;
}

std::string tv_clean_unicode(const std::string& text)
{
    // All five marks are E2 80 xx in UTF-8.
    std::string out;
    out.reserve(text.size());
    const size_t n = text.size();
    for (size_t i = 0; i < n; ++i) {
        if (text[i] == '\xE2' && i + 2 < n && text[i + 1] == '\x80') {
            char repl = 0;
            switch (text[i + 2]) {
            case '\x98': case '\x99': repl = '\''; break;
            case '\x9C': case '\x9D': repl = '"'; break;
            case '\xA9': repl = '\n'; break;
            default: break;
            }
            if (repl != 0) {
                out += repl;
                i += 2;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

std::string tv_clean_paragraphs(const std::string& text)
{
    std::vector<std::string> lines = tv_tokenise(tv_clean_unicode(text), '\n');
    std::string out;
    bool paraOpen = false;   // a paragraph has text and no blank line since
    for (const std::string& raw : lines) {
        std::string line = tv_clean_string(raw, false, true, false, true);
        if (line.empty()) {
            paraOpen = false;
            continue;
        }
        if (paraOpen)
            out += ' ';
        else if (!out.empty())
            out += "\n\n";
        out += line;
        paraOpen = true;
    }
    return out;
}

// ---- Stream escapes -------------------------------------------------------

namespace {

// Bytes that tv_stream_out must look at; everything else is copied in runs.
struct EscapeTable {
    bool special[256] = {};
    EscapeTable()
    {
        special[static_cast<unsigned char>('\n')] = true;
        special[static_cast<unsigned char>('\\')] = true;
        special[static_cast<unsigned char>('\r')] = true;
        special[0] = true;
    }
};

const EscapeTable G_Escape;

} // namespace

namespace {

// Non-zero if any byte of word is 0, LF, CR or backslash; the classic
// "has a zero byte" test applied to word xor each of the four patterns.
inline uint64_t has_special(uint64_t word)
{
    constexpr uint64_t ones = 0x0101010101010101ULL;
    constexpr uint64_t highs = 0x8080808080808080ULL;
    auto has_zero = [](uint64_t v) { return (v - ones) & ~v & highs; };
    return has_zero(word) | has_zero(word ^ (ones * '\n')) | has_zero(word ^ (ones * '\r')) |
           has_zero(word ^ (ones * '\\'));
}

} // namespace

void tv_stream_out_append(std::string_view text, std::string& out)
{
    // Written straight into a buffer sized for the usual case (few escapes)
    // and doubled when a run of escapes outgrows it. Plain text moves eight
    // bytes at a time; a word holding a special byte goes byte by byte.
    const char* p = text.data();
    const char* const end = p + text.size();
    // Most text has nothing to escape: one look, one append.
    const char* q = p;
    for (uint64_t word; end - q >= 8 && (std::memcpy(&word, q, 8), !has_special(word)); q += 8) {
    }
    while (q < end && !G_Escape.special[static_cast<unsigned char>(*q)])
        ++q;
    if (q == end) {
        out.append(p, text.size());
        return;
    }
    const size_t start = out.size();
    out.resize(start + text.size() + text.size() / 8 + 16);
    char* base = &out[0];
    char* o = base + start;
    char* limit = base + out.size();
    while (p < end) {
        if (limit - o < 16) {  // room for eight bytes that all double
            size_t used = static_cast<size_t>(o - base);
            out.resize(out.size() * 2);
            base = &out[0];
            o = base + used;
            limit = base + out.size();
        }
        const size_t chunk = std::min<size_t>(static_cast<size_t>(end - p), 8);
        if (chunk == 8) {
            uint64_t word;
            std::memcpy(&word, p, 8);
            if (!has_special(word)) {
                std::memcpy(o, p, 8);
                o += 8;
                p += 8;
                continue;
            }
        }
        for (const char* stop = p + chunk; p < stop; ++p) {
            const char c = *p;
            if (!G_Escape.special[static_cast<unsigned char>(c)]) {
                *o++ = c;
            } else if (c == '\n') {
                *o++ = '\\';
                *o++ = 'n';
            } else if (c == '\\') {
                *o++ = '\\';
                *o++ = '\\';
            }
            // CR and NUL are dropped.
        }
    }
    out.resize(static_cast<size_t>(o - base));
}

std::string tv_stream_out(const std::string& text)
{
    std::string out;
    tv_stream_out_append(text, out);
    return out;
}

void tv_stream_in_append(std::string_view text, std::string& out)
{
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        const char* hit = static_cast<const char*>(std::memchr(p, '\\', static_cast<size_t>(end - p)));
        if (hit == nullptr) {
            out.append(p, static_cast<size_t>(end - p));
            break;
        }
        out.append(p, static_cast<size_t>(hit - p));
        if (hit + 1 == end) {
            // A lone backslash at the very end has nothing to escape.
            out += '\\';
            break;
        }
        out += hit[1] == 'n' ? '\n' : hit[1];
        p = hit + 2;
    }
}

std::string tv_stream_in(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    tv_stream_in_append(text, out);
    return out;
}
