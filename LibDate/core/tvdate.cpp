#include "LibDate/core/tvdate.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <istream>
#include <ostream>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"

const TVDate TVDate::C_Blank(TVDate::E_DateBlank);

namespace {

TVDate::ParseFn s_parser = nullptr;

const int C_EpochYear = 1970;
// get_time_t answers only inside these years, as it always has.
const int C_TimeTFirstYear = 1940;
const int C_TimeTLastYear = 2030;
// A stream value of at most this many digits is an old time_t.
const size_t C_TimeTDigits = 11;
// A stream value of at least this many digits starts with the micro.
const size_t C_MicroFormDigits = 27;
// The stream form gives the year five characters.
const int C_MaxStreamYear = 99999;
const int C_MinStreamYear = -9999;

long floor_div(long a, long b)
{
    long q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return q;
}

std::string replace_all(const std::string& text, const char* code, const std::string& with)
{
    if (text.find(code) == std::string::npos)
        return text;
    return tv_replace_substr(text, code, with);
}

} // namespace

void TVDate::set_parser(ParseFn parser)
{
    s_parser = parser;
}

// ---- Construction -----------------------------------------------------------

TVDate::TVDate()
{
    set_defaults(true);
}

TVDate::TVDate(E_DateInit init)
{
    set_defaults(true);
    if (init == E_DateZero)
        set_zero();
    else if (init == E_DateBlank)
        set_blank();
}

TVDate::TVDate(int year, int month, int day, int hour, int minute, int second, int micro,
               int zone)
{
    set_defaults(true);
    set_date(year, month, day, hour, minute, second, micro, zone);
}

TVDate::TVDate(int year, int dayOfYear, int second, int micro, int zone)
    : m_year(year), m_dayOfYear(dayOfYear), m_second(second), m_micro(micro), m_timeZone(zone)
{
}

TVDate::TVDate(const std::string& text, const TVRepeatConfig* config, const TVDate* base)
{
    set_defaults(true);
    from_string(text, config, base);
}

void TVDate::set_defaults(bool)
{
    set_invalid();
}

void TVDate::set_blank()
{
    *this = TVDate(C_BlankDateYear, 0, 0, 0, C_GMT);
}

void TVDate::set_invalid()
{
    *this = TVDate(C_InvalidDateYear, 0, 0, 0, C_GMT);
}

void TVDate::set_zero()
{
    *this = TVDate(0, 0, 0, 0, C_GMT);
}

bool TVDate::is_zero() const
{
    return m_year == 0 && m_dayOfYear == 0 && m_second == 0 && m_micro == 0;
}

void TVDate::set_date(int year, int month, int day, int hour, int minute, int second, int micro,
                      int zone)
{
    int dayOfYear = 0;
    TVDateUtils::calc_yearday(year, month, day, year, dayOfYear);
    // The local zone's DST question is asked of this calendar day, so the
    // day goes in before the zone is expanded.
    m_year = year;
    m_dayOfYear = dayOfYear;
    m_second = 0;
    m_micro = 0;
    m_timeZone = TVDateUtils::expand_timezone(zone, *this);
    long seconds = static_cast<long>(hour) * C_HourSecs + static_cast<long>(minute) * C_MinSecs +
                   second - TVDateUtils::zone_to_seconds(m_timeZone, true);
    // A time within its day (every stored one in GMT): the day stands.
    if (seconds >= 0 && seconds < C_DaySecs && micro >= 0 && micro < C_MicroSecs) {
        m_second = static_cast<int>(seconds);
        m_micro = micro;
        return;
    }
    set_moment(TVDateUtils::days_before_year(year) + dayOfYear, seconds, micro);
}

void TVDate::set_timezone(int zone)
{
    m_timeZone = TVDateUtils::expand_timezone(zone, *this);
}

void TVDate::set_micro(int micro)
{
    m_micro = micro;
    recalculate();
}

void TVDate::recalculate()
{
    set_moment(TVDateUtils::days_before_year(m_year) + m_dayOfYear, m_second, m_micro);
}

