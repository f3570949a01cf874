#include "LibDatabase/db/tvdbmodel.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"

TVDBModel::TVDBModel(TVDatabase& db) : m_db(db) {}

TVDBModel::~TVDBModel() = default;

int TVDBModel::update()
{
    try {
        if (m_lastUpdate >= 0 && !m_db.db_has_changed_since(m_lastUpdate))
            return TVErrC_ok;
        m_rows.clear();
        TV_PASS_ON(populate(m_rows));
        m_lastUpdate = m_db.get_last_db_update();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBModel::populate(TVPtrArray<TVDBModelEntry>& /*rows*/)
{
    return TVErrC_ok;
}

std::string TVDBModel::get_id_value(int /*id*/, int /*column*/) const
{
    return std::string();
}

std::string TVDBModel::get_row_value(int row, int column) const
{
    if (row < 0 || row >= m_rows.size())
        return std::string();
    const TVDBModelEntry* entry = m_rows[row];
    return entry->cached() ? entry->get_value(column) : get_id_value(entry->get_id(), column);
}

int TVDBModel::get_row_id(int row) const
{
    if (row < 0 || row >= m_rows.size())
        return -1;
    return m_rows[row]->get_id();
}

int TVDBModel::get_id_row(int id) const
{
    for (int row = 0; row < m_rows.size(); ++row)
        if (m_rows[row]->get_id() == id)
            return row;
    return -1;
}
