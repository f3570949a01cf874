#ifndef TVDATEUTILS_H
#define TVDATEUTILS_H

// TVDateUtils: static helpers for dates, zones and the calendar.
//
// The calendar is the Gregorian one for every year, the proleptic past
// included (leap: divisible by 4 and not by 100, or by 400); month and day
// numbers are zero-based. Only the question whether a local date falls in
// daylight saving goes to the C library (mktime, localtime), so the TZ
// environment variable decides it; the offset of the local zone itself
// comes from TVLocale::get_local_timezone().
//
// now() and local_is_dst() keep static caches: a test that changes TZ, the
// clock or the local zone calls clear_caches() (set_clock does it).

#include <string>
#include <vector>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvduration.h"

class TVDateSlot; // LibDate/core/tvdateslot.h, which includes this header
class TVRepeatConfig;

class TVDateUtils
{
public:
    // Source of "now": seconds since 1970 and the microsecond. Tests install
    // their own; nullptr means the system clock.
    using ClockFn = void (*)(long& seconds, int& micro);
    static void set_clock(ClockFn clock);
    // Forgets the cached now() and local_is_dst() answers.
    static void clear_caches();

    // ---- Zones (encoding in tvdate.h) --------------------------------------

    // The offset in seconds east of GMT; withDST adds the hour of an odd zone.
    static int zone_to_seconds(int zone, bool withDST);
    // The zone of an offset; removeDST first takes the hour of a DST offset
    // off. An offset beyond C_ZoneMin..C_ZoneMax seconds gives C_GMT.
    static int seconds_to_zone(long seconds, bool isDST, bool removeDST);
    // Same base zone, daylight saving aside.
    static bool zones_equivalent(int a, int b);
    // zone % 2 == 1: false for a negative odd zone, deliberately.
    static bool zone_is_dst(int zone);
    // Sets or clears the flag; clearing leaves a negative odd zone as it is,
    // the counterpart of zone_is_dst.
    static int set_dst_flag(int zone, bool isDST);
    // "GMT", "GMT+10", "GMT-03:30", "GMT+05:30:15", " DST" behind a zone for
    // which zone_is_dst holds, "Local Time", "Keep" or "Keep (zone)" for
    // C_OriginalTime with a real or local originalZone.
    static std::string zone_to_string(int zone, int originalZone);
    // Resolves a symbolic zone for date: C_OriginalTime the date's own zone,
    // other symbols the locale's zone, C_LocalTime the local zone with the
    // DST flag of the date's GMT calendar day. A chain of symbols that never
    // reaches a zone ends as local time. A real zone is returned as it is.
    static int expand_timezone(int zone, const TVDate& date);

    // ---- Daylight saving (by the C library) --------------------------------

    // Whether 12:00 of that local day is in daylight saving time.
    static bool date_is_dst(int day, int month, int year);
    // The date's zone is the local one with the right DST flag for its day.
    static bool date_is_local(const TVDate& date);
    // Whether the present moment is in daylight saving time; asked once.
    static bool local_is_dst();

    // ---- The present moment and fixed values -------------------------------

    // Whole seconds, in the default zone; one-second grain. now() and unow()
    // may be called from any thread once the locale exists: the error
    // records of worker threads are stamped with them.
    static TVDate now();
    // now() with the microsecond of the clock.
    static TVDate unow();
    static TVDate blank_date();
    static TVDate invalid_date();
    static TVDate zero_date();

    // A date expression through TVDate's parser hook (invalid without one).
    static TVDate read_date(const std::string& text, const TVRepeatConfig* config,
                            const TVDate* base);
    // TVDuration::from_string with a default of 0.
    static TVDuration read_duration(const std::string& text);

    // ---- Calendar ----------------------------------------------------------

    static bool is_leap_year(int year);
    static int days_in_year(int year);
    // A month outside 0-11 moves the year first.
    static int days_in_month(int month, int year);
    // Days from 1 January of year 0 to 1 January of year (negative before).
    static long days_before_year(long year);
    // The year and day of year of day `days` counted from 1 January of year 0.
    static void split_days(long days, int& year, int& dayOfYear);
    // Year, month and day of a day of year, which may lie outside the year.
    static void breakdown_yearday(int dayOfYear, int year, int& outYear, int& month, int& day);
    // Normalised year and day of year of a year, month and day, each of which
    // may be out of range: day -1 of January is 31 December before.
    static void calc_yearday(int year, int month, int day, int& outYear, int& dayOfYear);

    // ---- Rounding, each in the date's own zone -----------------------------
    // Blank and invalid dates come back as they are.

    static TVDate round_hour(const TVDate& date);   // minute, second, micro 0
    static TVDate round_minute(const TVDate& date); // second, micro 0
    static TVDate start_day(const TVDate& date);    // 00:00:00
    static TVDate end_day(const TVDate& date);      // 23:59:59
    static TVDate start_week(const TVDate& date);   // locale's first day 00:00:00
    static TVDate end_week(const TVDate& date);     // last day of that week 23:59:59
    static TVDate start_month(const TVDate& date);
    static TVDate end_month(const TVDate& date);
    static TVDate start_year(const TVDate& date);
    static TVDate end_year(const TVDate& date);
    // The slot from the start to the end of the date's day, week, month or
    // year; blank and invalid dates give a slot of that date.
    static TVDateSlot day_slot(const TVDate& date);
    static TVDateSlot week_slot(const TVDate& date);
    static TVDateSlot month_slot(const TVDate& date);
    static TVDateSlot year_slot(const TVDate& date);
    // Zone 0 with the same clock reading as date has in its zone.
    static TVDate ignore_zone(const TVDate& date);

    // ---- Tokens of date and duration texts ---------------------------------

    // Runs of digits; runs of ASCII letters, upper-cased; a run of blanks,
    // tabs and line ends as one " "; any other byte alone.
    static std::vector<std::string> split_tokens(const std::string& text);

private:
    // now() for a clock reading of the given second.
    static TVDate now_at(long seconds);
    static void read_clock(long& seconds, int& micro);
};

#endif // TVDATEUTILS_H
