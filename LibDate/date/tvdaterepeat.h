#ifndef TVDATEREPEAT_H
#define TVDATEREPEAT_H

// TVDateRepeat: how an event comes back. Every so many seconds, days,
// weeks, months or years, on listed days and at listed times, on work days
// only, within a range, except on excluded days; or on a list of dates, or
// by any date expression.
//
// A rule is kept as fields and stored as a compact text (below). When used
// it is compiled (populate_expressions) into two TVDateExp: the start
// expression steps from one occurrence to the next, the due expression
// finds an occurrence's end. next_date() steps from the date it is given
// as if that were an occurrence: an interval counts from it. Slots
// (TVDateSlot) are occurrences with their ends, generated into a window
// from a seed slot.
//
// Types and what m_days holds (codes, all zero-based like every day and
// month in the program):
//   0 Not repeating   next_date gives the blank date
//   1 H/M/S           every interval seconds
//   2 Days            every interval days
//   3 Weeks           weekdays, 0 Sunday
//   4 Months          day of the month 0-30 (negative: from the month's
//                     end, -1 the last day), or a weekday of the month
//                     40 + occurrence * 10 + weekday (occurrence 5 is the
//                     last one in the month)
//   5 Years           year-day codes: month * 200 + 100 + day, or month *
//                     200 + 140 + occurrence * 10 + weekday; from 5000 a
//                     weekday of a numbered week: 5000 + week * 10 + weekday
//   6 Expression      the start expression's text, m_startExp
//   7 Set Dates       m_set; only the dates later than now when compiled
//   8 Choice          "When I Choose": ten years ahead, as good as never
// Days and times make one choice of the date language: every listed day
// still ahead in the week (month, year) of the date stepped from, at every
// listed time (midnight if none), nearest first; failing those, the step of
// the interval onto the first day at the first time. A rule without days
// chooses among the times of the day stepped from. The order is fixed when
// compiled: weekdays by their place in the locale's week, month and year
// codes by the earliest day each can fall on, times by the clock. Two
// weekdays of the month with the same occurrence ("1st Monday" and "1st
// Friday") change places from month to month, and a rule that holds both
// can then take the later one first and skip the other for that month.
//
// Work days (m_work, set_workday). Kind 0 none; 1 an occurrence that falls
// on a day off moves on to the next work day; 2 such an occurrence is
// skipped (the rule steps on until one falls on a work day); 3 the step
// lands on a work day before the day is chosen. The id names a work-day
// set of the TVRepeatConfig (-1 and -2: the default set). Encoded, in the
// order decoded: negative, kind 2 with id -value; 1 to 3, that kind with
// id -1; below 10, kind 0; below C_WorkBefore, kind 1 with id value - 10;
// from C_WorkBefore, kind 3 with id value - C_WorkBefore.
//
// Ends (m_offset, get_offset_details). C_OffsetLast (0, and 3 to 9): a span
// runs from the last repeat; C_OffsetExpression (1), and always for type 6:
// the due expression; C_OffsetBlank (2): no end; from C_OffsetDuration
// (10): a span of value - 10 seconds; negative: n = -value, a number of
// days n / C_OffsetDays and a time of day (n % C_OffsetDays) - 10 seconds.
// Ends count forward from the start for range type 2 and back from the end
// otherwise. Only range type 2 generates spans; other slots are moments.
//
// Capability (m_capability = range type + level type * 8) is the owner's:
// range type 2 a span, 3 a span kept by its end, 1 (and anything else) a
// moment. It isn't stored in the text ("C" is read, for older texts); rules
// take it from their configuration (initialise) or set_capability.
//
// Stored text, entries in this order, each only when it means something
// for the type (to_string), joined by "@":
//   rule    := "T=" type ["@N=" int] ["@D=" ints] ["@A=" ints] ["@S=" dates]
//              ["@O=" long] ["@B=" qdate] ["@W=" int] ["@E=" qdate]
//              ["@Y=" qexp] ["@Z=" qexp] ["@X=" excl]
//   ints    := int {"," int}          ; A: seconds after midnight
//   dates   := date {"," date}        ; TVDate's stream form
//   qdate   := '"' date '"'           ; read also unquoted, or as a date
//                                     ; expression within the quotes
//   qexp    := '"' text '"'           ; a date expression, no '"' inside
//   excl    := entry {"," entry}      ; see get_exclude_string
// from_string reads that, with "C=" int too, and four older forms:
//   REPEAT_DAYS(7)  REPEAT_WEEKDAY(mon tue wed)  REPEAT_MONTHDAY(1 2 4 12)
//   REPEAT_YEARDAY(3 Jun 12 Sep)
// A text that doesn't read is a warning (TVErrC_InvalidValue) that names
// the entry, and leaves the rule as it was.
//
// State: m_state 0 not compiled, 1 compiled, 2 slots generated. Every
// setter that changes the rule goes back to 0 (invalidate). The compiled
// expressions hold the names of work-day sets, so a rule compiled with one
// configuration is compiled again when used with another.
//
// Loops are bounded: next_date skips at most C_MaxExcludedSteps excluded
// occurrences, and a generation takes at most C_MaxSlots steps.
//
// Not thread-safe, like every TVObject; reads now() and the locale.

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/ptrarray/tvidstring.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateexp.h"
#include "LibDate/core/tvdateslot.h"
#include "LibDate/core/tvduration.h"
#include "LibDate/dateset/tvdateset.h"
#include "LibObject/object/tvobject.h"

