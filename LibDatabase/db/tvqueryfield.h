#ifndef TVQUERYFIELD_H
#define TVQUERYFIELD_H

// TVQueryField: one column of a query's table: a title, the kinds of
// object it reads (as a condition names them) and the value it shows.
//
// A range field (type C_TypeRange) stands for several columns, one per
// step from a start to an end: by date ("RangeType=Date", steps of a date
// expression such as "1 week") or by number ("RangeType=Number"). The
// result expands it (expand) into parts (type C_TypePart), one per column,
// each keeping its own bounds: a date part in its date range, a number
// part in its start and end. A part shows the row's value only when the
// value falls within its bounds; with the qualifier "Show" it shows that
// other value of the same object instead (a run's time in the column of
// its week, say).
//
// Serial form: "Title", "FieldType", "DateRange" (start and end),
// "ExpStart", "ExpEnd", "ExpDivision", then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"
#include "LibDate/core/tvdateslot.h"

#include <string>
#include <vector>

class TVQueryField : public TVQueryCond
{
public:
    static constexpr int C_TypePlain = 0;
    static constexpr int C_TypePart = 1;
    static constexpr int C_TypeRange = 2;
    // A range that would make more columns than this stops there.
    static constexpr int C_MaxColumns = 500;
    static const char* const C_RangeTypeTag; // "RangeType"
    static const char* const C_RangeDate;    // "Date"
    static const char* const C_RangeNumber;  // "Number"
    static const char* const C_ShowTag;      // "Show"
    // Without a Format: the text a date step is read back from (a date
    // without its time would take the present time of day) and the
    // title of a date column.
    static const char* const C_BoundaryFormat; // "%Y-%m-%d %H:%M:%S"
    static const char* const C_TitleFormat;    // "%Y-%m-%d"

    TVQueryField();
    TVQueryField(const std::string& title, const std::string& objects, const std::string& field,
                 const std::string& qualifiers);
    TVQueryField(const std::string& title, const std::string& objects, const std::string& field,
                 const std::string& qualifiers, int type, const std::string& start,
                 const std::string& end, const std::string& division);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    // Fields choose no rows: every value passes.
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

    const std::string& get_title() const { return m_title; }
    int get_field_type() const { return m_fieldType; }
    const TVDateSlot& get_date_range() const { return m_dateRange; }
    const std::string& get_format() const { return m_format; }
    bool needs_expand() const { return m_fieldType == C_TypeRange; }
    bool is_date_range() const;

    // Reads the Start, End and Format qualifiers of cond into this field:
    // both dates, in ascending order, or a blank range.
    void extract_qualifiers(const TVQueryCond& cond);
    // The date steps from ExpStart to ExpEnd, each up to one second before
    // the next boundary; none when the ends don't read as dates.
    void expand_dates(std::vector<TVDateSlot>& slots) const;
    // The parts of a range field, one per column, titled by their step.
    std::vector<TVQueryField> expand() const;
    // For a part: value is within its bounds. Always true for others.
    bool in_part(const std::string& value) const;
    // The value that a cell shows when in_part holds: "Show", else the field.
    std::string shown_field() const;

private:
    std::string m_title;
    int m_fieldType = C_TypePlain;
    TVDateSlot m_dateRange;
    std::string m_format;
    std::string m_expStart;
    std::string m_expEnd;
    std::string m_expDivision;
    // The last number part holds its end too; parts are never stored.
    bool m_closedEnd = false;
};

#endif // TVQUERYFIELD_H