void TVDate::set_moment(long days, long second, long micro)
{
    second += floor_div(micro, C_MicroSecs);
    micro -= floor_div(micro, C_MicroSecs) * C_MicroSecs;
    days += floor_div(second, C_DaySecs);
    second -= floor_div(second, C_DaySecs) * C_DaySecs;
    TVDateUtils::split_days(days, m_year, m_dayOfYear);
    m_second = static_cast<int>(second);
    m_micro = static_cast<int>(micro);
}

// ---- Text -------------------------------------------------------------------

bool TVDate::from_string(const std::string& text, const TVRepeatConfig* config,
                         const TVDate* base)
{
    TVDate parsed;
    if (s_parser == nullptr || !s_parser(text, config, base, parsed))
        parsed.set_invalid();
    *this = parsed;
    return !is_invalid();
}

std::string TVDate::to_string(const std::string& format) const
{
    if (!is_ok())
        return std::string();
    const TVLocale* locale = tvlocale();
    std::string text = format.empty() ? locale->date_format() : format;

    TVDateDetails date(*this, m_timeZone);
    std::string clock = locale->time_format(date.m_second == 0);

    // The order matters: the first steps bring in codes that later ones
    // resolve, and "%U" (seconds with micro) must not meet "%u" or "%S".
    text = replace_all(text, "%D", locale->day_format(false));
    text = replace_all(text, "%E", locale->day_format(false));
    text = replace_all(text, "%T", locale->time_format(false));

    // The relative forms need "now"; most formats don't use them.
    std::string relative;      // %F
    std::string relativeShort; // %c
    std::string relativeClock; // %C
    bool hasRelative = text.find("%F") != std::string::npos ||
                       text.find("%C") != std::string::npos ||
                       text.find("%c") != std::string::npos;
    if (hasRelative) {
        // "Today" is judged in the zone the date is shown in. The further
        // the date lies from today, the more of it is shown; weeks 0 and 51
        // straddle a new year, so they get it all.
        TVDateDetails today(TVDateUtils::now(), m_timeZone);
        if (date.m_year != today.m_year || date.m_weekYear == 0 || date.m_weekYear == 51) {
            relative = "%a " + locale->day_format(false);
            relativeShort = locale->day_format(false);
        } else if (date.m_weekYear != today.m_weekYear) {
            relative = "%a " + locale->day_format(true);
            relativeShort = locale->day_format(true);
        } else if (date.m_dayYear != today.m_dayYear) {
            relative = "%a ";
            relativeShort = "%a";
        }
        if (relative.empty()) {
            relative = "%a";
            relativeClock = clock;
        } else {
            relativeClock = relative + " " + clock;
        }
        if (relativeShort.empty())
            relativeShort = "%a";
        text = replace_all(text, "%F", relative);
        text = replace_all(text, "%C", relativeClock);
    }
    text = replace_all(text, "%t", clock);
    text = replace_all(text, "%i", locale->time_format(true));
    if (hasRelative)
        text = replace_all(text, "%c", relativeShort);
    text = replace_all(text, "%a", locale->weekday_name(date.m_dayWeek, true));
    text = replace_all(text, "%A", locale->weekday_name(date.m_dayWeek, false));
    text = replace_all(text, "%b", locale->month_name(date.m_month, true));
    text = replace_all(text, "%B", locale->month_name(date.m_month, false));

    int hour12 = date.m_hour % 12 == 0 ? 12 : date.m_hour % 12;
    text = replace_all(text, "%d", tv_sprintf("%02d", date.m_dayMonth + 1));
    text = replace_all(text, "%e", tv_sprintf("%2d", date.m_dayMonth + 1));
    text = replace_all(text, "%H", tv_sprintf("%02d", date.m_hour));
    text = replace_all(text, "%I", tv_sprintf("%02d", hour12));
    text = replace_all(text, "%j", tv_sprintf("%03d", date.m_dayYear + 1));
    text = replace_all(text, "%k", tv_sprintf("%02d", date.m_hour));
    text = replace_all(text, "%l", tv_sprintf("%2d", hour12));
    text = replace_all(text, "%m", tv_sprintf("%02d", date.m_month + 1));
    text = replace_all(text, "%M", tv_sprintf("%02d", date.m_minute));
    text = replace_all(text, "%n", "\n");
    text = replace_all(text, "%p", date.m_hour >= 12 ? "PM" : "AM");
    text = replace_all(text, "%P", date.m_hour >= 12 ? "pm" : "am");
    text = replace_all(text, "%s", tv_sprintf("%ld", get_time_t()));
    text = replace_all(text, "%S", tv_sprintf("%02d", date.m_second));
    text = replace_all(text, "%u", tv_sprintf("%d", date.m_dayWeek == 0 ? 7 : date.m_dayWeek));
    text = replace_all(text, "%U", tv_sprintf("%02d.%06d", date.m_second, date.m_micro));
    text = replace_all(text, "%w", tv_sprintf("%d", date.m_dayWeek));
    text = replace_all(text, "%W", tv_sprintf("%03d", date.m_weekYear));
    text = replace_all(text, "%y", tv_sprintf("%02d", (date.m_year % 100 + 100) % 100));
    text = replace_all(text, "%Y", tv_sprintf("%04d", date.m_year));
    // The local zone goes without saying.
    if (TVDateUtils::zones_equivalent(m_timeZone, locale->get_local_timezone())) {
        text = replace_all(text, " %z", "");
        text = replace_all(text, "%z", "");
    } else {
        text = replace_all(text, "%z", TVDateUtils::zone_to_string(m_timeZone, m_timeZone));
    }
    text = replace_all(text, "%Z", TVDateUtils::zone_to_string(m_timeZone, m_timeZone));
    return text;
}

