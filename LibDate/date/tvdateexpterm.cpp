#include "LibDate/date/tvdateexpterm.h"

#include <cstdlib>
#include <ostream>

#include "LibCore/error/tverror.h"
#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibDate/core/tvdateutils.h"
#include "LibDate/core/tvlocale.h"
#include "LibDate/date/tvrepeatconfig.h"

namespace {

const char* const C_TypeNames[TVDateExpTerm::C_TypeCount] = {
    "T_Micro",    "T_Second",   "T_Minute",    "T_Hour",      "T_Day",      "T_Weekday",
    "T_Week",     "T_Month",    "T_Year",      "T_AddMicro",  "T_AddSecond", "T_AddMinute",
    "T_AddHour",  "T_AddDay",   "T_WorkDay",   "T_Fixed",     "T_AddWeek",  "T_AddMonth",
    "T_AddYear",  "T_Now",      "T_Today",     "T_Tomorrow",  "T_Yesterday", "T_Relative",
    "T_Zone",     "T_Dst",      "T_AM",        "T_PM",        "T_Blank",    "T_Open",
    "T_Or",       "T_Close",    "T_Invalid"};

// Encoded weekdays of the month start here: occurrence 0 of Sunday.
const int C_WeekdayMonthBase = 40;
const int C_WeekdayMonthStep = 10;

long clamp_field(long value)
{
    if (value > TVDateExpTerm::C_FieldLimit)
        return TVDateExpTerm::C_FieldLimit;
    if (value < -TVDateExpTerm::C_FieldLimit)
        return -TVDateExpTerm::C_FieldLimit;
    return value;
}

// Adds without leaving the field bounds, then normalises.
void add_to(TVDateDetails& details, int& field, long delta)
{
    field = static_cast<int>(clamp_field(static_cast<long>(field) + delta));
    details.recalculate();
}

// Every int field stays within C_FieldLimit and the year within
// C_YearLimit, whatever the terms did: the sums inside recalculate()
// then stay far from overflow.
void keep_in_range(TVDateDetails& d)
{
    for (int* field : {&d.m_dayMonth, &d.m_month, &d.m_hour, &d.m_minute, &d.m_second,
                       &d.m_micro})
        *field = static_cast<int>(clamp_field(*field));
    if (d.m_year > TVDateExpTerm::C_YearLimit)
        d.m_year = TVDateExpTerm::C_YearLimit;
    else if (d.m_year < -TVDateExpTerm::C_YearLimit)
        d.m_year = -TVDateExpTerm::C_YearLimit;
}

// The blank and the invalid date as details: that year, 1 January, 00:00 GMT.
void set_special(TVDateDetails& d, int year)
{
    d.set_defaults(true);
    d.m_year = year;
    d.recalculate();
}

// The one place that asks whether a day is a work day: the set the tag
// names in the configuration, or Monday to Friday without one.
bool passes_workday(const TVDateDetails& d, const TVRepeatConfig* config, const std::string& tag)
{
    return config != nullptr ? config->is_workday(d, tag) : TVDateDetails::is_workday(d);
}

// Day, month and year of now() in its own zone, moved by offset days.
void take_today(TVDateDetails& d, int offset)
{
    TVDate now = TVDateUtils::now();
    TVDateDetails today(now, now.get_timezone());
    d.m_year = today.m_year;
    d.m_month = today.m_month;
    d.m_dayMonth = today.m_dayMonth + offset;
    d.recalculate();
}

bool is_real_zone(int zone)
{
    return zone >= TVDate::C_ZoneMin && zone <= TVDate::C_ZoneMax;
}

// " +3" or " -3".
std::string signed_count(int value)
{
    long size = std::labs(static_cast<long>(value));
    return tv_sprintf(" %c%ld", value < 0 ? '-' : '+', size);
}

bool is_clock_type(int type)
{
    return type == TVDateExpTerm::T_Hour || type == TVDateExpTerm::T_Minute ||
           type == TVDateExpTerm::T_Second || type == TVDateExpTerm::T_Micro;
}

std::string zone_text(int zone)
{
    if (zone == TVDate::C_DefaultTime)
        return " DefaultZone";
    if (zone == TVDate::C_LocalTime)
        return " Local";
    if (!is_real_zone(zone))
        return std::string();
    int seconds = TVDateUtils::zone_to_seconds(zone, false);
    std::string text = " UTC";
    if (seconds != 0) {
        int size = std::abs(seconds);
        text += tv_sprintf("%c%d", seconds < 0 ? '-' : '+', size / TVDate::C_HourSecs);
        int minutes = size % TVDate::C_HourSecs / TVDate::C_MinSecs;
        if (minutes != 0)
            text += tv_sprintf(":%02d", minutes);
    }
    if (zone % 2 != 0)
        text += " DST";
    return text;
}

} // namespace

