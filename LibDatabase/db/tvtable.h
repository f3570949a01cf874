#ifndef TVTABLE_H
#define TVTABLE_H

// TVTable: a table of text cells with a header per column and a header
// per row, as a query's result fills it and a list or the tool shows it.
// Cells out of range read as "" and writes to them are ignored, so a
// caller never sees a table of ragged rows.

#include <iosfwd>
#include <string>
#include <vector>

class TVTable
{
public:
    TVTable() = default;
    virtual ~TVTable() = default;
    TVTable(const TVTable&) = default;
    TVTable& operator=(const TVTable&) = default;

    virtual void clear();
    int get_ncolumns() const { return static_cast<int>(m_headers.size()); }
    int get_nrows() const { return static_cast<int>(m_cells.size()); }
    // Appends a column; every row gets an empty cell in it.
    void add_column(const std::string& header);
    const std::string& get_header(int column) const;
    // Appends an empty row; gives its index.
    int add_row(const std::string& header = std::string());
    const std::string& get_row_header(int row) const;
    void set_row_header(int row, const std::string& header);
    const std::string& get_cell(int row, int column) const;
    void set_cell(int row, int column, const std::string& text);
    // Moves the rows into the order given (indices of the present rows).
    void reorder_rows(const std::vector<int>& order);

    // The headers and the rows, columns padded to their widest cell (by
    // characters, not bytes) and two blanks apart; trailing blanks cut.
    void write_text(std::ostream& out) const;
    // The headers and the rows as CSV lines.
    void write_csv(std::ostream& out) const;

private:
    std::vector<std::string> m_headers;
    std::vector<std::string> m_rowHeaders;
    std::vector<std::vector<std::string>> m_cells;
};

#endif // TVTABLE_H
