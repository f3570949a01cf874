#ifndef TVDBLOADER_H
#define TVDBLOADER_H

// TVDBLoader: opens a database's files onto the database: the main file,
// the replay of its partial file, the leftovers of a session that ended
// badly, a fresh file, and the rebuild from the base file that undo and
// redo are. Closing (unload) is here too, as the end of what a load began.
// The database must outlive the loader. Main thread only; the owner
// pauses the database's background work around it.
//
// Every call reports through the framework's errors, naming the file.

#include "LibDatabase/db/tvdatabase.h"

#include <string>

class TVDBLoader
{
public:
    explicit TVDBLoader(TVDatabase& db);

    // TVDatabase::load, step by step (see its header). A load that fails
    // leaves nothing of the file in memory.
    [[nodiscard]] int load(const std::string& file, bool read_only, bool create_file,
                           const std::string& default_file, bool keep_partial, bool use_partial,
                           bool remove_intermediate, bool no_clean);
    [[nodiscard]] int create(const std::string& file, bool overwrite);
    [[nodiscard]] int unload();
    [[nodiscard]] int load_partial(bool skip_saved);
    // save_pending false drops the changes not yet in the partial file.
    [[nodiscard]] int load_base(bool save_pending = true);
    [[nodiscard]] int clean_intermediate(bool keep_partial, bool remove);
    // Reads a main file whole onto the database and checks its version.
    [[nodiscard]] int load_file(const std::string& file);
    // Drops the objects and what was read into the database's record,
    // keeping the names, the type the application set and the session's
    // flags.
    void forget_contents();

private:
    [[nodiscard]] int load_steps(const std::string& file, bool read_only, bool create_file,
                                 const std::string& default_file, bool keep_partial,
                                 bool use_partial, bool remove_intermediate, bool no_clean);

    TVDatabase& m_db;
    TVDatabase::TVDatabaseImpl* d;
};

#endif // TVDBLOADER_H
