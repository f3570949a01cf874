#include "LibDate/core/tvduration.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <istream>
#include <ostream>
#include <vector>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"

namespace {

const long C_DaySecs = TVDate::C_DaySecs;
const int C_MicroSecs = TVDate::C_MicroSecs;

// Widths of the stream form.
const size_t C_DaysWidth = 8;
const size_t C_SecondsWidth = 8;
const size_t C_MicroWidth = 6;

int sign_of(long value)
{
    return value > 0 ? 1 : (value < 0 ? -1 : 0);
}

} // namespace

TVDuration::TVDuration() : m_days(0), m_seconds(0), m_micro(0) {}

TVDuration::TVDuration(long days, long seconds, int micro) : TVDuration()
{
    set_duration(days, seconds, micro);
}

TVDuration::TVDuration(long seconds) : TVDuration()
{
    set_duration(0, seconds, 0);
}

void TVDuration::set_duration(long days, long seconds, int micro)
{
    seconds += micro / C_MicroSecs;
    micro %= C_MicroSecs;
    days += seconds / C_DaySecs;
    seconds %= C_DaySecs;

    // After the carries the first non-zero field outweighs the others, so it
    // gives the sign of the whole; one borrow per field then aligns the rest.
    int sign = days != 0 ? sign_of(days) : (seconds != 0 ? sign_of(seconds) : sign_of(micro));
    if (sign > 0) {
        if (micro < 0) {
            micro += C_MicroSecs;
            --seconds;
        }
        if (seconds < 0) {
            seconds += C_DaySecs;
            --days;
        }
    } else if (sign < 0) {
        if (micro > 0) {
            micro -= C_MicroSecs;
            ++seconds;
        }
        if (seconds > 0) {
            seconds -= C_DaySecs;
            ++days;
        }
    }
    m_days = days;
    m_seconds = seconds;
    m_micro = micro;
}

double TVDuration::get_as_days() const
{
    return static_cast<double>(m_days) + static_cast<double>(m_seconds) / C_DaySecs +
           static_cast<double>(m_micro) / (static_cast<double>(C_DaySecs) * C_MicroSecs);
}

long TVDuration::get_as_hours() const
{
    return m_days * TVDate::C_DayHours + (m_seconds + TVDate::C_HourSecs / 2) / TVDate::C_HourSecs;
}

long TVDuration::get_as_seconds() const
{
    return m_days * C_DaySecs + m_seconds;
}

double TVDuration::get_as_dseconds() const
{
    return static_cast<double>(get_as_seconds()) + static_cast<double>(m_micro) / C_MicroSecs;
}

void TVDuration::get_breakdown(long& days, int& hours, int& minutes, int& seconds,
                               int& micro) const
{
    days = m_days;
    hours = static_cast<int>(m_seconds / TVDate::C_HourSecs);
    minutes = static_cast<int>(m_seconds % TVDate::C_HourSecs / TVDate::C_MinSecs);
    seconds = static_cast<int>(m_seconds % TVDate::C_MinSecs);
    micro = m_micro;
}

bool TVDuration::operator==(const TVDuration& other) const
{
    return m_days == other.m_days && m_seconds == other.m_seconds && m_micro == other.m_micro;
}

bool TVDuration::operator<(const TVDuration& other) const
{
    if (m_days != other.m_days)
        return m_days < other.m_days;
    if (m_seconds != other.m_seconds)
        return m_seconds < other.m_seconds;
    return m_micro < other.m_micro;
}

TVDuration TVDuration::operator+(const TVDuration& other) const
{
    return TVDuration(m_days + other.m_days, m_seconds + other.m_seconds, m_micro + other.m_micro);
}

TVDuration TVDuration::operator-(const TVDuration& other) const
{
    return TVDuration(m_days - other.m_days, m_seconds - other.m_seconds, m_micro - other.m_micro);
}

TVDuration& TVDuration::operator+=(const TVDuration& other)
{
    *this = *this + other;
    return *this;
}

TVDuration& TVDuration::operator-=(const TVDuration& other)
{
    *this = *this - other;
    return *this;
}

TVDuration TVDuration::operator*(double factor) const
{
    double days = static_cast<double>(m_days) * factor;
    long wholeDays = static_cast<long>(days);
    long seconds = static_cast<long>((days - static_cast<double>(wholeDays)) * C_DaySecs + 0.5) +
                   static_cast<long>(static_cast<double>(m_seconds) * factor + 0.5);
    // The scaled micro may pass a second; go through long so that the carry
    // happens in set_duration rather than in an int overflow.
    long micro = static_cast<long>(static_cast<double>(m_micro) * factor + 0.5);
    return TVDuration(wholeDays, seconds + micro / C_MicroSecs, static_cast<int>(micro % C_MicroSecs));
}

double TVDuration::operator/(const TVDuration& other) const
{
    double divisor = other.get_as_days();
    if (divisor == 0.0)
        return 0.0;
    return get_as_days() / divisor;
}