TVDateExpTerm::TVDateExpTerm()
{
    set_defaults(true);
}

TVDateExpTerm::TVDateExpTerm(E_Type type, int value, const std::string& tag)
    : m_type(type), m_value(value), m_tag(tag)
{
}

void TVDateExpTerm::set_defaults(bool)
{
    m_type = T_Blank;
    m_value = 0;
    m_tag.clear();
}

bool TVDateExpTerm::operator==(const TVDateExpTerm& other) const
{
    return m_type == other.m_type && m_value == other.m_value && m_tag == other.m_tag;
}

int TVDateExpTerm::encode_weekday_month(int occurrence, int weekday)
{
    return weekday + occurrence * C_WeekdayMonthStep + C_WeekdayMonthBase;
}

void TVDateExpTerm::decode_weekday_month(int value, int& occurrence, int& weekday)
{
    occurrence = value / C_WeekdayMonthStep - C_WeekdayMonthBase / C_WeekdayMonthStep;
    weekday = value % C_WeekdayMonthStep;
}

const char* TVDateExpTerm::type_name(int type)
{
    return type >= 0 && type < C_TypeCount ? C_TypeNames[type] : "T_?";
}

int TVDateExpTerm::apply(TVDateDetails& d, const TVRepeatConfig* config) const
{
    int result = TVErrC_ok;
    switch (m_type) {
    case T_Micro:
        d.m_micro = m_value;
        break;
    case T_Second:
        d.m_second = m_value;
        break;
    case T_Minute:
        d.m_minute = m_value;
        break;
    case T_Hour:
        d.m_hour = m_value;
        break;
    case T_Day:
        // A negative day counts back from the month's end: -1 is the last.
        d.recalculate();
        d.m_dayMonth = m_value < 0 ? TVDateUtils::days_in_month(d.m_month, d.m_year) + m_value
                                   : m_value;
        break;
    case T_Weekday:
        if (m_value < C_WeekdayOfMonth) {
            d.set_weekday(m_value, d.m_dayMonth, d.m_month, d.m_year);
        } else {
            int occurrence = 0;
            int weekday = 0;
            decode_weekday_month(m_value, occurrence, weekday);
            d.set_weekdayno(weekday, occurrence, d.m_month, d.m_year);
        }
        break;
    case T_Week:
        // The weekday of the year's first day carries into the new week.
        d.recalculate();
        d.set_dayyear(static_cast<int>(
            clamp_field(static_cast<long>(m_value) * TVDate::C_WeekDays + d.m_dayYear % 7)));
        break;
    case T_Month:
        d.m_month = m_value;
        break;
    case T_Year:
        d.m_year = m_value;
        break;
    case T_AddMicro:
        add_to(d, d.m_micro, m_value);
        break;
    case T_AddSecond:
        add_to(d, d.m_second, m_value);
        break;
    case T_AddMinute:
        add_to(d, d.m_minute, m_value);
        break;
    case T_AddHour:
        add_to(d, d.m_hour, m_value);
        break;
    case T_AddDay:
        add_to(d, d.m_dayMonth, m_value);
        break;
    case T_AddWeek:
        add_to(d, d.m_dayMonth, static_cast<long>(m_value) * TVDate::C_WeekDays);
        break;
    case T_AddMonth: {
        // 31 January + 1 month is the last of February, not 3 March.
        int day = d.m_dayMonth;
        d.m_dayMonth = 0;
        add_to(d, d.m_month, m_value);
        int length = TVDateUtils::days_in_month(d.m_month, d.m_year);
        d.m_dayMonth = day < length ? day : length - 1;
        d.recalculate();
        break;
    }
    case T_AddYear:
        add_to(d, d.m_year, m_value);
        break;
    case T_WorkDay: {
        d.recalculate();
        int steps = 0;
        if (m_value == 0) {
            // Today counts if it is a work day.
            for (; steps < C_MaxWorkdaySteps && !passes_workday(d, config, m_tag); ++steps) {
                ++d.m_dayMonth;
                d.recalculate();
            }
        } else {
            int wanted = m_value > 0 ? m_value : 1;
            for (int found = 0; steps < C_MaxWorkdaySteps; ++steps) {
                ++d.m_dayMonth;
                d.recalculate();
                if (passes_workday(d, config, m_tag) && ++found == wanted)
                    break;
            }
        }
        break;
    }
    case T_Fixed:
        d.recalculate();
        if (!passes_workday(d, config, m_tag))
            result = TVErrC_okNotFinished;
        break;
    case T_Now:
        d.set_date(TVDateUtils::now(), d.m_timeZone);
        break;
    case T_Today:
        take_today(d, 0);
        break;
    case T_Tomorrow:
        take_today(d, 1);
        break;
    case T_Yesterday:
        take_today(d, -1);
        break;
    case T_Zone:
        d.m_timeZone = m_value;
        break;
    case T_Dst: {
        int zone = d.m_timeZone;
        if (!is_real_zone(zone)) {
            TVDateDetails resolved(d);
            zone = resolved.get_date(TVDate::C_OriginalTime).get_timezone();
        }
        d.m_timeZone = TVDateUtils::set_dst_flag(zone, m_value > 0);
        break;
    }
    case T_AM:
        if (m_value > 0 && d.m_hour == 12)
            d.m_hour = 0;
        break;
    case T_PM:
        if (m_value > 0 && d.m_hour < 12)
            d.m_hour += 12;
        break;
    case T_Blank:
        set_special(d, TVDate::C_BlankDateYear);
        break;
    case T_Invalid:
        set_special(d, TVDate::C_InvalidDateYear);
        break;
    case T_Relative:
    case T_Open:
    case T_Or:
    case T_Close:
        break;
    }
    keep_in_range(d);
    return result;
}

