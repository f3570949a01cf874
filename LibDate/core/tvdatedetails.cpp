#include "LibDate/core/tvdatedetails.h"

#include <ostream>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"

namespace {

// Every run of 400 Gregorian years holds this many days, whatever month it
// starts in, so a long walk through the months can jump whole cycles.
const int C_CycleDays = 146097;
const int C_CycleYears = 400;
// set_dayyear walks at most this many months before giving up.
const int C_MaxWalkMonths = 100;
const int C_EpochYear = 1970;
// 1 January 1970 was a Thursday.
const int C_EpochWeekday = 4;

int floor_div(long a, long b)
{
    long q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return static_cast<int>(q);
}

int floor_mod(long a, long b)
{
    return static_cast<int>(a - static_cast<long>(floor_div(a, b)) * b);
}

bool is_real_zone(int zone)
{
    return zone >= TVDate::C_ZoneMin && zone <= TVDate::C_ZoneMax;
}

} // namespace

TVDateDetails::TVDateDetails()
{
    set_defaults(true);
}

TVDateDetails::TVDateDetails(const TVDate& date, int zone)
{
    set_defaults(true);
    set_date(date, zone);
}

void TVDateDetails::set_defaults(bool)
{
    m_year = 0;
    m_weekYear = 0;
    m_dayYear = 0;
    m_month = 0;
    m_weekMonth = 0;
    m_dayMonth = 0;
    m_dayWeek = 0;
    m_hour = 0;
    m_minute = 0;
    m_second = 0;
    m_micro = 0;
    m_timeZone = TVDate::C_GMT;
    m_isDST = false;
}

void TVDateDetails::set_date(const TVDate& date, int zone)
{
    TVDateUtils::breakdown_yearday(date.get_day_of_year(), date.get_year(), m_year, m_month,
                                   m_dayMonth);
    int second = date.get_second_of_day();
    m_hour = second / TVDate::C_HourSecs;
    m_minute = second % TVDate::C_HourSecs / TVDate::C_MinSecs;
    m_second = second % TVDate::C_MinSecs;
    m_micro = date.get_microsecond();
    m_timeZone = TVDateUtils::expand_timezone(zone, date);
    m_second += TVDateUtils::zone_to_seconds(m_timeZone, true);
    recalculate();
}

void TVDateDetails::recalculate()
{
    const int micros = TVDate::C_MicroSecs;

    // 1. Micro. The negative case leaves micro modulo 60, not a million:
    // stored dates never carry a negative micro, and the result is kept as
    // it always was. A positive excess is carried only alongside a second
    // that needs carrying itself.
    if (m_micro < 0) {
        m_second += (m_micro + 1) / micros - 1;
        m_micro = (m_micro % micros + micros) % 60;
    } else if (m_second >= TVDate::C_MinSecs) {
        m_second += m_micro / micros;
        m_micro %= micros;
    }

    // 2. Seconds, minutes and hours, borrowing downward by floor division.
    m_minute += floor_div(m_second, TVDate::C_MinSecs);
    m_second = floor_mod(m_second, TVDate::C_MinSecs);
    m_hour += floor_div(m_minute, TVDate::C_HourMins);
    m_minute = floor_mod(m_minute, TVDate::C_HourMins);
    m_dayMonth += floor_div(m_hour, TVDate::C_DayHours);
    m_hour = floor_mod(m_hour, TVDate::C_DayHours);

    // 3. Months into years.
    m_year += floor_div(m_month, TVDate::C_YearMonths);
    m_month = floor_mod(m_month, TVDate::C_YearMonths);

    // 4. Days into months.
    if (m_dayMonth >= C_CycleDays || m_dayMonth <= -C_CycleDays) {
        int cycles = m_dayMonth / C_CycleDays;
        m_dayMonth -= cycles * C_CycleDays;
        m_year += cycles * C_CycleYears;
    }
    while (m_dayMonth < 0) {
        if (--m_month < 0) {
            m_month = TVDate::C_YearMonths - 1;
            --m_year;
        }
        m_dayMonth += TVDateUtils::days_in_month(m_month, m_year);
    }
    for (int length = TVDateUtils::days_in_month(m_month, m_year); m_dayMonth >= length;
         length = TVDateUtils::days_in_month(m_month, m_year)) {
        m_dayMonth -= length;
        if (++m_month == TVDate::C_YearMonths) {
            m_month = 0;
            ++m_year;
        }
    }

    // 5. Day of the year.
    m_dayYear = m_dayMonth;
    for (int month = 0; month < m_month; ++month)
        m_dayYear += TVDateUtils::days_in_month(month, m_year);

    // 6. Weekday, counted from a known Thursday, before 1970 too.
    long days = TVDateUtils::days_before_year(m_year) -
                TVDateUtils::days_before_year(C_EpochYear) + m_dayYear;
    m_dayWeek = floor_mod(days + C_EpochWeekday, TVDate::C_WeekDays);

    // 7. Weeks: r is the number of days left in this date's week, so the
    // week that holds the 1st is number 0.
    int r = floor_mod(tvlocale()->get_firstday() - m_dayWeek + 6, TVDate::C_WeekDays);
    m_weekYear = (r + m_dayYear) / TVDate::C_WeekDays;
    m_weekMonth = (r + m_dayMonth) / TVDate::C_WeekDays;

    // 8. The local zone follows the clocks of the day it now stands on.
    int local = tvlocale()->get_local_timezone();
    if (TVDateUtils::zones_equivalent(m_timeZone, local))
        m_timeZone = TVDateUtils::set_dst_flag(
            local, TVDateUtils::date_is_dst(m_dayMonth, m_month, m_year));
    m_isDST = is_real_zone(m_timeZone) && m_timeZone % 2 != 0;
}

