#ifndef TVDATE_H
#define TVDATE_H

// TVDate: the program's one date-time value.
//
// Year, zero-based day of year, second of the day and microsecond, all held
// in GMT, plus a zone label that only decides how the date is broken down
// and printed. Two dates are the same moment when the first four fields
// agree; == also compares the zone, on purpose.
//
// Three values are not moments: blank (year 9999, "no date given"), invalid
// (year 9998: the default and the result of a failed parse) and zero (year
// 0, for dates used as spans). Blank and invalid sort after every real date
// and are left as they are by arithmetic.
//
// Zone encoding: from C_ZoneMin to C_ZoneMax, twice the offset east of GMT
// in seconds, moved one further from zero while daylight saving is in force
// (GMT+10 is 72000, with DST 72001). C_LocalTime, C_OriginalTime and
// C_DefaultTime are symbolic and resolved by TVDateUtils::expand_timezone;
// any other number out of range counts as symbolic too.
//
// Stream form (object serialisation), all from the GMT fields:
//   date  := [micro6] second2 minute2 hour2 day2 month2 year5 zone6
// printf widths, day and month zero-based, the micro only when non-zero, a
// negative zone signed inside its six characters. The reader also takes a
// quoted date expression and, from old files, a bare time_t of at most 11
// digits.
//
// Month and day numbers are zero-based everywhere. A plain value; the only
// shared state is TVLocale (zones, formats) and the parser hook.

#include <iosfwd>
#include <string>
#include <string_view>

#include "LibDate/core/tvduration.h"
#include "LibObject/core/tvid.h"

class TVRepeatConfig;

class TVDate
{
public:
    enum E_DateInit { E_DateInvalid = 0, E_DateZero = 1, E_DateBlank = 2 };

    static constexpr int C_LocalTime = 90000;
    static constexpr int C_OriginalTime = 90001;
    static constexpr int C_DefaultTime = 90002;
    static constexpr int C_GMT = 0;
    static constexpr int C_ZoneMin = -86400;
    static constexpr int C_ZoneMax = 86400;
    static constexpr int C_MicroSecs = 1000000;
    static constexpr int C_MinSecs = 60;
    static constexpr int C_HourMins = 60;
    static constexpr int C_DayHours = 24;
    static constexpr int C_WeekDays = 7;
    static constexpr int C_YearMonths = 12;
    static constexpr int C_HourSecs = 3600;
    static constexpr int C_DaySecs = 86400;
    static constexpr int C_WeekSecs = 604800;
    static constexpr int C_InvalidYear = -99999;
    static constexpr int C_BlankDateYear = 9999;
    static constexpr int C_InvalidDateYear = 9998;
    static constexpr int C_DaysInMonth[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    static constexpr int C_DaysInMonthL[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    static const TVDate C_Blank;

    // The date expression parser lives in a higher library and installs
    // itself here. It fills out and answers whether the text was a date.
    using ParseFn = bool (*)(const std::string& text, const TVRepeatConfig* config,
                             const TVDate* base, TVDate& out);
    static void set_parser(ParseFn parser);

    // Invalid.
    TVDate();
    explicit TVDate(E_DateInit init);
    // A clock reading in zone (real or symbolic); month and day zero-based,
    // every number may be out of range and is normalised.
    TVDate(int year, int month, int day, int hour, int minute, int second, int micro, int zone);
    // Raw GMT fields and zone, stored as given.
    TVDate(int year, int dayOfYear, int second, int micro, int zone);
    // A date expression relative to base (or now); invalid if it can't be
    // read or no parser is installed.
    TVDate(const std::string& text, const TVRepeatConfig* config, const TVDate* base);
    virtual ~TVDate() = default;

    TVDate(const TVDate&) = default;
    TVDate& operator=(const TVDate&) = default;

    void set_defaults(bool init = true);

    void set_blank();
    void set_invalid();
    void set_zero();
    bool is_blank() const { return m_year == C_BlankDateYear; }
    bool is_invalid() const { return m_year == C_InvalidDateYear; }
    bool is_zero() const;
    // False for blank and invalid; the zero date is ok.
    bool is_ok() const { return m_year != C_BlankDateYear && m_year != C_InvalidDateYear; }

    // See the eight-number constructor.
    void set_date(int year, int month, int day, int hour, int minute, int second, int micro,
                  int zone);
    // Expands and stores zone; the moment stays.
    void set_timezone(int zone);
    // Sets the microsecond, carrying any excess into the seconds.
    void set_micro(int micro);

    int get_year() const { return m_year; }
    int get_day_of_year() const { return m_dayOfYear; }
    int get_second_of_day() const { return m_second; }
    int get_microsecond() const { return m_micro; }
    int get_timezone() const { return m_timeZone; }

    // Parses a date expression through the installed parser. False exactly
    // when the result is the invalid date.
    bool from_string(const std::string& text, const TVRepeatConfig* config, const TVDate* base);
    // Formats by the % codes of the locale; "" for blank and invalid dates,
    // the locale's date_format() for an empty format.
    std::string to_string(const std::string& format) const;

    // Order by moment, ignoring the zone; blank and invalid come last.
    bool operator<(const TVDate& other) const;
    bool operator<=(const TVDate& other) const;
    bool operator>(const TVDate& other) const;
    bool operator>=(const TVDate& other) const;
    // All five fields, the zone included.
    bool operator==(const TVDate& other) const;
    bool operator!=(const TVDate& other) const { return !(*this == other); }

    TVDuration operator-(const TVDate& other) const;
    TVDate operator+(const TVDuration& span) const;
    TVDate operator-(const TVDuration& span) const;
    TVDate& operator+=(const TVDuration& span);
    TVDate& operator-=(const TVDuration& span);

    // Seconds since 1970 for a year from 1940 to 2030, else 0.
    long get_time_t() const;
    // 1 January 1970 plus value seconds, labelled with zone.
    void set_time_t(long value, int zone);
    // The date as a span since year 0.
    TVDuration get_duration() const;

    // (year, day of year, second): drops the microsecond and the zone.
    TVId to_id() const;
    // Microsecond 0, labelled with the default zone.
    void from_id(const TVId& id);

    // Widen a bound: a blank or invalid date takes other; a blank or invalid
    // other changes nothing; else the later (earlier) of the two stays.
    void set_latest(const TVDate& other);
    void set_earliest(const TVDate& other);

    virtual void dump(std::ostream& out, int indent) const;

private:
    // Carries micro into seconds, seconds into days, days into years.
    void recalculate();
    // Stores the moment given as days since year 0 plus seconds and micro,
    // any of them out of range.
    void set_moment(long days, long second, long micro);

    int m_year;
    int m_dayOfYear;
    int m_second;
    int m_micro;
    int m_timeZone;
};

// The sense of operator<, for sorting.
bool compare_tvdates(const TVDate& a, const TVDate& b);

std::ostream& operator<<(std::ostream& out, const TVDate& date);
// Reads digits and "-", or a quoted expression; see the stream form above.
// Nothing to read gives the invalid date and sets failbit.
std::istream& operator>>(std::istream& in, TVDate& date);
// The same without a stream: the stored text appended to out; and a text
// of digits and "-" alone read as operator>> reads it (false for any other
// text, which only the stream reads).
void tv_date_append(std::string& out, const TVDate& date);
bool tv_date_from_digits(std::string_view text, TVDate& date);

// Older code reached the helpers through this header alone.
#include "LibDate/core/tvdateutils.h"

#endif // TVDATE_H