class TVRepeatConfig;

class TVDateRepeat : public TVObject
{
public:
    enum E_RepeatType {
        E_NoRepeat = 0,
        E_Seconds,
        E_Days,
        E_Weeks,
        E_Months,
        E_Years,
        E_Expression,
        E_SetDates,
        E_Choice
    };
    static constexpr int C_TypeCount = 9;

    enum E_WorkdayType { E_WorkNone = 0, E_WorkNext, E_WorkFixed, E_WorkBefore };
    // Bits of m_fixed: a range bound the owner sets, which isn't stored.
    enum E_Fixed { E_FixedRangeStart = 0, E_FixedRangeEnd };
    enum E_RangeType { E_RangeMoment = 1, E_RangeSpan = 2, E_RangeByEnd = 3 };
    // What get_offset_details answers.
    enum E_OffsetKind {
        E_OffsetSpan = 0,
        E_OffsetDayTime = 1,
        E_OffsetLastRepeat = 2,
        E_OffsetNoEnd = 3,
        E_OffsetByExpression = 4
    };

    static constexpr long C_OffsetLast = 0;
    static constexpr long C_OffsetExpression = 1;
    static constexpr long C_OffsetBlank = 2;
    static constexpr long C_OffsetDuration = 10;
    static constexpr long C_OffsetDays = 100000;
    static constexpr int C_WorkNextBase = 10;
    static constexpr int C_WorkBefore = 1000000000;
    static constexpr int C_DefaultInterval = 0;
    static constexpr int C_DefaultWork = 0;
    static constexpr int C_V1RepeatManual = 9999;
    static constexpr int C_WeekdayOfMonth = 40;
    static constexpr int C_WeekOfYear = 5000;
    static constexpr int C_LastOccurrence = 5;
    static constexpr int C_MaxExcludedSteps = 10000;
    static constexpr int C_MaxSlots = 100000;
    // Exclusions lie within these years (see set_exclude).
    static constexpr int C_ExcludeFirstYear = 1000;
    static constexpr int C_ExcludeLastYear = 9000;

    // Tags of the due expression's T_Relative.
    static constexpr const char* C_RelTime = "TIME";
    static constexpr const char* C_RelLast = "LAST";

    // The stored text.
    static constexpr const char* C_RepeatType = "T";
    static constexpr const char* C_RepeatInterval = "N";
    static constexpr const char* C_RepeatDays = "D";
    static constexpr const char* C_RepeatAt = "A";
    static constexpr const char* C_RepeatSet = "S";
    static constexpr const char* C_RepeatOffset = "O";
    static constexpr const char* C_RepeatBegin = "B";
    static constexpr const char* C_RepeatWorkTime = "W";
    static constexpr const char* C_RepeatEnd = "E";
    static constexpr const char* C_RepeatDueExp = "Y";
    static constexpr const char* C_RepeatStartExp = "Z";
    static constexpr const char* C_RepeatExclude = "X";
    static constexpr const char* C_RepeatCaps = "C";
    static constexpr const char* C_RepeatAssign = "=";
    static constexpr const char* C_RepeatSeparator = "@";
    static constexpr const char* C_RepeatQuote = "\"";
    static constexpr const char* C_V1RepeatDays = "REPEAT_DAYS";
    static constexpr const char* C_V1RepeatWeekday = "REPEAT_WEEKDAY";
    static constexpr const char* C_V1RepeatMonthday = "REPEAT_MONTHDAY";
    static constexpr const char* C_V1RepeatYearDay = "REPEAT_YEARDAY";

    // Not repeating; no range, no exclusions, capability 0.
    TVDateRepeat();
    TVDateRepeat(const TVDateRepeat& other);
    TVDateRepeat& operator=(const TVDateRepeat& other);
    ~TVDateRepeat() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    // One member, "r", the stored text.
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;