// ---- Comparison -------------------------------------------------------------

namespace {

// -1, 0, 1 by moment; both dates real.
int compare_moments(const TVDate& a, const TVDate& b)
{
    if (a.get_year() != b.get_year())
        return a.get_year() < b.get_year() ? -1 : 1;
    if (a.get_day_of_year() != b.get_day_of_year())
        return a.get_day_of_year() < b.get_day_of_year() ? -1 : 1;
    if (a.get_second_of_day() != b.get_second_of_day())
        return a.get_second_of_day() < b.get_second_of_day() ? -1 : 1;
    if (a.get_microsecond() != b.get_microsecond())
        return a.get_microsecond() < b.get_microsecond() ? -1 : 1;
    return 0;
}

} // namespace

// A blank or invalid date is later than any real one and, on the left, is
// decided before the right side is looked at: two blanks are each > the
// other and neither < nor <= the other.
bool TVDate::operator<(const TVDate& other) const
{
    if (!is_ok())
        return false;
    if (!other.is_ok())
        return true;
    return compare_moments(*this, other) < 0;
}

bool TVDate::operator<=(const TVDate& other) const
{
    if (!is_ok())
        return false;
    if (!other.is_ok())
        return true;
    return compare_moments(*this, other) <= 0;
}

bool TVDate::operator>(const TVDate& other) const
{
    if (!is_ok())
        return true;
    if (!other.is_ok())
        return false;
    return compare_moments(*this, other) > 0;
}

bool TVDate::operator>=(const TVDate& other) const
{
    if (!is_ok())
        return true;
    if (!other.is_ok())
        return false;
    return compare_moments(*this, other) >= 0;
}

bool TVDate::operator==(const TVDate& other) const
{
    return m_year == other.m_year && m_dayOfYear == other.m_dayOfYear &&
           m_second == other.m_second && m_micro == other.m_micro &&
           m_timeZone == other.m_timeZone;
}

bool compare_tvdates(const TVDate& a, const TVDate& b)
{
    return a < b;
}

// ---- Arithmetic -------------------------------------------------------------

TVDuration TVDate::operator-(const TVDate& other) const
{
    long days = TVDateUtils::days_before_year(m_year) -
                TVDateUtils::days_before_year(other.m_year) + m_dayOfYear - other.m_dayOfYear;
    return TVDuration(days, static_cast<long>(m_second) - other.m_second, m_micro - other.m_micro);
}

