#include "LibDatabase/db/tvqueryresult.h"

#include "LibDate/core/tvlocale.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <numeric>

const char* const TVQueryResult::C_SortTag = "Sort";

namespace {

bool is_number(const std::string& text)
{
    if (text.empty())
        return false;
    const unsigned char c = static_cast<unsigned char>(text[0]);
    return std::isdigit(c) || ((c == '-' || c == '+' || c == '.') && text.size() > 1);
}

bool match_start(const std::string& text, const std::string& title)
{
    return text.compare(0, title.size(), title) == 0;
}

} // namespace

TVQueryResult::TVQueryResult() = default;

void TVQueryResult::clear()
{
    TVTable::clear();
    m_fields.clear();
    m_ids.clear();
    m_added = 0;
}

const TVQueryField* TVQueryResult::get_field_no(int index) const
{
    return index >= 0 && index < m_fields.size() ? m_fields[index] : nullptr;
}

void TVQueryResult::add_field(const TVQueryField& field)
{
    if (!field.needs_expand()) {
        m_fields.add(new TVQueryField(field));
        add_column(field.get_title());
        return;
    }
    for (const TVQueryField& part : field.expand()) {
        m_fields.add(new TVQueryField(part));
        add_column(part.get_title());
    }
}

const TVQueryId* TVQueryResult::get_id_no(int index) const
{
    return index >= 0 && index < m_ids.size() ? m_ids[index] : nullptr;
}

int TVQueryResult::add_id(TVQueryId* row)
{
    m_ids.add(row);
    return add_row();
}

int TVQueryResult::add_synthetic_row(const std::string& text)
{
    const int id = -(2 * m_added + 2) * 5;
    ++m_added;
    const int row = add_id(new TVQueryId({TVId(id, -1, -1)}));
    set_cell(row, 0, text);
    set_row_header(row, std::to_string(id));
    return row;
}

void TVQueryResult::add_summary(const std::vector<std::string>& titles, const std::string& text,
                                E_Summary kind)
{
    std::vector<int> picked;
    for (int row = 0; row < get_nrows(); ++row) {
        if (m_ids[row]->first_id() < -1)
            continue; // an earlier summary
        bool found = titles.empty();
        for (const std::string& title : titles)
            if (match_start(get_cell(row, 0), title) || match_start(get_row_header(row), title))
                found = true;
        // Each row once, whichever titles it matches.
        if (found)
            picked.push_back(row);
    }
    const TVLocale& locale = *tvlocale();
    std::vector<std::string> totals(static_cast<size_t>(get_ncolumns()));
    for (int column = 1; column < get_ncolumns(); ++column) {
        double sum = 0;
        int count = 0;
        for (const int row : picked) {
            if (is_number(get_cell(row, column))) {
                sum += locale.to_double(get_cell(row, column));
                ++count;
            }
        }
        if (kind == E_SummaryCount)
            totals[static_cast<size_t>(column)] = locale.to_string(count);
        else if (count > 0)
            totals[static_cast<size_t>(column)] =
                locale.to_string(kind == E_SummaryAverage ? sum / count : sum);
    }
    const int row = add_synthetic_row(text);
    for (int column = 1; column < get_ncolumns(); ++column)
        set_cell(row, column, totals[static_cast<size_t>(column)]);
}

void TVQueryResult::post_process(E_PostFunction function, int column, const std::string& text)
{
    const TVLocale& locale = *tvlocale();
    if (function == E_PostTotalRows) {
        add_summary({}, text, E_SummaryTotal);
    } else if (function == E_PostTotalColumns) {
        const int rows = get_nrows();
        add_column(text);
        for (int row = 0; row < rows; ++row) {
            double sum = 0;
            for (int c = std::max(column, 0); c < get_ncolumns() - 1; ++c)
                if (is_number(get_cell(row, c)))
                    sum += locale.to_double(get_cell(row, c));
            set_cell(row, get_ncolumns() - 1, locale.to_string(sum));
        }
    }
}

void TVQueryResult::finalise()
{
    std::vector<std::pair<int, bool>> keys; // column, descending
    for (int i = 0; i < m_fields.size(); ++i) {
        const std::string sort = m_fields[i]->get_qualifier(C_SortTag);
        if (!sort.empty())
            keys.emplace_back(i, sort == "Down");
    }
    if (!keys.empty()) {
        std::vector<int> order(static_cast<size_t>(get_nrows()));
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [this, &keys](int a, int b) {
            for (const auto& [column, down] : keys) {
                const std::string& x = get_cell(down ? b : a, column);
                const std::string& y = get_cell(down ? a : b, column);
                if (is_number(x) && is_number(y)) {
                    const double dx = std::atof(x.c_str());
                    const double dy = std::atof(y.c_str());
                    if (dx != dy)
                        return dx < dy;
                } else if (x != y) {
                    return x < y;
                }
            }
            return false;
        });
        reorder_rows(order);
        TVPtrArray<TVQueryId> ids(true);
        for (const int index : order)
            ids.add(m_ids[index]);
        m_ids.release_all();
        m_ids = std::move(ids);
    }
    map_row_ids();
}

void TVQueryResult::map_row_ids()
{
    for (int row = 0; row < get_nrows(); ++row) {
        const int id = m_ids[row]->first_id();
        set_row_header(row, id == -1 ? std::string() : std::to_string(id));
    }
}