    void set_defaults(bool constructing);

    // The rule's fields, capability and fixed bits included; not the
    // compiled expressions, the slots or the state.
    bool operator==(const TVDateRepeat& other) const;
    bool operator!=(const TVDateRepeat& other) const { return !(*this == other); }

    // Takes the configuration's capability (if config isn't null) and compiles.
    void initialise(const TVRepeatConfig* config);
    // Mends fields that mean nothing: codes that aren't codes of the type,
    // times outside the day, repeated days and times, a negative interval.
    // True if there was nothing to mend.
    bool sanity_check();

    // ---- The rule ------------------------------------------------------------

    // Ids 0 to 8 and the names of the types, in order.
    static TVIdString get_types();
    E_RepeatType get_type() const;
    void set_type(E_RepeatType type);
    // A number outside 1 to 8 means not repeating.
    void set_type_int(int type);

    int get_interval() const;
    // The interval that steps: below 1 counts as 1.
    int get_used_interval() const;
    void set_interval(int interval);
    // The used interval moved by delta, at least 1.
    void adjust_interval(int delta);

    const std::vector<int>& get_days() const;
    void set_days(const std::vector<int>& days);
    // Times of day, as spans since midnight.
    const std::vector<TVDuration>& get_at_times() const;
    void set_at_times(const std::vector<TVDuration>& times);
    const std::vector<TVDate>& get_dateset() const;
    void set_dateset(const std::vector<TVDate>& dates);

    E_WorkdayType get_workday(int& id) const;
    // id -1 (or -2): the default set. A kind outside 0 to 3 means none.
    void set_workday(int kind, int id);
    int get_work() const;

    long get_offset() const;
    // The kind of end; days and duration filled for E_OffsetDayTime (days,
    // time of day) and E_OffsetSpan (duration), else zero.
    E_OffsetKind get_offset_details(TVDuration& duration, long& days) const;
    // The span's size is taken; its sign comes from the range type.
    void set_offset_duration(const TVDuration& span);
    // A time of day (below a day) and a number of days (not negative).
    void set_offset_time(const TVDuration& time, long days);
    void set_offset_last();
    void set_offset_blank();
    void set_offset_as_expression();

    // The start expression (type 6) and the due expression. A double quote,
    // which the date language has no use for and the stored text uses
    // around expressions, is dropped, and line ends become blanks.
    const std::string& get_exp() const;
    void set_exp(const std::string& text);
    const std::string& get_offset_exp() const;
    void set_offset_exp(const std::string& text);

    // true: not repeating; false: a rule that doesn't repeat becomes daily.
    void set_norepeat(bool noRepeat);
    // Neither "Not repeating" nor "Choice".
    bool is_repeating() const;
    bool is_manual() const;

    const TVDate& get_range_start() const;
    const TVDate& get_range_end() const;
    // fixed: the owner sets this bound, so it isn't stored with the rule.
    void set_range_start(const TVDate& date, bool fixed);
    void set_range_end(const TVDate& date, bool fixed);
    bool get_fixed(E_Fixed which) const;
    void set_fixed(E_Fixed which, bool fixed);

    // ---- Exclusions ----------------------------------------------------------

    const TVDateSet& get_exclude() const;
    void set_exclude(const TVDateSet& set);
    // A comma-separated list of entries, each a date expression or two
    // joined by "-" (so dates within use "/" or "."). A side that gives no
    // time reads as the start of its day, or as the end of it (23:59:59) for
    // the second side; a date alone is thus its whole day. A warning, and
    // the exclusions as they were, for an entry that isn't a date of the
    // years C_ExcludeFirstYear to C_ExcludeLastYear.
    [[nodiscard]] int set_exclude(const std::string& text);
    // The list that set_exclude reads back: dates as "12 Mar 2021" in the
    // default zone, a time "hh:mm:ss" behind a side that isn't at the
    // start (or, for the second, the end) of its day.
    std::string get_exclude_string() const;
    // Dates outside those years are left out.
    void exclude_day(const TVDate& date);
    void exclude_range(const TVDateSlot& slot);
    bool is_excluded(const TVDate& date) const;

    // ---- Capability ----------------------------------------------------------

    static int encode_capability(int rangeType, int levelType);
    int get_capability() const;
    void set_capability(int capability);
    int get_range_type() const;
    bool get_level_type() const;

    // ---- What each type uses ---------------------------------------------------

    bool uses_interval() const;
    bool uses_days() const;
    bool uses_at() const;
    bool uses_set() const;
    bool uses_range() const;
    bool uses_expression() const;
    bool uses_offset() const;
    bool uses_offset_expression() const;
    bool uses_workday() const;

