#ifndef TVDATEEXPTERM_H
#define TVDATEEXPTERM_H

// TVDateExpTerm: one step of a date expression (TVDateExp): a type, a
// number and, for a few types, a tag. apply() changes a broken-down date
// the way the type says; to_string() gives the term's text in the context
// of its neighbours, so that the text of a whole expression reads back.
//
// Numbers are zero-based like everywhere: a T_Day of 0 is the 1st, a
// T_Month of 0 January, a T_Week of 0 the week holding 1 January. A
// T_Weekday below 10 is a weekday (0 Sunday); from 10 on it is an
// occurrence in the month joined with a weekday (encode_weekday_month).
//
// The blank and the invalid date are carried in the details as a year of
// 9999 or 9998 at 00:00 on 1 January GMT; TVDateExp turns such details back
// into the exact blank or invalid TVDate.
//
// A plain value. apply() reads now() and the locale.

#include <iosfwd>
#include <string>

class TVDateDetails;
class TVRepeatConfig;

class TVDateExpTerm
{
public:
    enum E_Type {
        T_Micro = 0,
        T_Second,
        T_Minute,
        T_Hour,
        T_Day,
        T_Weekday,
        T_Week,
        T_Month,
        T_Year,
        T_AddMicro,
        T_AddSecond,
        T_AddMinute,
        T_AddHour,
        T_AddDay,
        T_WorkDay,
        T_Fixed,
        T_AddWeek,
        T_AddMonth,
        T_AddYear,
        T_Now,
        T_Today,
        T_Tomorrow,
        T_Yesterday,
        T_Relative,
        T_Zone,
        T_Dst,
        T_AM,
        T_PM,
        T_Blank,
        T_Open,
        T_Or,
        T_Close,
        T_Invalid
    };
    static constexpr int C_TypeCount = 33;
    // The type given to to_string for a neighbour that isn't there.
    static constexpr int C_NoNeighbour = C_TypeCount;
    // A work-day walk gives up after this many days.
    static constexpr int C_MaxWorkdaySteps = 10000;
    // Fields are kept within these bounds while terms run, so that no run
    // of additions, however long, overflows the calendar arithmetic.
    static constexpr long C_FieldLimit = 1000000000L;
    static constexpr int C_YearLimit = 10000000;
    // Weekday codes from this value on carry an occurrence in the month.
    static constexpr int C_WeekdayOfMonth = 10;

    // A T_Blank.
    TVDateExpTerm();
    TVDateExpTerm(E_Type type, int value, const std::string& tag = std::string());
    virtual ~TVDateExpTerm() = default;

    TVDateExpTerm(const TVDateExpTerm&) = default;
    TVDateExpTerm& operator=(const TVDateExpTerm&) = default;

    void set_defaults(bool init = true);

    E_Type get_type() const { return m_type; }
    int get_value() const { return m_value; }
    const std::string& get_tag() const { return m_tag; }

    bool operator==(const TVDateExpTerm& other) const;
    bool operator!=(const TVDateExpTerm& other) const { return !(*this == other); }

    // Changes details as the type says. TVErrC_okNotFinished from T_Fixed on
    // a day that isn't a work day, else TVErrC_ok. T_Open, T_Or and T_Close
    // do nothing here; TVDateExp handles choices. config may be null.
    [[nodiscard]] int apply(TVDateDetails& details, const TVRepeatConfig* config) const;

    // The term's text, given the types of the terms before and after it
    // (C_NoNeighbour at either end). Most texts begin with a blank.
    std::string to_string(int previousType, int nextType) const;

    // weekday + occurrence * 10 + 40; occurrence 5 is the last in the month.
    static int encode_weekday_month(int occurrence, int weekday);
    static void decode_weekday_month(int value, int& occurrence, int& weekday);

    // The enumerator's name, "T_Day"; "T_?" out of range.
    static const char* type_name(int type);

    virtual void dump(std::ostream& out, int indent) const;

private:
    E_Type m_type;
    int m_value;
    std::string m_tag;
};

// "T_Day 11", with " @tag" if there is a tag.
std::ostream& operator<<(std::ostream& out, const TVDateExpTerm& term);

#endif // TVDATEEXPTERM_H
