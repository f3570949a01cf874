#include "LibDatabase/db/tvtable.h"

#include "LibCore/textstr/tvtextstr.h"

#include <algorithm>
#include <ostream>

namespace {
const std::string C_None;

// Columns on a terminal: UTF-8 continuation bytes take none.
size_t display_width(const std::string& text)
{
    size_t width = 0;
    for (const char c : text)
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80)
            ++width;
    return width;
}
} // namespace

void TVTable::clear()
{
    m_headers.clear();
    m_rowHeaders.clear();
    m_cells.clear();
}

void TVTable::add_column(const std::string& header)
{
    m_headers.push_back(header);
    for (std::vector<std::string>& row : m_cells)
        row.emplace_back();
}

const std::string& TVTable::get_header(int column) const
{
    return column >= 0 && column < get_ncolumns() ? m_headers[static_cast<size_t>(column)] : C_None;
}

int TVTable::add_row(const std::string& header)
{
    m_cells.emplace_back(m_headers.size());
    m_rowHeaders.push_back(header);
    return get_nrows() - 1;
}

const std::string& TVTable::get_row_header(int row) const
{
    return row >= 0 && row < get_nrows() ? m_rowHeaders[static_cast<size_t>(row)] : C_None;
}

void TVTable::set_row_header(int row, const std::string& header)
{
    if (row >= 0 && row < get_nrows())
        m_rowHeaders[static_cast<size_t>(row)] = header;
}

const std::string& TVTable::get_cell(int row, int column) const
{
    if (row < 0 || row >= get_nrows() || column < 0 || column >= get_ncolumns())
        return C_None;
    return m_cells[static_cast<size_t>(row)][static_cast<size_t>(column)];
}

void TVTable::set_cell(int row, int column, const std::string& text)
{
    if (row >= 0 && row < get_nrows() && column >= 0 && column < get_ncolumns())
        m_cells[static_cast<size_t>(row)][static_cast<size_t>(column)] = text;
}

void TVTable::reorder_rows(const std::vector<int>& order)
{
    std::vector<std::vector<std::string>> cells;
    std::vector<std::string> headers;
    for (const int index : order) {
        cells.push_back(std::move(m_cells[static_cast<size_t>(index)]));
        headers.push_back(std::move(m_rowHeaders[static_cast<size_t>(index)]));
    }
    m_cells = std::move(cells);
    m_rowHeaders = std::move(headers);
}

void TVTable::write_text(std::ostream& out) const
{
    std::vector<size_t> widths(m_headers.size(), 0);
    auto measure = [&widths](const std::vector<std::string>& row) {
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], display_width(row[i]));
    };
    measure(m_headers);
    for (const std::vector<std::string>& row : m_cells)
        measure(row);
    auto line = [&widths, &out](const std::vector<std::string>& row) {
        std::string text;
        for (size_t i = 0; i < row.size(); ++i) {
            if (i > 0)
                text += "  ";
            text += row[i] + std::string(widths[i] - display_width(row[i]), ' ');
        }
        text.erase(text.find_last_not_of(' ') + 1);
        out << text << '\n';
    };
    line(m_headers);
    for (const std::vector<std::string>& row : m_cells)
        line(row);
}

void TVTable::write_csv(std::ostream& out) const
{
    auto line = [&out](const std::vector<std::string>& row) {
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string& cell = row[i];
            // Quoted only when it must be, as spreadsheets write it.
            const bool quote = cell.find_first_of(",\"\n\r") != std::string::npos;
            out << (i > 0 ? "," : "") << (quote ? tv_csv_out(cell) : cell);
        }
        out << '\n';
    };
    line(m_headers);
    for (const std::vector<std::string>& row : m_cells)
        line(row);
}