    // ---- Codes -------------------------------------------------------------------

    static int to_weekday_of_month(int occurrence, int weekday);
    // False for a code below C_WeekdayOfMonth.
    static bool from_weekday_of_month(int code, int& occurrence, int& weekday);
    static int to_yearday(int day, int month);
    static int to_yearday_weekday(int occurrence, int weekday, int month);
    // A year code below C_WeekOfYear into a month and a month-day code (a
    // day, or a weekday of the month); false for other codes.
    static bool from_yearday(int code, int& day, int& month);
    static int to_weekday_of_year(int week, int weekday);
    static bool from_weekday_of_year(int code, int& week, int& weekday);
    // Whether code means something as a day of the type.
    static bool is_day_code(int type, int code);

    // ---- Compiling and stepping ------------------------------------------------

    // Builds the start and due expressions; m_state becomes 1.
    void populate_expressions(const TVRepeatConfig* config);
    // Compiled on demand.
    const TVDateExp& get_start_exp(const TVRepeatConfig* config);
    const TVDateExp& get_due_exp(const TVRepeatConfig* config);
    int get_state() const;
    // Back to not compiled.
    void invalidate();

    // The occurrence after date (now, if date isn't real), stepping over
    // excluded ones. The blank date when not repeating; date itself when
    // the rule can't get past the exclusions.
    TVDate next_date(const TVDate& date, const TVRepeatConfig* config);

    // ---- Slots -------------------------------------------------------------------

    // The window and the number of slots every rule generates into.
    static void set_global_range(const TVDateSlot& range, int limit);
    static const TVDateSlot& get_global_range();
    static int get_global_limit();

    // The occurrence at start as a slot: a moment unless the range type is 2;
    // a span's end from the due expression, from the start or from
    // previousEnd by the kind of end, or lastDue for C_OffsetLast.
    TVDateSlot generate_slot(const TVDate& previousEnd, const TVDate& start, const TVDate& lastDue,
                             const TVRepeatConfig* config);
    // The seed (if its start is real), then occurrences from the later of
    // the window's start (or now) and the seed, while later than the one
    // before and within the window and the range, until out holds limit
    // slots (negative: C_MaxSlots). Ranges with a blank end have no end.
    void generate_slots(const TVDateSlot& seed, const TVDateSlot& window, int limit,
                        const TVRepeatConfig* config, std::vector<TVDateSlot>& out);
    // Fills the slots within the global range, and the old slots from the
    // range start up to the first of them. Not repeating: the seed alone.
    // Nothing again once generated, unless force.
    [[nodiscard]] int generate(bool force, const TVDateSlot& seed, const TVRepeatConfig* config);
    const std::vector<TVDateSlot>& get_slots() const;
    const std::vector<TVDateSlot>& get_old_slots() const;
    // Takes other's slots when other is the same rule; false otherwise.
    bool load_slots(const TVDateRepeat& other);

    // Takes a seed slot into the rule: its time of day as the time (when
    // the rule has at most one), with takeDay its day as the day (unless
    // the rule's days already hold it), and for a span its length as the
    // end, unless the end is set by time, expression or not at all.
    void apply_seed_slot(const TVDateSlot& slot, bool takeDay);

    // ---- Text ----------------------------------------------------------------------

    // The rule in words, as "Every 2 weeks on Mon, Thu at 09:00 only on work
    // days." config names the work-day sets (null: "work").
    std::string to_natural(const TVRepeatConfig* config) const;
    // "On Mon, Thu": the days in words, "" without days.
    std::string get_days_str() const;
    // "Next work day.", "Only on work days.", "If work days available.", or
    // the mid-sentence " on next work day" and so on; "" for none.
    std::string workday_to_natural(const TVRepeatConfig* config, bool midSentence) const;

    std::string to_string() const;
    [[nodiscard]] int from_string(const std::string& text);

private:
    // Steps date by exp, then on over excluded dates (bounded).
    TVDate apply_expression(const TVDate& date, const TVDateExp& exp,
                            const TVRepeatConfig* config) const;
    void compile_if_needed(const TVRepeatConfig* config);
    std::string offset_to_natural() const;
    std::string range_to_string() const;

    struct Private;
    std::unique_ptr<Private> d;
};

// The stored text; >> reads the rest of the stream and sets failbit if it
// doesn't read (the rule then stays as it was).
std::ostream& operator<<(std::ostream& out, const TVDateRepeat& rule);
std::istream& operator>>(std::istream& in, TVDateRepeat& rule);

#endif // TVDATEREPEAT_H
