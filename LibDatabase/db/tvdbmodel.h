#ifndef TVDBMODEL_H
#define TVDBMODEL_H

// TVDBModel: a cache that turns a database into rows for a list. A derived
// model fills the rows in populate (one TVDBModelEntry per object shown, in
// the order shown) and, for rows that hold no texts of their own, answers
// get_id_value cell by cell.
//
// update refills the rows only when the database changed since the last
// fill, by its update counter, so calling it on every refresh is cheap.
// The database must outlive the model. Main thread only.

#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDatabase/db/tvdbmodelentry.h"

#include <string>

class TVDatabase;

class TVDBModel
{
public:
    explicit TVDBModel(TVDatabase& db);
    TVDBModel(const TVDBModel&) = delete;
    TVDBModel& operator=(const TVDBModel&) = delete;
    virtual ~TVDBModel();

    // Refills the rows if the database changed since the last fill, or if
    // there was none. A failure of populate is passed on, and the next
    // update tries again.
    [[nodiscard]] virtual int update();
    // Fills rows (given empty); the model owns what is added.
    [[nodiscard]] virtual int populate(TVPtrArray<TVDBModelEntry>& rows);
    // The text of a cell of an entry that holds none.
    virtual std::string get_id_value(int id, int column) const;

    int get_nrows() const { return m_rows.size(); }
    // Empty for a bad row.
    std::string get_row_value(int row, int column) const;
    // -1 for a bad row.
    int get_row_id(int row) const;
    // The first row of the object id; -1 if it has none.
    int get_id_row(int id) const;

protected:
    TVDatabase& m_db;

private:
    long m_lastUpdate = -1; // the database's counter at the last fill
    TVPtrArray<TVDBModelEntry> m_rows{true};
};

#endif // TVDBMODEL_H
