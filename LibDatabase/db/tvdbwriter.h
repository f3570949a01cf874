#ifndef TVDBWRITER_H
#define TVDBWRITER_H

// TVDBWriter: writes a database in the text of its files (tvdbformat.h,
// doc/file-format.md), a main file whole or one block of a partial file.
// The database must outlive the writer. Main thread only.

#include "LibDatabase/db/tvdatabase.h"

#include <iosfwd>
#include <string>

class TVDBWriter
{
public:
    explicit TVDBWriter(const TVDatabase& db);

    // The header (unless since is non-zero and not first); a transaction
    // line (with a transaction and since above 0: the transaction joins
    // the index, which logs it once its block is on the disk); the
    // database's record if it changed since since (always with since 0);
    // and the objects: since 0, all but tombstones older than
    // TVDatabase::C_TombstoneDays; since above 0, those changed since; since
    // below 0, all. version -1 keeps the database's file version; another
    // one only with since 0. Read-only or not is the caller's question.
    [[nodiscard]] int write(std::ostream& out, long since, bool first,
                            const std::string& transaction, int version) const;

private:
    const TVDatabase& m_db;
    TVDatabase::TVDatabaseImpl* d;
};

#endif // TVDBWRITER_H
