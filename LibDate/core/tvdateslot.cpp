#include "LibDate/core/tvdateslot.h"

#include <cstdlib>
#include <istream>
#include <ostream>
#include <utility>

#include "LibDate/core/tvdatedetails.h"
#include "LibDate/core/tvdateutils.h"

const TVDateSlot TVDateSlot::C_Blank(TVDate::E_DateBlank);

namespace {

// The compact form: "yyyymmdd", twice for a run of days.
const size_t C_CompactDay = 8;
const size_t C_CompactRun = 16;
const long long C_MicrosPerDay = static_cast<long long>(TVDate::C_DaySecs) * TVDate::C_MicroSecs;

long long to_micros(const TVDuration& span)
{
    return static_cast<long long>(span.get_days()) * C_MicrosPerDay +
           static_cast<long long>(span.get_seconds()) * TVDate::C_MicroSecs + span.get_micro();
}

TVDuration from_micros(long long micros)
{
    long long days = micros / C_MicrosPerDay;
    micros -= days * C_MicrosPerDay;
    return TVDuration(static_cast<long>(days), static_cast<long>(micros / TVDate::C_MicroSecs),
                      static_cast<int>(micros % TVDate::C_MicroSecs));
}

// A calendar day of the compact form, at the present time of day.
TVDate compact_day(const std::string& text, size_t at)
{
    auto number = [&](size_t from, size_t length) {
        return std::atoi(text.substr(at + from, length).c_str());
    };
    TVDate now = TVDateUtils::now();
    TVDateDetails details(now, now.get_timezone());
    details.m_year = number(0, 4);
    details.m_month = number(4, 2) - 1;
    details.m_dayMonth = number(6, 2) - 1;
    return details.get_date(TVDate::C_OriginalTime);
}

bool same_day(const TVDate& a, const TVDate& b)
{
    TVDateDetails da(a, a.get_timezone());
    TVDateDetails db(b, b.get_timezone());
    return da.m_year == db.m_year && da.m_dayYear == db.m_dayYear;
}

} // namespace

TVDateSlot::TVDateSlot()
{
    set_defaults(true);
}

TVDateSlot::TVDateSlot(TVDate::E_DateInit init) : m_start(init), m_end(init)
{
}

TVDateSlot::TVDateSlot(const TVDate& date) : m_start(date), m_end(date)
{
}

TVDateSlot::TVDateSlot(const TVDate& a, const TVDate& b, bool order) : m_start(a), m_end(b)
{
    if (order && a > b)
        std::swap(m_start, m_end);
}

void TVDateSlot::set_defaults(bool)
{
    set_invalid();
}

void TVDateSlot::set(const TVDate& start, const TVDate& end)
{
    m_start = start;
    m_end = end;
}

bool TVDateSlot::is_ok() const
{
    return m_start.is_ok() && m_end.is_ok();
}

void TVDateSlot::set_zero()
{
    m_start.set_zero();
    m_end.set_zero();
}

void TVDateSlot::set_blank()
{
    m_start.set_blank();
    m_end.set_blank();
}

void TVDateSlot::set_invalid()
{
    m_start.set_invalid();
    m_end.set_invalid();
}

bool TVDateSlot::correct()
{
    if (!m_start.is_ok())
        m_start = m_end;
    else if (!m_end.is_ok())
        m_end = m_start;
    return m_start.is_ok();
}

void TVDateSlot::set_timezone(int zone)
{
    m_start.set_timezone(zone);
    m_end.set_timezone(zone);
}

void TVDateSlot::ignore_zone()
{
    m_start = TVDateUtils::ignore_zone(m_start);
    m_end = TVDateUtils::ignore_zone(m_end);
}

TVDuration TVDateSlot::duration() const
{
    if (!is_ok())
        return TVDuration();
    return m_end - m_start;
}

bool TVDateSlot::operator==(const TVDateSlot& other) const
{
    return m_start == other.m_start && m_end == other.m_end;
}

bool TVDateSlot::within(const TVDate& date) const
{
    return m_start <= date && date <= m_end;
}

bool TVDateSlot::withinRange(const TVDate& date, const TVDateSlot& slot)
{
    if (!date.is_ok())
        return false;
    return (!slot.m_start.is_ok() || slot.m_start <= date) &&
           (!slot.m_end.is_ok() || date <= slot.m_end);
}

bool TVDateSlot::intersects(const TVDateSlot& a, const TVDateSlot& b)
{
    return a.m_start < b.m_end && a.m_end > b.m_start;
}

bool TVDateSlot::intersection(const TVDateSlot& a, const TVDateSlot& b, TVDateSlot& out)
{
    if (!intersects(a, b))
        return false;
    TVDate start = a.m_start;
    start.set_latest(b.m_start);
    TVDate end = a.m_end;
    end.set_earliest(b.m_end);
    out.set(start, end);
    return true;
}