TVDate TVDateDetails::get_date(int zone)
{
    recalculate();
    TVLocale* locale = tvlocale();
    auto localToday = [&]() {
        return TVDateUtils::set_dst_flag(locale->get_local_timezone(),
                                         TVDateUtils::date_is_dst(m_dayMonth, m_month, m_year));
    };

    int result = m_timeZone;
    if (zone == TVDate::C_LocalTime) {
        result = localToday();
    } else if (zone == TVDate::C_OriginalTime) {
        if (m_timeZone == TVDate::C_LocalTime)
            result = localToday();
        else if (m_timeZone == TVDate::C_DefaultTime)
            result = locale->get_timezone();
    } else if (zone == TVDate::C_DefaultTime) {
        result = locale->get_timezone();
    } else if (is_real_zone(zone)) {
        result = zone;
    }

    TVDate date;
    date.set_date(m_year, m_month, m_dayMonth, m_hour, m_minute, m_second, m_micro, m_timeZone);
    date.set_timezone(result);
    return date;
}

void TVDateDetails::set_weekdayno(int weekday, int occurrence, int month, int year)
{
    const int last = 5;
    m_year = year;
    m_month = month;
    m_dayMonth = 0;
    recalculate();
    int first = floor_mod(weekday - m_dayWeek, TVDate::C_WeekDays);
    if (occurrence == last) {
        // Step back from a sixth week until the day lies in the month: a
        // February of 28 days that starts on the weekday needs two steps.
        int day = first + last * TVDate::C_WeekDays;
        while (day >= TVDateUtils::days_in_month(m_month, m_year))
            day -= TVDate::C_WeekDays;
        m_dayMonth = day;
    } else {
        m_dayMonth = first + TVDate::C_WeekDays * occurrence;
    }
    recalculate();
}

void TVDateDetails::set_weekday(int weekday, int week, int month, int year)
{
    TVDateDetails scratch(*this);
    scratch.m_year = year;
    scratch.m_month = month;
    scratch.m_dayMonth = week;
    scratch.recalculate();
    int firstday = tvlocale()->get_firstday();
    int w1 = floor_mod(scratch.m_dayWeek - firstday, TVDate::C_WeekDays);
    int w2 = floor_mod(weekday - firstday, TVDate::C_WeekDays);
    m_year = year;
    m_month = month;
    m_dayMonth = week - w1 + w2;
    recalculate();
}

void TVDateDetails::set_dayyear(int day)
{
    int year = m_year;
    int month = 0;
    for (int steps = 0; day >= TVDateUtils::days_in_month(month, year); ++steps) {
        if (steps == C_MaxWalkMonths)
            return;
        day -= TVDateUtils::days_in_month(month, year);
        if (++month == TVDate::C_YearMonths) {
            month = 0;
            ++year;
        }
    }
    m_year = year;
    m_month = month;
    m_dayMonth = day;
    recalculate();
}

void TVDateDetails::add_seconds(int seconds)
{
    m_second += seconds;
    recalculate();
}

bool TVDateDetails::is_workday(const TVDateDetails& details)
{
    return details.m_dayWeek >= 1 && details.m_dayWeek <= 5;
}

void TVDateDetails::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ')
        << tv_sprintf("TVDateDetails %04d-%02d-%02d %02d:%02d:%02d.%06d zone %d%s"
                      " dayYear %d weekYear %d weekMonth %d dayWeek %d\n",
                      m_year, m_month + 1, m_dayMonth + 1, m_hour, m_minute, m_second, m_micro,
                      m_timeZone, m_isDST ? " DST" : "", m_dayYear, m_weekYear, m_weekMonth,
                      m_dayWeek);
}