TVDate TVDate::operator+(const TVDuration& span) const
{
    TVDate result(*this);
    result += span;
    return result;
}

TVDate TVDate::operator-(const TVDuration& span) const
{
    TVDate result(*this);
    result -= span;
    return result;
}

TVDate& TVDate::operator+=(const TVDuration& span)
{
    if (is_ok())
        set_moment(TVDateUtils::days_before_year(m_year) + m_dayOfYear + span.get_days(),
                   m_second + span.get_seconds(), static_cast<long>(m_micro) + span.get_micro());
    return *this;
}

TVDate& TVDate::operator-=(const TVDuration& span)
{
    if (is_ok())
        set_moment(TVDateUtils::days_before_year(m_year) + m_dayOfYear - span.get_days(),
                   m_second - span.get_seconds(), static_cast<long>(m_micro) - span.get_micro());
    return *this;
}

long TVDate::get_time_t() const
{
    if (m_year < C_TimeTFirstYear || m_year > C_TimeTLastYear)
        return 0;
    return (*this - TVDate(C_EpochYear, 0, 0, 0, C_GMT)).get_as_seconds();
}

void TVDate::set_time_t(long value, int zone)
{
    set_moment(TVDateUtils::days_before_year(C_EpochYear), value, 0);
    m_timeZone = TVDateUtils::expand_timezone(zone, *this);
}

TVDuration TVDate::get_duration() const
{
    return TVDuration(TVDateUtils::days_before_year(m_year) + m_dayOfYear, m_second, m_micro);
}

TVId TVDate::to_id() const
{
    return TVId(m_year, m_dayOfYear, m_second);
}

void TVDate::from_id(const TVId& id)
{
    *this = TVDate(id.get_id(), id.get_seq(), id.get_group(), 0, C_GMT);
    if (!is_ok()) {
        // Blank and invalid dates always carry zone 0.
        m_dayOfYear = m_second = 0;
        return;
    }
    recalculate();
    m_timeZone = TVDateUtils::expand_timezone(C_DefaultTime, *this);
}

void TVDate::set_latest(const TVDate& other)
{
    if (!is_ok())
        *this = other;
    else if (other.is_ok() && compare_moments(other, *this) > 0)
        *this = other;
}

void TVDate::set_earliest(const TVDate& other)
{
    if (!is_ok())
        *this = other;
    else if (other.is_ok() && compare_moments(other, *this) < 0)
        *this = other;
}

void TVDate::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ')
        << tv_sprintf("TVDate year %d day %d second %d micro %d zone %d", m_year, m_dayOfYear,
                      m_second, m_micro, m_timeZone);
    if (is_ok())
        out << " (" << to_string("%Y-%m-%d %H:%M:%U %Z") << ")";
    else
        out << (is_blank() ? " (blank)" : " (invalid)");
    out << "\n";
}

// ---- Stream form ------------------------------------------------------------

namespace {
// Appends value as printf's "%0*d" would: zero-padded to width, the sign
// counted in it. Every stored date goes through here, so no printf.
void put_padded(char*& at, int value, int width)
{
    char digits[12];
    int n = 0;
    unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    do {
        digits[n++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) {
        *at++ = '-';
        --width;
    }
    for (int pad = width - n; pad > 0; --pad)
        *at++ = '0';
    while (n > 0)
        *at++ = digits[--n];
}
} // namespace

namespace {
// The stored text into buffer; its end.
char* put_stored(char* buffer, const TVDate& date)
{
    int year = 0;
    int month = 0;
    int day = 0;
    TVDateUtils::breakdown_yearday(date.get_day_of_year(), date.get_year(), year, month, day);
    int second = date.get_second_of_day();
    int hour = second / TVDate::C_HourSecs;
    int minute = second % TVDate::C_HourSecs / TVDate::C_MinSecs;
    second %= TVDate::C_MinSecs;
    // "%06d" microseconds (only when not 0), then "%02d" second, minute,
    // hour, day and month, "%05d" year and "%06d" zone.
    char* at = buffer;
    if (date.get_microsecond() != 0)
        put_padded(at, date.get_microsecond(), 6);
    for (int part : {second, minute, hour, day, month})
        put_padded(at, part, 2);
    put_padded(at, year, 5);
    put_padded(at, date.get_timezone(), 6);
    return at;
}

// What operator>> makes of the digits and "-" it gathered, not empty.
void read_digits(std::string_view digits, TVDate& date);
} // namespace

std::ostream& operator<<(std::ostream& out, const TVDate& date)
{
    char buffer[96];
    const char* end = put_stored(buffer, date);
    out.write(buffer, end - buffer);
    return out;
}

void tv_date_append(std::string& out, const TVDate& date)
{
    char buffer[96];
    const char* end = put_stored(buffer, date);
    out.append(buffer, static_cast<size_t>(end - buffer));
}

bool tv_date_from_digits(std::string_view text, TVDate& date)
{
    if (text.empty())
        return false;
    for (const char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)) && c != '-')
            return false;
    read_digits(text, date);
    return true;
}

