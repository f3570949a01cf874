#include "LibDate/core/tvdateutils.h"

#include <cctype>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <unordered_map>

#include "LibCore/textstr/tvtextstr.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibDate/core/tvdateslot.h"
#include "LibDate/core/tvlocale.h"

namespace {

// A chain of symbolic zones (a date kept in "original" whose locale says
// "original") could name itself for ever; after this many steps it ends as
// local time.
const int C_MaxZoneSteps = 4;
// mktime is asked about these years only; others stand in as 1970.
const int C_FirstMktimeYear = 1901;
const int C_LastMktimeYear = 9999;
const int C_MktimeStandInYear = 1970;
const int C_NoonHour = 12;

TVDateUtils::ClockFn s_clock = nullptr;

struct NowCache
{
    std::mutex m_mutex;
    bool m_valid = false;
    long m_second = 0;
    int m_zone = 0;
    int m_localZone = 0;
    TVDate m_date;
};

NowCache& now_cache()
{
    static NowCache cache;
    return cache;
}

struct DstCache
{
    bool m_known = false;
    bool m_dst = false;
};

DstCache& dst_cache()
{
    static DstCache cache;
    return cache;
}

long floor_div(long a, long b)
{
    long q = a / b;
    if ((a % b != 0) && ((a < 0) != (b < 0)))
        --q;
    return q;
}

int floor_mod(long a, long b)
{
    return static_cast<int>(a - floor_div(a, b) * b);
}

bool is_real_zone(int zone)
{
    return zone >= TVDate::C_ZoneMin && zone <= TVDate::C_ZoneMax;
}

const int* month_table(long year)
{
    return TVDateUtils::is_leap_year(static_cast<int>(year)) ? TVDate::C_DaysInMonthL
                                                             : TVDate::C_DaysInMonth;
}

// The C library's view of 12:00 of that local day. mktime reads the zone
// file again at every call, which made showing a date cost some 10 us, so
// the answers are kept per thread for as long as TZ says the same.
constexpr size_t C_DstCacheDays = 4096;

bool noon_is_dst_uncached(int year, int month, int day);

bool noon_is_dst(int year, int month, int day)
{
    thread_local std::unordered_map<long, bool> known;
    thread_local std::string zone;
    const char* tz = std::getenv("TZ");
    if (zone != (tz != nullptr ? tz : "\n")) {
        zone = tz != nullptr ? tz : "\n"; // a TZ of one newline stands for none
        known.clear();
    }
    if (known.size() >= C_DstCacheDays)
        known.clear();
    const long key = (static_cast<long>(year) * 12 + month) * 31 + day;
    const auto found = known.find(key);
    if (found != known.end())
        return found->second;
    const bool dst = noon_is_dst_uncached(year, month, day);
    known.emplace(key, dst);
    return dst;
}

bool noon_is_dst_uncached(int year, int month, int day)
{
    std::tm parts{};
    bool known = year >= C_FirstMktimeYear && year <= C_LastMktimeYear;
    parts.tm_year = (known ? year : C_MktimeStandInYear) - 1900;
    parts.tm_mon = month;
    parts.tm_mday = day + 1;
    parts.tm_hour = C_NoonHour;
    parts.tm_isdst = -1;
    std::mktime(&parts);
    return parts.tm_isdst > 0;
}

// Applies change to the date's calendar fields in its own zone.
template <class Change>
TVDate reshape(const TVDate& date, Change change)
{
    if (!date.is_ok())
        return date;
    TVDateDetails details(date, date.get_timezone());
    change(details);
    return details.get_date(TVDate::C_OriginalTime);
}

void set_clock_reading(TVDateDetails& details, int hour, int minute, int second)
{
    details.m_hour = hour;
    details.m_minute = minute;
    details.m_second = second;
    details.m_micro = 0;
}

void start_of_day(TVDateDetails& details)
{
    set_clock_reading(details, 0, 0, 0);
}

void end_of_day(TVDateDetails& details)
{
    set_clock_reading(details, TVDate::C_DayHours - 1, TVDate::C_HourMins - 1,
                      TVDate::C_MinSecs - 1);
}

// Days from the locale's first day of the week back to the details' day.
int days_into_week(const TVDateDetails& details)
{
    return floor_mod(details.m_dayWeek - tvlocale()->get_firstday(), TVDate::C_WeekDays);
}

} // namespace

// ---- Clock ------------------------------------------------------------------

void TVDateUtils::set_clock(ClockFn clock)
{
    s_clock = clock;
    clear_caches();
}

