#ifndef TVDATESLOT_H
#define TVDATESLOT_H

// TVDateSlot: a span of time, a start and an end TVDate. A slot whose two
// dates are equal is one moment. A plain value: copy freely.
//
// Slots are closed: within() holds on both bounds. By the ordering rules
// of TVDate a blank or invalid end lies after every real date, so a slot
// with a blank end holds everything from its start on. Slots that only
// touch (one's end is the other's start) don't intersect, but they merge.
//
// Stream form (inside the serial form of objects), TVDate's stream form
// for each date:
//   slot := date "&"             ; a moment: the end equals the start
//         | date "=" date        ; start and end
//         | date "+" seconds     ; read only: the end is the start plus a
//                                ; signed count, the two swapped if backward
// Compact form (one day or a run of days, in the dates' own zones):
//   compact := yyyymmdd [ yyyymmdd ]

#include <iosfwd>
#include <string>
#include <vector>

#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvduration.h"

class TVDateSlot
{
public:
    static const TVDateSlot C_Blank;

    // Both dates invalid.
    TVDateSlot();
    explicit TVDateSlot(TVDate::E_DateInit init);
    // The moment date.
    explicit TVDateSlot(const TVDate& date);
    // From a to b; with order, a later than b is swapped. No other way of
    // setting a slot ever swaps.
    TVDateSlot(const TVDate& a, const TVDate& b, bool order);
    virtual ~TVDateSlot() = default;

    TVDateSlot(const TVDateSlot&) = default;
    TVDateSlot& operator=(const TVDateSlot&) = default;

    void set_defaults(bool init = true);

    const TVDate& get_start() const { return m_start; }
    const TVDate& get_end() const { return m_end; }
    void set_start(const TVDate& date) { m_start = date; }
    void set_end(const TVDate& date) { m_end = date; }
    void set(const TVDate& start, const TVDate& end);

    // Both dates are real (the zero date counts as real).
    bool is_ok() const;
    void set_zero();
    void set_blank();
    void set_invalid();
    // Copies a real date over one that is blank or invalid; false if
    // neither date is real.
    bool correct();
    // Labels both dates; the moments stay.
    void set_timezone(int zone);
    // Both dates to zone 0 with their clock readings kept.
    void ignore_zone();

    // The end minus the start; zero unless both are real.
    TVDuration duration() const;

    // Both dates, zones included.
    bool operator==(const TVDateSlot& other) const;
    bool operator!=(const TVDateSlot& other) const { return !(*this == other); }
    // By the start only.
    bool operator<(const TVDateSlot& other) const { return m_start < other.m_start; }
    bool operator>(const TVDateSlot& other) const { return m_start > other.m_start; }

    // start <= date <= end.
    bool within(const TVDate& date) const;
    // Like within, but a bound that isn't a real date doesn't bound.
    static bool withinRange(const TVDate& date, const TVDateSlot& slot);

    // a's start is before b's end and a's end after b's start.
    static bool intersects(const TVDateSlot& a, const TVDateSlot& b);
    // False if they don't intersect; else out is the common part.
    static bool intersection(const TVDateSlot& a, const TVDateSlot& b, TVDateSlot& out);
    // False, and nothing changed, if the slots neither intersect nor touch.
    // Otherwise a takes b in and b is set equal to a. With keepLength the
    // result starts at the earlier start and lasts as long as both together
    // (two bookings of an hour make two hours); without it, it runs from
    // the earlier start to the later end, where a date of b stands in for
    // one of a that isn't real.
    static bool merge(TVDateSlot& a, TVDateSlot& b, bool keepLength);
    // A slot covering both, ignoring dates that aren't real.
    static TVDateSlot expand(const TVDateSlot& a, const TVDateSlot& b);
    // Takes b out of a. False, and nothing changed, if they don't
    // intersect. Otherwise a becomes the part of a before b and b the part
    // of a after b; a part that doesn't exist is set invalid, so a slot
    // wholly covered by b leaves both invalid.
    static bool subtract(TVDateSlot& a, TVDateSlot& b);
    // count slots, end to end, from the start of start's day to end; empty
    // for a count below 1 or an end before that day.
    static std::vector<TVDateSlot> slot_series(const TVDate& start, const TVDate& end, int count);

    // Widens the slot to hold date, first filling a start or end that isn't
    // real with it. A date that isn't real changes nothing.
    void extend(const TVDate& date);

    // The start by TVDate::to_string(format), then " to " and the end if
    // the end is real and differs; with "%C", an end on the start's day
    // shows only its time.
    std::string to_string(const std::string& format) const;
    // "yyyymmdd" of the start, the end's behind it if that differs; only
    // the end's if the start isn't real; "" if neither is.
    std::string to_compact_string() const;
    // Reads the compact form into whole days: the start of the first day
    // to the end of the second (or of the first, unless the text is exactly
    // sixteen characters). The time of day and the zone come from now().
    // False, and nothing changed, under eight characters.
    bool from_compact_string(const std::string& text);

    virtual void dump(std::ostream& out, int indent) const;

private:
    TVDate m_start;
    TVDate m_end;
};

// For sorting: by start, then by end.
bool compare_tvdateslots(const TVDateSlot& a, const TVDateSlot& b);

std::ostream& operator<<(std::ostream& out, const TVDateSlot& slot);
// Sets failbit, and leaves the end invalid, on any mark but "&", "=", "+".
std::istream& operator>>(std::istream& in, TVDateSlot& slot);

#endif // TVDATESLOT_H