std::istream& operator>>(std::istream& in, TVDate& date)
{
    std::istream::sentry ok(in);
    if (!ok) {
        date.set_invalid();
        return in;
    }
    std::streambuf* buf = in.rdbuf();
    const int eof = std::char_traits<char>::eof();
    std::string digits;
    std::string quoted;
    bool hasQuote = false;
    for (;;) {
        int c = buf->sgetc();
        if (c == eof) {
            in.setstate(std::ios::eofbit);
            break;
        }
        if (std::isdigit(c) || c == '-') {
            digits += static_cast<char>(c);
            buf->sbumpc();
            continue;
        }
        if (c == '"') {
            hasQuote = true;
            buf->sbumpc();
            for (c = buf->sbumpc(); c != eof && c != '"'; c = buf->sbumpc())
                quoted += static_cast<char>(c);
            if (c == eof)
                in.setstate(std::ios::eofbit);
        }
        break;
    }

    if (hasQuote) {
        date.from_string(quoted, nullptr, nullptr);
        return in;
    }
    if (digits.empty()) {
        date.set_invalid();
        in.setstate(std::ios::failbit);
        return in;
    }
    read_digits(digits, date);
    return in;
}

namespace {
void read_digits(std::string_view digits, TVDate& date)
{
    if (digits.size() <= C_TimeTDigits) {
        // Files of old wrote a bare time_t.
        date.set_time_t(std::atol(std::string(digits).c_str()), TVDate::C_DefaultTime);
        TVDateDetails local(date, date.get_timezone());
        int zone = TVDateUtils::set_dst_flag(
            date.get_timezone(),
            TVDateUtils::date_is_dst(local.m_dayMonth, local.m_month, local.m_year));
        date = TVDate(date.get_year(), date.get_day_of_year(), date.get_second_of_day(),
                      date.get_microsecond(), zone);
        return;
    }
    size_t pos = 0;
    // atoi of the next width characters: a "-", then digits up to anything else.
    auto field = [&](size_t width) {
        const size_t end = std::min(digits.size(), pos + width);
        size_t at = pos;
        pos += width;
        const bool negative = at < end && digits[at] == '-';
        if (negative)
            ++at;
        int value = 0;
        for (; at < end && digits[at] >= '0' && digits[at] <= '9'; ++at)
            value = value * 10 + (digits[at] - '0');
        return negative ? -value : value;
    };
    int micro = digits.size() >= C_MicroFormDigits ? field(6) : 0;
    int second = field(2);
    int minute = field(2);
    int hour = field(2);
    int day = field(2);
    int month = field(2);
    int year = field(5);
    int zone = field(6);
    date.set_date(year, month, day, hour, minute, second, micro, TVDate::C_GMT);
    // Fields out of range can carry the year past what five digits hold,
    // and such a date would not read back as written.
    if (date.get_year() > C_MaxStreamYear || date.get_year() < C_MinStreamYear) {
        date.set_invalid();
        return;
    }
    date.set_timezone(zone);
}
} // namespace
