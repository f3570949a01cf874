#ifndef TVDATEDETAILS_H
#define TVDATEDETAILS_H

// TVDateDetails: a date broken down into calendar fields for one zone.
//
// All calendar arithmetic is done here: change the public fields freely (a
// day of 40, a month of -1, an hour of 30), then recalculate() brings them
// back into range and works out the day of year, weekday and week numbers.
// get_date() turns the result back into a TVDate.
//
// A date in the local zone takes the DST flag of its new calendar day on
// every recalculate, so moving one across a change of clocks keeps the
// clock reading and changes the offset.

#include <iosfwd>

class TVDate;

class TVDateDetails
{
public:
    // All fields 0 (zone GMT); set_date before use.
    TVDateDetails();
    TVDateDetails(const TVDate& date, int zone);
    virtual ~TVDateDetails() = default;

    TVDateDetails(const TVDateDetails&) = default;
    TVDateDetails& operator=(const TVDateDetails&) = default;

    void set_defaults(bool init = true);

    // The clock reading of date in zone (expanded if symbolic).
    void set_date(const TVDate& date, int zone);
    void recalculate();
    // The date of the fields, labelled with zone: C_LocalTime the local zone
    // with that day's DST flag, C_OriginalTime these details' own zone,
    // C_DefaultTime the locale's, a real zone itself; other numbers keep
    // the details' zone.
    TVDate get_date(int zone);

    // The occurrence-th (0-4) weekday of month; 5 is the last one of the
    // month. An occurrence 4 that overruns the month runs into the next.
    void set_weekdayno(int weekday, int occurrence, int month, int year);
    // The given weekday in the week that holds day `week` of the month
    // (a day number, zero-based), weeks starting on the locale's first day.
    void set_weekday(int weekday, int week, int month, int year);
    // Day `day` (zero-based) counted from 1 January of m_year, into later
    // years if need be; a day more than 100 months ahead changes nothing.
    void set_dayyear(int day);
    void add_seconds(int seconds);

    // Monday to Friday.
    static bool is_workday(const TVDateDetails& details);

    virtual void dump(std::ostream& out, int indent) const;

    int m_year;
    int m_weekYear;  // week of the year; the week holding 1 January is 0
    int m_dayYear;   // 0 is 1 January
    int m_month;     // 0-11
    int m_weekMonth; // week of the month; the week holding the 1st is 0
    int m_dayMonth;  // 0 is the 1st
    int m_dayWeek;   // 0 is Sunday
    int m_hour;
    int m_minute;
    int m_second;
    int m_micro;
    int m_timeZone;
    bool m_isDST; // the zone carries the DST flag (either sign)
};

#endif // TVDATEDETAILS_H
