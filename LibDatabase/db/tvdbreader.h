#ifndef TVDBREADER_H
#define TVDBREADER_H

// TVDBReader: reads the text of a database's files (tvdbformat.h,
// doc/file-format.md) onto a database: a main file whole, or the blocks of
// a partial file, which replace objects by id. The database must outlive
// the reader. Main thread only.

#include "LibDatabase/db/tvdatabase.h"

#include <string>
#include <string_view>

class TVDBReader
{
public:
    explicit TVDBReader(TVDatabase& db);

    // Reads text onto the database. partial reads the blocks of a partial
    // file; skip_saved leaves out the blocks that the last full save holds
    // (by the index's save mark). A partial block is all or nothing: a
    // block that doesn't read stops the read with the blocks before it
    // applied, and the database's partial good bytes tell where it began.
    // A partial text that is no database file gives TVErrC_okDelete.
    [[nodiscard]] int read(std::string_view text, bool partial, bool skip_saved);

    // The text of the first object of a file; empty if it can't be read or
    // is no database file.
    static std::string first_object(const std::string& file);

private:
    [[nodiscard]] int read_block(std::string_view text, bool partial, bool skip_saved,
                                 bool& skip, int& max_id, std::string& db_text);

    TVDatabase& m_db;
    TVDatabase::TVDatabaseImpl* d;
};

#endif // TVDBREADER_H