void TVDateUtils::clear_caches()
{
    NowCache& cache = now_cache();
    {
        std::lock_guard<std::mutex> lock(cache.m_mutex);
        cache.m_valid = false;
    }
    dst_cache().m_known = false;
}

void TVDateUtils::read_clock(long& seconds, int& micro)
{
    if (s_clock != nullptr) {
        s_clock(seconds, micro);
        return;
    }
    long long us = std::chrono::duration_cast<std::chrono::microseconds>(
                       std::chrono::system_clock::now().time_since_epoch())
                       .count();
    seconds = static_cast<long>(floor_div(static_cast<long>(us), TVDate::C_MicroSecs));
    micro = static_cast<int>(us - static_cast<long long>(seconds) * TVDate::C_MicroSecs);
}

// ---- Zones ------------------------------------------------------------------

int TVDateUtils::zone_to_seconds(int zone, bool withDST)
{
    return zone / 2 + (withDST && zone % 2 != 0 ? TVDate::C_HourSecs : 0);
}

int TVDateUtils::seconds_to_zone(long seconds, bool isDST, bool removeDST)
{
    if (isDST && removeDST)
        seconds -= TVDate::C_HourSecs;
    if (seconds < TVDate::C_ZoneMin || seconds > TVDate::C_ZoneMax)
        return TVDate::C_GMT;
    int zone = static_cast<int>(seconds * 2);
    if (isDST)
        zone += zone < 0 ? -1 : 1;
    return zone;
}

bool TVDateUtils::zones_equivalent(int a, int b)
{
    return a / 2 == b / 2;
}

bool TVDateUtils::zone_is_dst(int zone)
{
    return zone % 2 == 1;
}

int TVDateUtils::set_dst_flag(int zone, bool isDST)
{
    if (isDST) {
        if (zone % 2 != 0)
            return zone;
        return zone < 0 ? zone - 1 : zone + 1;
    }
    if (!zone_is_dst(zone))
        return zone;
    return zone - 1;
}

std::string TVDateUtils::zone_to_string(int zone, int originalZone)
{
    if (zone == TVDate::C_LocalTime)
        return "Local Time";
    if (zone == TVDate::C_OriginalTime) {
        std::string text = "Keep";
        if (is_real_zone(originalZone) || originalZone == TVDate::C_LocalTime)
            text += " (" + zone_to_string(originalZone, TVDate::C_OriginalTime) + ")";
        return text;
    }
    if (!is_real_zone(zone)) {
        // The default zone, and any out-of-range number taken as it.
        int fallback = tvlocale()->get_timezone();
        if (!is_real_zone(fallback) && fallback != TVDate::C_OriginalTime)
            fallback = TVDate::C_LocalTime;
        return zone_to_string(fallback, TVDate::C_OriginalTime);
    }

    std::string text;
    if (zone >= -1 && zone <= 1) {
        text = "GMT";
    } else {
        int seconds = std::abs(zone / 2);
        int hours = seconds / TVDate::C_HourSecs;
        int minutes = seconds % TVDate::C_HourSecs / TVDate::C_MinSecs;
        seconds %= TVDate::C_MinSecs;
        char sign = zone > 0 ? '+' : '-';
        if (minutes == 0)
            text = tv_sprintf("GMT%c%02d", sign, hours);
        else if (seconds != 0)
            text = tv_sprintf("GMT%c%02d:%02d:%02d", sign, hours, minutes, seconds);
        else
            text = tv_sprintf("GMT%c%02d:%02d", sign, hours, minutes);
    }
    if (zone_is_dst(zone))
        text += " DST";
    return text;
}

int TVDateUtils::expand_timezone(int zone, const TVDate& date)
{
    if (is_real_zone(zone))
        return zone;
    const TVLocale* locale = tvlocale();
    for (int step = 0; step < C_MaxZoneSteps && zone != TVDate::C_LocalTime; ++step) {
        int next = locale->get_timezone();
        if (zone == TVDate::C_OriginalTime && date.get_timezone() != TVDate::C_OriginalTime)
            next = date.get_timezone();
        if (is_real_zone(next))
            return next;
        zone = next;
    }
    // Local time: the offset is the locale's, the DST flag that of the
    // date's calendar day taken in GMT.
    int year = 0;
    int month = 0;
    int day = 0;
    breakdown_yearday(date.get_day_of_year(), date.get_year(), year, month, day);
    return set_dst_flag(locale->get_local_timezone(), noon_is_dst(year, month, day));
}

// ---- Daylight saving --------------------------------------------------------

bool TVDateUtils::date_is_dst(int day, int month, int year)
{
    return noon_is_dst(year, month, day);
}