bool TVDuration::from_string(const std::string& text, long defaultSeconds)
{
    enum { E_Hours, E_Minutes, E_Seconds, E_Micro, E_WorkDays, E_Count };
    long value[E_Count] = {0, 0, 0, 0, 0};
    bool isSet[E_Count] = {false, false, false, false, false};
    const double secsPerWorkDay = tvlocale()->get_workhours() * TVDate::C_HourSecs;

    auto put = [&](int which, long amount) {
        value[which] = amount;
        isSet[which] = true;
    };
    // The rounded fraction of x scaled by unit, or 0.
    auto fraction = [](double x, double unit) {
        return static_cast<long>((x - std::floor(x)) * unit + 0.5);
    };

    std::vector<std::string> tokens = TVDateUtils::split_tokens(text);
    for (size_t i = 0; i < tokens.size(); ++i) {
        const std::string& token = tokens[i];
        if (!std::isdigit(static_cast<unsigned char>(token[0])) && token[0] != '.')
            continue;
        double x = std::atof(token.c_str());
        long whole = static_cast<long>(x);
        bool hasUnit = i + 1 < tokens.size() && std::isupper(static_cast<unsigned char>(tokens[i + 1][0]));
        if (hasUnit) {
            switch (tokens[i + 1][0]) {
            case 'D': {
                put(E_WorkDays, whole);
                long secs = fraction(x, secsPerWorkDay);
                if (secs > 0)
                    put(E_Seconds, secs);
                break;
            }
            case 'H': {
                put(E_Hours, whole);
                long mins = fraction(x, TVDate::C_HourMins);
                if (mins > 0)
                    put(E_Minutes, mins);
                break;
            }
            case 'M': {
                put(E_Minutes, whole);
                long secs = fraction(x, TVDate::C_MinSecs);
                if (secs > 0)
                    put(E_Seconds, secs);
                break;
            }
            case 'S':
                put(E_Seconds, whole);
                break;
            case 'U':
                put(E_Micro, whole);
                break;
            default:
                // An unknown unit takes its number with it.
                break;
            }
            continue;
        }
        int slot = 0;
        while (slot < E_Count && isSet[slot])
            ++slot;
        if (slot == E_Count)
            continue;
        if (slot == E_Seconds) {
            put(E_Seconds, static_cast<long>(std::floor(x)));
            // The fraction of a bare seconds number is kept, though the
            // micro slot stays free for a later number.
            value[E_Micro] = static_cast<long>((x - std::floor(x)) * C_MicroSecs);
        } else {
            put(slot, whole);
        }
    }

    if (!isSet[E_Hours] && !isSet[E_Minutes] && !isSet[E_Seconds] && !isSet[E_WorkDays]) {
        set_duration(0, defaultSeconds, 0);
        return true;
    }
    long seconds = value[E_Hours] * TVDate::C_HourSecs + value[E_Minutes] * TVDate::C_MinSecs +
                   value[E_Seconds] +
                   static_cast<long>(static_cast<double>(value[E_WorkDays]) * secsPerWorkDay);
    set_duration(0, seconds + value[E_Micro] / C_MicroSecs, static_cast<int>(value[E_Micro] % C_MicroSecs));
    return true;
}

std::string TVDuration::clock_text(long hours, long minutes, long seconds, int micro,
                                   bool withSeconds)
{
    if (micro != 0)
        return tv_sprintf("%02ld:%02ld:%02ld.%06d", hours, minutes, seconds, micro);
    if (withSeconds || seconds != 0)
        return tv_sprintf("%02ld:%02ld:%02ld", hours, minutes, seconds);
    return tv_sprintf("%02ld:%02ld", hours, minutes);
}

std::string TVDuration::to_string(bool withSeconds) const
{
    const char* sign = m_days < 0 || m_seconds < 0 || m_micro < 0 ? "-" : "";
    long days = std::labs(m_days);
    long seconds = std::labs(m_seconds);
    long hours = days * TVDate::C_DayHours + seconds / TVDate::C_HourSecs;
    return sign + clock_text(hours, seconds % TVDate::C_HourSecs / TVDate::C_MinSecs,
                             seconds % TVDate::C_MinSecs, std::abs(m_micro), withSeconds);
}

std::string TVDuration::to_string_day(bool withSeconds) const
{
    std::string front;
    if (m_days == 1)
        front = "1 day ";
    else if (m_days > 1)
        front = tv_sprintf("%ld days ", m_days);
    return front + TVDuration(0, m_seconds, m_micro).to_string(withSeconds);
}

void TVDuration::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ') << "TVDuration "
        << m_days << "d " << m_seconds << "s " << m_micro << "us (" << to_string_day(true) << ")\n";
}

std::ostream& operator<<(std::ostream& out, const TVDuration& value)
{
    if (value.get_micro() == 0)
        return out << tv_sprintf("%08ld%08ld@", value.get_days(), value.get_seconds());
    return out << tv_sprintf("%08ld%08ld%06d@", value.get_days(), value.get_seconds(),
                             value.get_micro());
}

std::istream& operator>>(std::istream& in, TVDuration& value)
{
    std::istream::sentry ok(in);
    if (!ok) {
        value = TVDuration();
        return in;
    }
    std::string text;
    std::streambuf* buf = in.rdbuf();
    for (;;) {
        int c = buf->sgetc();
        if (c == std::char_traits<char>::eof()) {
            in.setstate(std::ios::eofbit);
            break;
        }
        if (std::isdigit(c) || c == '-') {
            text += static_cast<char>(c);
            buf->sbumpc();
            continue;
        }
        if (c == '@')
            buf->sbumpc();
        break;
    }
    if (text.empty()) {
        value = TVDuration();
        in.setstate(std::ios::failbit);
        return in;
    }
    auto field = [&](size_t pos, size_t width) {
        return pos < text.size() ? std::atol(text.substr(pos, width).c_str()) : 0L;
    };
    long days = field(0, C_DaysWidth);
    long seconds = field(C_DaysWidth, C_SecondsWidth);
    long micro = 0;
    size_t microPos = C_DaysWidth + C_SecondsWidth;
    if (text.size() >= microPos + C_MicroWidth)
        micro = field(microPos, std::string::npos);
    value.set_duration(days, seconds, static_cast<int>(micro));
    return in;
}
