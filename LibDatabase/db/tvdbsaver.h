#ifndef TVDBSAVER_H
#define TVDBSAVER_H

// TVDBSaver: everything that writes a database's files whole or renames
// and copies them: the save through ".new" and ".old" with its
// verification and backup rotation, the append of one operation's block,
// save-as, snapshots and their restore, the replace of the whole file, the
// export, and the recoveries of a damaged file (from the last known good
// copy or a backup, keeping the damaged one as ".bak"). No other code of
// the engine or of the windows renames or copies the user's files, and
// every step goes through the file layer's fault seam (TVFileFaults).
//
// A saver is a view of one database, made where it is needed; the database
// must outlive it. Main thread only; no lock is held across file work.
// Every call reports through the framework's errors, naming the file; a
// step that fails stops the call there, with what it says on the disk
// below each function.

#include "LibDatabase/db/tvdatabase.h"

#include <string>

class TVDBSaver
{
public:
    explicit TVDBSaver(TVDatabase& db);

    // TVDatabase::save: on a failure before the main file moves, F is as
    // it was; between the renames, ".old" is whole and the load puts it
    // back; a failed verify puts ".old" back.
    [[nodiscard]] int save(bool mark_write, bool manual, bool verify);
    // One operation's block, appended and flushed; with changed_only a
    // block with nothing in it is not written and its transaction goes.
    [[nodiscard]] int append_block(const std::string& transaction, bool changed_only);
    [[nodiscard]] int save_partial(const std::string& transaction)
    {
        return append_block(transaction, false);
    }
    // Loads file into a fresh database of the application's class; a good
    // one becomes the last known good copy.
    [[nodiscard]] int verify(const std::string& file, const std::string& app_type) const;
    [[nodiscard]] int save_as(const std::string& file, bool manual);
    [[nodiscard]] int save_snapshot(bool manual);
    [[nodiscard]] int restore_snapshot(const std::string& snapshot, std::string& backup);
    [[nodiscard]] int replace_file(const std::string& text, const std::string& source);
    [[nodiscard]] int export_db(const std::string& file, std::string* text, bool check,
                                const std::string& app_type);
    [[nodiscard]] int remove_partial(const std::string& file);

    // ".old" back as the main file: a save stopped between its renames.
    [[nodiscard]] int put_back_old();
    // A copy of a file the user chose, under a name no file has yet: never
    // over a file.
    [[nodiscard]] static int copy_in(const std::string& from, const std::string& to);
    // A new main file from a template.
    [[nodiscard]] int copy_template(const std::string& template_file);
    // The partial file as it was to ".bpu.bad", the live one cut back to
    // good_bytes, its last whole block.
    [[nodiscard]] int keep_damaged_partial(long good_bytes);
    // The main file as an older release wrote it, before an upgrade.
    [[nodiscard]] int keep_version_copy(int version);
    // A main file the user gives up on goes to ".bak" (overwriting one
    // kept before), never deleted.
    [[nodiscard]] static int keep_damaged(const std::string& file);
    // Puts recovery (TVDBFileNames::recovery_candidate) in the place of a
    // damaged main file: the partial file goes, the damaged file is kept
    // as ".bak", the copy is made and flushed. Nothing is loaded.
    [[nodiscard]] static int recover_from(const std::string& file, const std::string& recovery);

private:
    [[nodiscard]] int rotate_backups(const std::string& old_file);
    [[nodiscard]] int save_as_files(const std::string& old_main, const std::string& old_index,
                                    const std::string& old_base, const std::string& old_partial,
                                    bool manual);
    [[nodiscard]] int adopt_replaced();

    TVDatabase& m_db;
    TVDatabase::TVDatabaseImpl* d;
};

#endif // TVDBSAVER_H