bool TVDateUtils::date_is_local(const TVDate& date)
{
    int zone = date.get_timezone();
    if (!is_real_zone(zone) || !zones_equivalent(zone, tvlocale()->get_local_timezone()))
        return false;
    TVDateDetails details(date, zone);
    bool flagged = zone % 2 != 0;
    return flagged == date_is_dst(details.m_dayMonth, details.m_month, details.m_year);
}

bool TVDateUtils::local_is_dst()
{
    DstCache& cache = dst_cache();
    if (!cache.m_known) {
        long seconds = 0;
        int micro = 0;
        read_clock(seconds, micro);
        std::time_t now = static_cast<std::time_t>(seconds);
        std::tm parts{};
        cache.m_dst = localtime_r(&now, &parts) != nullptr && parts.tm_isdst > 0;
        cache.m_known = true;
    }
    return cache.m_dst;
}

// ---- Now and fixed values ---------------------------------------------------

TVDate TVDateUtils::now_at(long seconds)
{
    const TVLocale* locale = tvlocale();
    int zone = locale->get_timezone();
    int localZone = locale->get_local_timezone();
    NowCache& cache = now_cache();
    std::lock_guard<std::mutex> lock(cache.m_mutex);
    if (!cache.m_valid || cache.m_second != seconds || cache.m_zone != zone ||
        cache.m_localZone != localZone) {
        cache.m_date.set_time_t(seconds, TVDate::C_DefaultTime);
        cache.m_second = seconds;
        cache.m_zone = zone;
        cache.m_localZone = localZone;
        cache.m_valid = true;
    }
    return cache.m_date;
}

TVDate TVDateUtils::now()
{
    long seconds = 0;
    int micro = 0;
    read_clock(seconds, micro);
    return now_at(seconds);
}

TVDate TVDateUtils::unow()
{
    long seconds = 0;
    int micro = 0;
    read_clock(seconds, micro);
    TVDate date = now_at(seconds);
    date.set_micro(micro);
    return date;
}

TVDate TVDateUtils::blank_date()
{
    return TVDate(TVDate::E_DateBlank);
}

TVDate TVDateUtils::invalid_date()
{
    return TVDate(TVDate::E_DateInvalid);
}

TVDate TVDateUtils::zero_date()
{
    return TVDate(TVDate::E_DateZero);
}

TVDate TVDateUtils::read_date(const std::string& text, const TVRepeatConfig* config,
                              const TVDate* base)
{
    return TVDate(text, config, base);
}

TVDuration TVDateUtils::read_duration(const std::string& text)
{
    TVDuration duration;
    duration.from_string(text, 0);
    return duration;
}

// ---- Calendar ---------------------------------------------------------------

bool TVDateUtils::is_leap_year(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int TVDateUtils::days_in_year(int year)
{
    return is_leap_year(year) ? 366 : 365;
}

int TVDateUtils::days_in_month(int month, int year)
{
    long fullYear = year + floor_div(month, TVDate::C_YearMonths);
    return month_table(fullYear)[floor_mod(month, TVDate::C_YearMonths)];
}

void TVDateUtils::split_days(long days, int& year, int& dayOfYear)
{
    const long cycleDays = 146097;
    const long cycleYears = 400;
    long cycles = floor_div(days, cycleDays);
    // A guess within a year or so of the answer, then exact steps.
    long guess = cycles * cycleYears + (days - cycles * cycleDays) * cycleYears / cycleDays;
    while (days_before_year(guess) > days)
        --guess;
    while (days_before_year(guess + 1) <= days)
        ++guess;
    year = static_cast<int>(guess);
    dayOfYear = static_cast<int>(days - days_before_year(guess));
}

long TVDateUtils::days_before_year(long year)
{
    // Year 0 is a leap year, so the leap years before `year` are counted
    // with ceilings, which floor division gives for either sign.
    return 365 * year + floor_div(year + 3, 4) - floor_div(year + 99, 100) +
           floor_div(year + 399, 400);
}

void TVDateUtils::breakdown_yearday(int dayOfYear, int year, int& outYear, int& month, int& day)
{
    if (dayOfYear < 0 || dayOfYear >= days_in_year(year))
        split_days(days_before_year(year) + dayOfYear, year, dayOfYear);
    const int* lengths = month_table(year);
    month = 0;
    while (dayOfYear >= lengths[month])
        dayOfYear -= lengths[month++];
    outYear = year;
    day = dayOfYear;
}

void TVDateUtils::calc_yearday(int year, int month, int day, int& outYear, int& dayOfYear)
{
    long fullYear = year + floor_div(month, TVDate::C_YearMonths);
    int monthInYear = floor_mod(month, TVDate::C_YearMonths);
    const int* lengths = month_table(fullYear);
    long inYear = day;
    for (int m = 0; m < monthInYear; ++m)
        inYear += lengths[m];
    // A day within its year, as every stored date is: no search for the year.
    if (inYear >= 0 && inYear < days_in_year(static_cast<int>(fullYear)) &&
        fullYear == static_cast<int>(fullYear)) {
        outYear = static_cast<int>(fullYear);
        dayOfYear = static_cast<int>(inYear);
        return;
    }
    split_days(days_before_year(fullYear) + inYear, outYear, dayOfYear);
}

// ---- Rounding ---------------------------------------------------------------

TVDate TVDateUtils::round_hour(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) { set_clock_reading(d, d.m_hour, 0, 0); });
}

