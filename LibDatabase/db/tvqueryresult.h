#ifndef TVQUERYRESULT_H
#define TVQUERYRESULT_H

// TVQueryResult: the table a query's run fills (TVQuery::execute): one
// column per field, a range field expanded into one column per step, and
// one row per chain of objects that met every condition, with the ids of
// that chain beside it (get_id_no), so that a window can go from a row to
// its objects. After finalise each row's header is its first object's id.
//
// Rows that summaries add carry a single negative id, -(2n + 2) * 5 for
// the n-th added row, which no object has.
//
// The result owns copies of the fields and the row ids.

#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvqueryfield.h"
#include "LibDatabase/db/tvqueryid.h"
#include "LibDatabase/db/tvtable.h"

#include <string>
#include <vector>

class TVQueryResult : public TVTable
{
public:
    enum E_Summary { E_SummaryTotal = 0, E_SummaryAverage = 1, E_SummaryCount = 2 };
    // What post_process can add to a finished table.
    enum E_PostFunction { E_PostNone = 0, E_PostTotalRows = 1, E_PostTotalColumns = 2 };
    // The qualifier of a field that orders the rows: "Up" or "Down".
    static const char* const C_SortTag; // "Sort"

    TVQueryResult();
    TVQueryResult(const TVQueryResult&) = delete;
    TVQueryResult& operator=(const TVQueryResult&) = delete;

    void clear() override;
    int get_nfields() const { return m_fields.size(); }
    // Null for a bad index.
    const TVQueryField* get_field_no(int index) const;
    // Keeps a copy and adds its column, or its parts' columns.
    void add_field(const TVQueryField& field);
    int get_nids() const { return m_ids.size(); }
    const TVQueryId* get_id_no(int index) const;
    // Takes row, and adds its (empty) table row; gives the row's index.
    int add_id(TVQueryId* row);

    // Adds a row named text (first cell) over the rows whose first cell or
    // row header begins with one of titles (all object rows when titles is
    // empty): per column, the total, the average or the count of the cells
    // that hold a number, in the locale's form.
    void add_summary(const std::vector<std::string>& titles, const std::string& text,
                     E_Summary kind);
    // Totals over the rows (a row named text) or over the columns from
    // column on (a column titled text).
    void post_process(E_PostFunction function, int column, const std::string& text);
    // Orders the rows by the fields that ask for it and maps the row ids.
    void finalise();
    // Each row's header becomes its first object's id.
    void map_row_ids();

    const std::vector<std::string>& get_prompt() const { return m_prompt; }
    void set_prompt(const std::vector<std::string>& values) { m_prompt = values; }

private:
    int add_synthetic_row(const std::string& text);

    TVPtrArray<TVQueryField> m_fields{true};
    TVPtrArray<TVQueryId> m_ids{true};
    std::vector<std::string> m_prompt;
    int m_added = 0;
};

#endif // TVQUERYRESULT_H
