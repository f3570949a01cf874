#include "LibObject/object/tvsrl.h"

#include "LibCore/error/tverror.h"
#include "LibCore/textstr/tvtextstr.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <istream>
#include <iterator>
#include <ostream>

void TVSrl::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    out << pad << "TVSrl\n"
        << pad << "    handle_multiple = " << handle_multiple() << '\n'
        << pad << "    nentries = " << get_nentries() << '\n';
}

int TVSrl::start_read()
{
    return TVErrC_ok;
}

int TVSrl::read(std::istream&)
{
    return TVErrC_ok;
}

int TVSrl::write(std::ostream&, int) const
{
    return TVErrC_ok;
}

void tv_srl_extract(std::istream& in, std::string& value)
{
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    value = tv_stream_in(text);
}

void tv_srl_extract(std::istream& in, char& value)
{
    std::string text;
    tv_srl_extract(in, text);
    if (!text.empty() && text[0] != '\0')
        value = text[0];
}

namespace {

// "-"? digits, and with fraction "." digits after them: what the writer
// gives, and all that the fast paths take.
bool is_plain_number(std::string_view text, bool fraction)
{
    size_t i = text.size() > 0 && text[0] == '-' ? 1 : 0;
    const size_t digits = i;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9')
        ++i;
    if (i == digits)
        return false;
    if (fraction && i < text.size() && text[i] == '.') {
        const size_t decimals = ++i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9')
            ++i;
        if (i == decimals)
            return false;
    }
    return i == text.size();
}

template <class T>
bool parse_number(std::string_view text, T& value, bool fraction)
{
    if (!is_plain_number(text, fraction))
        return false;
    T parsed{};
    const char* end = text.data() + text.size();
    const std::from_chars_result r = std::from_chars(text.data(), end, parsed);
    if (r.ec != std::errc() || r.ptr != end)
        return false;
    value = parsed;
    return true;
}

template <class T>
bool format_integer(std::string& out, T value)
{
    char buffer[24];
    const std::to_chars_result r = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, static_cast<size_t>(r.ptr - buffer));
    return true;
}

} // namespace

bool tv_srl_parse(std::string_view text, int& value)
{
    return parse_number(text, value, false);
}

bool tv_srl_parse(std::string_view text, long& value)
{
    return parse_number(text, value, false);
}

bool tv_srl_parse(std::string_view text, bool& value)
{
    if (text != "0" && text != "1")
        return false;
    value = text[0] == '1';
    return true;
}

bool tv_srl_parse(std::string_view text, double& value)
{
    return parse_number(text, value, true);
}

bool tv_srl_parse(std::string_view text, std::string& value)
{
    value.clear();
    tv_stream_in_append(text, value);
    return true;
}

bool tv_srl_parse(std::string_view text, char& value)
{
    // As tv_srl_extract: the first byte of the unescaped text.
    if (text.empty())
        return true;
    if (text[0] != '\\') {
        value = text[0];
        return true;
    }
    std::string plain;
    tv_stream_in_append(text, plain);
    if (!plain.empty() && plain[0] != '\0')
        value = plain[0];
    return true;
}

bool tv_srl_format(std::string& out, int value, int)
{
    return format_integer(out, value);
}

bool tv_srl_format(std::string& out, long value, int)
{
    return format_integer(out, value);
}

bool tv_srl_format(std::string& out, bool value, int)
{
    out += value ? '1' : '0';
    return true;
}

bool tv_srl_format(std::string& out, double value, int precision)
{
    // Fixed with a few decimals, as stored measures are: the scaled value
    // rounded, when it is plainly not near a half (where only the exact
    // decimal expansion knows which way to go).
    static const double scales[] = {1, 10, 100, 1e3, 1e4, 1e5, 1e6};
    const double scaled = precision > 0 && precision <= 6 ? value * scales[precision] : 0.0;
    // Below 1e9 the product is off the exact one by less than 1e-7.
    if (scaled != 0.0 && std::fabs(scaled) < 1e9) {
        const double rounded = std::nearbyint(scaled);
        if (std::fabs(std::fabs(scaled - rounded) - 0.5) > 1e-6 && rounded != 0) {
            long long whole = static_cast<long long>(std::fabs(rounded));
            char digits[32];
            int n = 0;
            for (int i = 0; i < precision; ++i, whole /= 10)
                digits[n++] = static_cast<char>('0' + whole % 10);
            digits[n++] = '.';
            do {
                digits[n++] = static_cast<char>('0' + whole % 10);
                whole /= 10;
            } while (whole != 0);
            if (rounded < 0)
                out += '-';
            while (n > 0)
                out += digits[--n];
            return true;
        }
    }
    // The stream's defaults: "%g" with 6 digits; or "%.*f".
    char buffer[400];
    const std::to_chars_result r =
        precision > 0
            ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                            precision)
            : std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
    if (r.ec != std::errc())
        return false;
    out.append(buffer, static_cast<size_t>(r.ptr - buffer));
    return true;
}

bool tv_srl_format(std::string& out, const std::string& value, int)
{
    out += value;
    return true;
}

bool tv_srl_format(std::string& out, char value, int)
{
    out += value;
    return true;
}