TVDate TVDateUtils::round_minute(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) { set_clock_reading(d, d.m_hour, d.m_minute, 0); });
}

TVDate TVDateUtils::start_day(const TVDate& date)
{
    return reshape(date, start_of_day);
}

TVDate TVDateUtils::end_day(const TVDate& date)
{
    return reshape(date, end_of_day);
}

TVDate TVDateUtils::start_week(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) {
        d.m_dayMonth -= days_into_week(d);
        start_of_day(d);
    });
}

TVDate TVDateUtils::end_week(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) {
        d.m_dayMonth += TVDate::C_WeekDays - 1 - days_into_week(d);
        end_of_day(d);
    });
}

TVDate TVDateUtils::start_month(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) {
        d.m_dayMonth = 0;
        start_of_day(d);
    });
}

TVDate TVDateUtils::end_month(const TVDate& date)
{
    // Day -1 of the next month is the last of this one, whatever its length.
    return reshape(date, [](TVDateDetails& d) {
        ++d.m_month;
        d.m_dayMonth = -1;
        end_of_day(d);
    });
}

TVDate TVDateUtils::start_year(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) {
        d.m_month = 0;
        d.m_dayMonth = 0;
        start_of_day(d);
    });
}

TVDate TVDateUtils::end_year(const TVDate& date)
{
    return reshape(date, [](TVDateDetails& d) {
        d.m_month = TVDate::C_YearMonths - 1;
        d.m_dayMonth = 30;
        end_of_day(d);
    });
}

TVDateSlot TVDateUtils::day_slot(const TVDate& date)
{
    return TVDateSlot(start_day(date), end_day(date), false);
}

TVDateSlot TVDateUtils::week_slot(const TVDate& date)
{
    return TVDateSlot(start_week(date), end_week(date), false);
}

TVDateSlot TVDateUtils::month_slot(const TVDate& date)
{
    return TVDateSlot(start_month(date), end_month(date), false);
}

TVDateSlot TVDateUtils::year_slot(const TVDate& date)
{
    return TVDateSlot(start_year(date), end_year(date), false);
}

TVDate TVDateUtils::ignore_zone(const TVDate& date)
{
    if (!date.is_ok())
        return date;
    TVDateDetails d(date, date.get_timezone());
    return TVDate(d.m_year, d.m_month, d.m_dayMonth, d.m_hour, d.m_minute, d.m_second, d.m_micro,
                  TVDate::C_GMT);
}

// ---- Tokens -----------------------------------------------------------------

std::vector<std::string> TVDateUtils::split_tokens(const std::string& text)
{
    auto is_blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    auto is_digit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
    auto is_letter = [](char c) {
        unsigned char u = static_cast<unsigned char>(c);
        return u < 0x80 && std::isalpha(u) != 0;
    };

    std::vector<std::string> tokens;
    size_t pos = 0;
    while (pos < text.size()) {
        char c = text[pos];
        size_t end = pos + 1;
        if (is_blank(c)) {
            while (end < text.size() && is_blank(text[end]))
                ++end;
            tokens.emplace_back(" ");
        } else if (is_digit(c)) {
            while (end < text.size() && is_digit(text[end]))
                ++end;
            tokens.push_back(text.substr(pos, end - pos));
        } else if (is_letter(c)) {
            while (end < text.size() && is_letter(text[end]))
                ++end;
            std::string word = text.substr(pos, end - pos);
            for (char& w : word)
                w = static_cast<char>(std::toupper(static_cast<unsigned char>(w)));
            tokens.push_back(word);
        } else {
            tokens.emplace_back(1, c);
        }
        pos = end;
    }
    return tokens;
}