std::string TVDateExpTerm::to_string(int previousType, int nextType) const
{
    const TVLocale* locale = tvlocale();
    switch (m_type) {
    case T_Micro:
        if (previousType == T_Second)
            return m_value > 0 ? tv_sprintf(".%06d", m_value) : std::string();
        return tv_sprintf(" uSecond %d", m_value);
    case T_Second:
        return previousType == T_Minute ? tv_sprintf(":%02d", m_value)
                                        : tv_sprintf(" Second %d", m_value);
    case T_Minute:
        return previousType == T_Hour ? tv_sprintf(":%02d", m_value)
                                      : tv_sprintf(" Minute %d", m_value);
    case T_Hour:
        return nextType == T_Minute ? tv_sprintf(" %2d", m_value) : tv_sprintf(" Hour %d", m_value);
    case T_Day:
        // Values from 40 are written as the weekday-of-month codes of the
        // repeat rules are.
        if (m_value >= C_WeekdayMonthBase)
            return " " + locale->get_ordinal(m_value % C_WeekdayMonthStep, true) + " " +
                   std::to_string(m_value / C_WeekdayMonthStep -
                                  C_WeekdayMonthBase / C_WeekdayMonthStep);
        if (previousType == T_Month || nextType == T_Month)
            return " " + std::to_string(static_cast<long>(m_value) + 1);
        return " " + locale->get_ordinal(m_value < 0 ? m_value : m_value + 1, true);
    case T_Weekday: {
        if (m_value < C_WeekdayOfMonth)
            return " " + locale->weekday_name(m_value, true);
        int occurrence = 0;
        int weekday = 0;
        decode_weekday_month(m_value, occurrence, weekday);
        return " " + locale->get_ordinal(occurrence + 1, true) + " " +
               locale->weekday_name(weekday, true);
    }
    case T_Week:
        return " Week " + std::to_string(static_cast<long>(m_value) + 1);
    case T_Month:
        return " " + locale->month_name(m_value, true);
    case T_Year:
        return " " + std::to_string(m_value);
    case T_AddMicro:
        return signed_count(m_value) + " USecond";
    case T_AddSecond:
        return signed_count(m_value) + " Second";
    case T_AddMinute:
        return signed_count(m_value) + " Minute";
    case T_AddHour:
        return signed_count(m_value) + " Hour";
    case T_AddDay:
        return signed_count(m_value) + " Day";
    case T_AddWeek:
        return signed_count(m_value) + " Week";
    case T_AddMonth:
        return signed_count(m_value) + " Month";
    case T_AddYear:
        return signed_count(m_value) + " Year";
    case T_WorkDay:
        return (m_value != 0 ? signed_count(m_value) : std::string()) +
               (m_tag.empty() ? " WorkDay" : " WorkDayFor " + m_tag);
    case T_Fixed:
        return m_tag.empty() ? " Fixed" : " FixedFor " + m_tag;
    case T_Now:
        return " Now";
    case T_Today:
        return " Today";
    case T_Tomorrow:
        return " Tomorrow";
    case T_Yesterday:
        return " Yesterday";
    case T_Relative:
        return " @" + m_tag;
    case T_Zone:
        return zone_text(m_value);
    case T_Dst:
        return m_value > 0 ? " DST" : " NoDST";
    case T_AM:
        return is_clock_type(previousType) ? "AM" : " AM";
    case T_PM:
        return is_clock_type(previousType) ? "PM" : " PM";
    case T_Blank:
        return std::string();
    case T_Open:
        return "(";
    case T_Or:
        return "|";
    case T_Close:
        return ")";
    case T_Invalid:
        return " INVALID";
    }
    return std::string();
}

void TVDateExpTerm::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ') << *this << "\n";
}

std::ostream& operator<<(std::ostream& out, const TVDateExpTerm& term)
{
    out << TVDateExpTerm::type_name(term.get_type()) << ' ' << term.get_value();
    if (!term.get_tag().empty())
        out << " @" << term.get_tag();
    return out;
}