bool TVDateSlot::merge(TVDateSlot& a, TVDateSlot& b, bool keepLength)
{
    // Only real dates can show that the slots lie apart.
    auto apart = [](const TVDate& later, const TVDate& earlier) {
        return later.is_ok() && earlier.is_ok() && later > earlier;
    };
    if (apart(a.m_start, b.m_end) || apart(b.m_start, a.m_end))
        return false;
    TVDate start = a.m_start;
    start.set_earliest(b.m_start);
    TVDate end;
    if (keepLength) {
        end = start + (a.duration() + b.duration());
    } else {
        end = a.m_end;
        end.set_latest(b.m_end);
    }
    a.set(start, end);
    b = a;
    return true;
}

TVDateSlot TVDateSlot::expand(const TVDateSlot& a, const TVDateSlot& b)
{
    TVDateSlot out(a);
    out.extend(b.m_start);
    out.extend(b.m_end);
    return out;
}

bool TVDateSlot::subtract(TVDateSlot& a, TVDateSlot& b)
{
    if (!intersects(a, b))
        return false;
    TVDateSlot before;
    TVDateSlot after;
    if (a.m_start < b.m_start)
        before.set(a.m_start, b.m_start);
    if (b.m_end < a.m_end)
        after.set(b.m_end, a.m_end);
    a = before;
    b = after;
    return true;
}

std::vector<TVDateSlot> TVDateSlot::slot_series(const TVDate& start, const TVDate& end, int count)
{
    std::vector<TVDateSlot> series;
    TVDate first = TVDateUtils::start_day(start);
    if (count < 1 || !first.is_ok() || !end.is_ok() || end < first)
        return series;
    // Boundaries are placed by exact integer shares of the whole span, so
    // rounding never piles up and the last slot ends on `end` itself.
    const __int128 total = to_micros(end - first);
    series.reserve(static_cast<size_t>(count));
    TVDate from = first;
    for (int i = 1; i <= count; ++i) {
        TVDate to = i == count ? end : first + from_micros(static_cast<long long>(total * i / count));
        series.emplace_back(from, to, false);
        from = to;
    }
    return series;
}

void TVDateSlot::extend(const TVDate& date)
{
    if (!date.is_ok())
        return;
    if (!m_start.is_ok())
        m_start = date;
    if (!m_end.is_ok())
        m_end = date;
    if (date < m_start)
        m_start = date;
    if (date > m_end)
        m_end = date;
}

std::string TVDateSlot::to_string(const std::string& format) const
{
    std::string text = m_start.to_string(format);
    if (m_start != m_end && m_end.is_ok()) {
        bool timeOnly = format == "%C" && same_day(m_start, m_end);
        text += " to " + m_end.to_string(timeOnly ? "%t" : format);
    }
    return text;
}

std::string TVDateSlot::to_compact_string() const
{
    const std::string format = "%Y%m%d";
    std::string start = m_start.is_ok() ? m_start.to_string(format) : std::string();
    std::string end = m_end.is_ok() ? m_end.to_string(format) : std::string();
    if (start.empty())
        return end;
    return end.empty() || end == start ? start : start + end;
}

bool TVDateSlot::from_compact_string(const std::string& text)
{
    if (text.size() < C_CompactDay)
        return false;
    TVDate first = compact_day(text, 0);
    TVDate last = text.size() == C_CompactRun ? compact_day(text, C_CompactDay) : first;
    m_start = TVDateUtils::start_day(first);
    m_end = TVDateUtils::end_day(last);
    return true;
}

void TVDateSlot::dump(std::ostream& out, int indent) const
{
    const std::string format = "%Y-%m-%d %H:%M:%S %Z";
    auto text = [&](const TVDate& date) {
        if (date.is_ok())
            return date.to_string(format);
        return std::string(date.is_blank() ? "blank" : "invalid");
    };
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ') << "TVDateSlot "
        << text(m_start) << " to " << text(m_end) << "\n";
}

bool compare_tvdateslots(const TVDateSlot& a, const TVDateSlot& b)
{
    if (a.get_start() < b.get_start())
        return true;
    if (b.get_start() < a.get_start())
        return false;
    return a.get_end() < b.get_end();
}

std::ostream& operator<<(std::ostream& out, const TVDateSlot& slot)
{
    out << slot.get_start();
    if (slot.get_start() == slot.get_end())
        out << '&';
    else
        out << '=' << slot.get_end();
    return out;
}

std::istream& operator>>(std::istream& in, TVDateSlot& slot)
{
    TVDate start;
    TVDate end;
    in >> start;
    if (!in.fail()) {
        int mark = in.get();
        if (mark == '&') {
            end = start;
        } else if (mark == '=') {
            in >> end;
        } else if (mark == '+') {
            long seconds = 0;
            if (in >> seconds)
                end = start + TVDuration(seconds);
            if (end < start)
                std::swap(start, end);
        } else {
            in.setstate(std::ios::failbit);
        }
    }
    slot.set(start, end);
    return in;
}
