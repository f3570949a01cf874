#include "LibDatabase/db/tvdbsaver.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/application/tvappstatussetter.h"
#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/textstr/tvstringout.h"
#include "LibDatabase/db/tvcachename.h"
#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvdbloader.h"
#include "LibDatabase/db/tvdbreader.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDatabase/db/tvdbwriter.h"
#include "LibDatabase/db/tvupdatecounter.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvtrail.h"

#include <filesystem>
#include <memory>
#include <sstream>

namespace {
constexpr const char* C_SavingStatus = "Saving...";
constexpr const char* C_ExportingStatus = "Exporting...";
} // namespace

TVDBSaver::TVDBSaver(TVDatabase& db) : m_db(db), d(db.d.get())
{
}

int TVDBSaver::save(bool mark_write, bool manual, bool verify_file)
{
    const TVAppStatusSetter status(C_SavingStatus, true, TVDatabase::C_SaveStatusDelayMicro);
    try {
        TV_PASS_ON(m_db.check_writable(true));
        const std::string& file = d->m_completeFile;
        if (file.empty())
            return TVErrC_ok;
        const std::string newFile = TVDBFileNames::new_main(file);
        const std::string oldFile = TVDBFileNames::old_main(file);
        d->m_appFileVersion = m_db.current_appfileversion();
        // A link is named after the file: the same name on every device.
        for (TVExternalDB* link : d->m_external)
            link->set_dbname(tv_basename(file));
        TV_PASS_ON(tv_create_dir(tv_dirname(file), true));
        TV_PASS_ON(tv_create_dir(tv_dirname(newFile), true));
        if (mark_write) {
            // Stamped before the write, so that the stamps are in the file
            // that goes to the links too.
            // To the microsecond: a peer told its own write from ours by it.
            d->m_writeTime = TVDateUtils::unow();
            d->m_latestWrite.set_latest(d->m_writeTime);
            d->m_writeHost = TVApplication::get_hostname();
            for (TVExternalDB* link : d->m_external)
                if ((manual || !link->get_manual()) && link->can_push())
                    link->mark_push(d->m_writeTime);
        }

        // The whole text first, then one write: the file is open briefly.
        TVStringOut text;
        TV_PASS_ON(TVDBWriter(m_db).write(text, 0, false, std::string(), -1));
        TV_PASS_ON(tv_db_write_file(newFile, text.text(), false));

        const bool existed = tv_file_exists(file);
        bool madeBase = false;
        if (d->m_baseFile.empty()) {
            // The first save of the session: the state the log starts from,
            // the file as it stands before this save (or this save's text,
            // with no log yet). Copied while F is still in place, so that a
            // failed copy leaves F and the session as they were.
            const std::string base = TVDBFileNames::base(file);
            const bool empty = d->m_index.size() == 0;
            if (empty || existed) {
                TV_PASS_ON(tv_create_dir(tv_dirname(base), true));
                // The copy's bytes are flushed before it takes the name.
                TV_PASS_ON(tv_copy_file(empty ? newFile : file, base, true, true));
                d->m_baseFile = base;
                madeBase = true;
            }
        }
        // From here on a whole main file is on disk at every moment: F, or
        // old_file with new_file beside it (load puts old_file back).
        if (existed)
            TV_PASS_ON(tv_rename_file(file, oldFile, true, true));
        TV_PASS_ON(tv_rename_file(newFile, file, true, true));
        TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
        if (tv_dirname(newFile) != tv_dirname(file))
            TV_PASS_ON(tv_sync_dir(tv_dirname(newFile)));

        if (m_db.has_user_data() || verify_file) {
            int result = TVErrC_ok;
            bool thrown = false;
            try {
                result = verify(file, d->m_appType);
            } catch (const TVErrDetails&) {
                result = tverrorvalue();
                thrown = true;
            }
            if (istvwarn(result)) {
                tvlog(TVLOCATION, "cloud: !Failed Validate");
                // A base copied from the text that failed is no start for
                // undo: without one, undo replays onto the main file.
                if (madeBase && d->m_index.size() == 0) {
                    try {
                        if (istvwarn(tv_delete_file(d->m_baseFile, false)))
                            get_tverror()->clear_last_error();
                    } catch (const TVErrDetails&) {
                        get_tverror()->clear_last_error();
                    }
                    d->m_baseFile.clear();
                }
                if (existed)
                    TV_PASS_ON(tv_rename_file(oldFile, file, true, true));
                tvsysinfo_append(TVLOCATION, "Moved %s back to %s", oldFile.c_str(), file.c_str());
                if (thrown)
                    throw TVErrDetails(*get_tverror()->error_details());
                return tverrorvalue();
            }
        }
        TV_PASS_ON(rotate_backups(oldFile));
        TV_PASS_ON(d->m_index.mark_save());
        m_db.mark_partial_written();
        d->m_lastFullWrite = d->m_lastPartialWrite;
        d->m_partialAhead = false;
        if (mark_write) {
            d->m_linkWrite = d->m_lastFullWrite;
            TV_PASS_ON(m_db.push_all(manual, false));
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ".bk0" is always the latest; the far end falls off. Within
// TVDatabase::C_BackupIntervalSeconds of the last rotation the old file just goes.
int TVDBSaver::rotate_backups(const std::string& old_file)
{
    const long now = TVUpdateCounter::clock_seconds();
    if (d->m_backupCount <= 0 || now - d->m_lastBackup <= TVDatabase::C_BackupIntervalSeconds)
        return tv_delete_file(old_file, false);
    const std::string& file = d->m_completeFile;
    for (int i = d->m_backupCount; i >= 1; --i) {
        const std::string source = i == 1 ? old_file : TVDBFileNames::backup(file, i - 2);
        if (tv_file_exists(source))
            TV_PASS_ON(tv_rename_file(source, TVDBFileNames::backup(file, i - 1), true, true));
    }
    d->m_lastBackup = now;
    return TVErrC_ok;
}

// With changed_only, a block that would hold no record is not written and
// its transaction is taken back: one pass over the objects decides both.
int TVDBSaver::append_block(const std::string& transaction, bool changed_only)
{
    try {
        TV_PASS_ON(m_db.check_writable(true));
        if (d->m_completeFile.empty())
            return TVErrC_ok;
        const std::string& partial = d->m_partialFile;
        // The header goes at the head of the file, and only there.
        std::error_code ec;
        const std::uintmax_t size = std::filesystem::file_size(partial, ec);
        const bool first = ec || size == 0;
        std::ostringstream block;
        // The block, with its transaction line, is the operation's one
        // flushed write; the index record follows unflushed, and a load
        // rebuilds it from the block if a crash lost it.
        const int logged = d->m_index.size();
        int result = TVErrC_ok;
        try {
            result = TVDBWriter(m_db).write(block, d->m_lastPartialWrite, first, transaction, -1);
            if (!istvwarn(result) && changed_only && d->m_recordsWritten == 0) {
                if (d->m_index.size() > logged)
                    d->m_index.drop_last();
                return TVErrC_ok;
            }
            if (!istvwarn(result))
                result = tv_db_write_file(partial, block.str(), true);
        } catch (const TVErrDetails&) {
            if (d->m_index.size() > logged)
                d->m_index.drop_last();
            tv_trail_throw(TVLOCATION);
        }
        if (istvwarn(result)) {
            if (d->m_index.size() > logged)
                d->m_index.drop_last();
            return tv_trail_return(result, TVLOCATION);
        }
        if (d->m_index.size() > logged) {
            // The operation is on the disk with its block: a log record
            // that didn't follow is rebuilt from the block by the next load.
            int logResult = TVErrC_ok;
            try {
                logResult = d->m_index.log_last();
            } catch (const TVErrDetails&) {
                logResult = tverrorvalue();
            }
            if (istvwarn(logResult)) {
                tvlog(TVLOCATION, "Index record of %s not written; its block stands",
                      transaction.c_str());
                get_tverror()->clear_last_error();
            }
        }
        m_db.mark_partial_written();
        d->m_firstPartialWrite = false;
        d->m_partialAhead = true;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSaver::verify(const std::string& file, const std::string& app_type) const
{
    try {
        if (!d->m_isLoaded)
            return tverror(TVDatabase::TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        if (d->m_completeFile.empty())
            return TVErrC_ok;
        std::unique_ptr<TVDatabase> check(m_db.create_verification_db(app_type));
        int result = TVErrC_ok;
        try {
            result = check->load(file, true, false, std::string(), true, false, false, true);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        check.reset();
        if (istvwarn(result)) {
            tvlog(TVLOCATION, "cloud: @verify Failed");
            return tverror(TVDatabase::TVErrC_CorruptDatabase, TVLOCATION, "Unable to load database %s.",
                           file.c_str());
        }
        TV_PASS_ON(tv_copy_file(file, TVDBFileNames::last_known_good(d->m_completeFile), true,
                                true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// Until the new name is saved whole, the old name keeps everything: the
// session files (log, base, partial) are copied to the new names, and the
// old ones go only after the save. A crash at any step thus leaves the old
// name whole, and from the copy of the partial file on the new name too.
// A failure puts the old names back in memory, so that the next autosave
// and the next operation still go to the old files.
int TVDBSaver::save_as(const std::string& file, bool manual)
{
    try {
        TV_PASS_ON(m_db.check_writable(true));
        const std::string oldMain = d->m_completeFile;
        const std::string oldIndex = d->m_indexFile;
        const std::string oldBase = d->m_baseFile;
        const std::string oldPartial = d->m_partialFile;
        if (oldMain == file)
            return save(true, manual, true);
        m_db.set_filename(file);
        int result = TVErrC_ok;
        bool thrown = false;
        try {
            result = save_as_files(oldMain, oldIndex, oldBase, oldPartial, manual);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
            thrown = true;
        }
        if (istvwarn(result)) {
            m_db.set_filename(oldMain);
            d->m_baseFile = oldBase;
            (void)d->m_index.load();
            if (thrown)
                throw TVErrDetails(*get_tverror()->error_details());
            return tv_trail_return(result, TVLOCATION);
        }
        // The new name holds everything: the old session goes, its partial
        // file last, so that what is left of it still replays onto the old
        // main file.
        // Names that two paths share (the scratch names go by the base
        // name alone) are the new session's now.
        for (const std::string& name : {oldIndex, oldBase, oldPartial})
            if (!name.empty() && name != d->m_indexFile && name != d->m_partialFile &&
                name != TVDBFileNames::base(file))
                TV_PASS_ON(tv_delete_file(name, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// save_as's steps under the new name, the old names as given.
int TVDBSaver::save_as_files(const std::string& old_main, const std::string& old_index,
                              const std::string& old_base, const std::string& old_partial,
                              bool manual)
{
    try {
        const std::string& file = d->m_completeFile;
        // A file saved over loses its own session first: none of it may
        // replay onto what is written there now.
        if (d->m_partialFile != old_partial)
            TV_PASS_ON(tv_delete_file(d->m_partialFile, false));
        if (!old_main.empty() && tv_file_exists(old_main))
            TV_PASS_ON(tv_copy_file(old_main, file, true, true));
        const std::string base = TVDBFileNames::base(file);
        // The undo history travels with the new name; the partial file
        // comes last, once the log and base it replays with are there.
        const std::pair<std::string, std::string> carried[] = {
            {old_index, d->m_indexFile}, {old_base, base}, {old_partial, d->m_partialFile}};
        for (const auto& [from, to] : carried) {
            if (from == to)
                continue;
            if (!from.empty() && tv_file_exists(from))
                TV_PASS_ON(tv_copy_file(from, to, true, true));
            else
                TV_PASS_ON(tv_delete_file(to, false));
        }
        if (!old_base.empty())
            d->m_baseFile = base;
        TV_PASS_ON(d->m_index.load());
        TV_PASS_ON(save(true, manual, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSaver::save_snapshot(bool manual)
{
    const int count = d->m_backupCount;
    if (count == 0)
        d->m_backupCount = TVDatabase::C_SnapshotBackupCount;
    d->m_lastBackup = 0;
    int result = TVErrC_ok;
    try {
        result = save(true, manual, true);
    } catch (const TVErrDetails&) {
        d->m_backupCount = count;
        d->m_lastBackup = 0;
        tv_trail_throw(TVLOCATION);
    }
    // The next ordinary save rotates as well.
    d->m_backupCount = count;
    d->m_lastBackup = 0;
    return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : result;
}

// The snapshot goes in through the steps of a save: the main file moves to
// the old name, the snapshot is copied in, the old file goes. The session
// files go before the main file is touched, so that none of them replays
// onto the snapshot: a crash leaves the main file as it was, or the
// snapshot, with the safety copy holding the present state either way.
// Any failure once the safety copy is written puts it back.
int TVDBSaver::restore_snapshot(const std::string& snapshot, std::string& backup)
{
    try {
        if (!tv_file_exists(snapshot))
            return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not open %s.", snapshot.c_str());
        const std::string file = d->m_completeFile;
        const std::string appType = d->m_appType;
        const std::string oldFile = TVDBFileNames::old_main(file);
        backup = TVDBFileNames::safety_copy(file);
        if (backup == snapshot)
            backup += "1";
        // A safety copy of the present state, whole.
        std::ostringstream text;
        TV_PASS_ON(TVDBWriter(m_db).write(text, 0, false, std::string(), -1));
        TV_PASS_ON(tv_db_write_file(backup, text.str(), false));
        int result = TVErrC_ok;
        try {
            result = TVDBLoader(m_db).clean_intermediate(false, true);
            if (!istvwarn(result) && tv_file_exists(file))
                result = tv_rename_file(file, oldFile, true, true);
            if (!istvwarn(result))
                result = tv_copy_file(snapshot, file, true, true);
            if (!istvwarn(result))
                result = tv_delete_file(oldFile, false);
            if (!istvwarn(result))
                result = TVDBLoader(m_db).unload();
            d->m_appType = appType;
            if (!istvwarn(result))
                result = m_db.load(file, false, std::string(), false, true, true);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        if (istvwarn(result)) {
            // The cause stays recorded beside the warning below.
            (void)TVDBLoader(m_db).unload();
            d->m_appType = appType;
            // Copied, not moved: backup goes on naming the present state.
            TV_PASS_ON(tv_copy_file(backup, file, true, true));
            TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
            TV_PASS_ON(m_db.load(file, false, std::string(), false, true, true));
            return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not restore snapshot %s",
                             snapshot.c_str());
        }
        m_db.mark_structure_change();
        TV_PASS_ON(save(false, false, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// The text is read and checked on a scratch database before anything is
// touched. Then, in the order a crash can stand at any step: the present
// state is saved whole, the old session's log goes (it must never replay
// onto the new text), the text is written by the save's steps, and the file
// it replaced is kept as the newest backup. Only then does memory change.
int TVDBSaver::replace_file(const std::string& text, const std::string& source)
{
    try {
        TV_PASS_ON(m_db.check_writable(true));
        const std::string file = d->m_completeFile;
        const std::string from = source.empty() ? "The replacing data" : source;
        std::unique_ptr<TVDatabase> check(m_db.create_verification_db(d->m_appType));
        int result = TVErrC_ok;
        try {
            result = TVDBReader(*check).read(text, false, false);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        if (istvwarn(result)) {
            tvuserinfo_set("%s contains invalid data.", from.c_str());
            return tv_trail_return(result, TVLOCATION);
        }
        if (!d->m_appType.empty() && check->get_app_type() != d->m_appType)
            return tverror(TVDatabase::TVErrC_WrongAppType, TVLOCATION,
                           "%s is not a %s data file (it is a %s data file).", from.c_str(),
                           d->m_appType.c_str(), check->get_app_type().c_str());
        if (check->get_appfileversion() > m_db.current_appfileversion())
            return tverror(TVDatabase::TVErrC_NewerAppVersion, TVLOCATION,
                           "This file was written by a newer version of %s - Cannot load.",
                           tvapplication()->get_application().c_str());
        check.reset();
        if (file.empty()) {
            // In memory only: nothing on a disk to keep safe.
            m_db.clear_objects();
            TV_PASS_ON(TVDBReader(m_db).read(text, false, false));
            return adopt_replaced();
        }
        // The main file holds everything done so far, so the log can go.
        if (d->m_partialAhead || m_db.changed_since_full_write())
            TV_PASS_ON(save(false, false, false));
        TV_PASS_ON(TVDBLoader(m_db).clean_intermediate(false, true));
        const std::string newFile = TVDBFileNames::new_main(file);
        const std::string oldFile = TVDBFileNames::old_main(file);
        TV_PASS_ON(tv_db_write_file(newFile, text, false));
        const bool existed = tv_file_exists(file);
        if (existed)
            TV_PASS_ON(tv_rename_file(file, oldFile, true, true));
        TV_PASS_ON(tv_rename_file(newFile, file, true, true));
        TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
        bool thrown = false;
        try {
            result = verify(file, d->m_appType);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
            thrown = true;
        }
        if (istvwarn(result)) {
            if (existed)
                TV_PASS_ON(tv_rename_file(oldFile, file, true, true));
            tvsysinfo_append(TVLOCATION, "Moved %s back to %s", oldFile.c_str(), file.c_str());
            if (thrown)
                throw TVErrDetails(*get_tverror()->error_details());
            return tverrorvalue();
        }
        // The replaced file becomes ".bk0", whatever the rotation's timing.
        const int count = d->m_backupCount;
        d->m_backupCount = count > 0 ? count : TVDatabase::C_SnapshotBackupCount;
        d->m_lastBackup = 0;
        result = rotate_backups(oldFile);
        d->m_backupCount = count;
        TV_PASS_ON(result);
        // The new text is the new truth on the disk: what is in memory
        // follows. A read that fails now (it passed above) leaves the
        // database unloaded, and the next load reads the new file.
        m_db.clear_objects();
        d->m_isLoaded = false;
        TV_PASS_ON(TVDBReader(m_db).read(text, false, false));
        return adopt_replaced();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// What was just read is the whole database, and the files hold it: the
// undo history starts afresh from here.
int TVDBSaver::adopt_replaced()
{
    d->m_isLoaded = true;
    d->m_index.reset();
    d->m_baseFile.clear();
    d->m_firstPartialWrite = true;
    d->m_partialAhead = false;
    TV_PASS_ON(m_db.initialise(true));
    m_db.mark_partial_written();
    d->m_lastFullWrite = d->m_lastPartialWrite;
    return TVErrC_ok;
}

// A full write, as a save's, that leaves the index and the counters alone;
// a read-only database exports too.
int TVDBSaver::export_db(const std::string& file, std::string* text, bool check,
                          const std::string& app_type)
{
    const TVAppStatusSetter status(C_ExportingStatus, true, TVDatabase::C_SaveStatusDelayMicro);
    try {
        if (!d->m_isLoaded)
            return tverror(TVDatabase::TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        const std::string ownType = d->m_appType;
        if (!app_type.empty())
            d->m_appType = app_type;
        TVStringOut out;
        int result = TVErrC_ok;
        try {
            result = TVDBWriter(m_db).write(out, 0, false, std::string(), -1);
        } catch (const TVErrDetails&) {
            d->m_appType = ownType;
            tv_trail_throw(TVLOCATION);
        }
        d->m_appType = ownType;
        TV_PASS_ON(result);
        if (file.empty()) {
            if (text != nullptr)
                *text = out.take();
            return TVErrC_ok;
        }
        TV_PASS_ON(tv_db_save_file(file, out.text()));
        if (check) {
            std::unique_ptr<TVDatabase> copy(
                m_db.create_verification_db(app_type.empty() ? ownType : app_type));
            if (istvwarn(copy->read(file, false, false)))
                return tverror(TVDatabase::TVErrC_CorruptDatabase, TVLOCATION, "Unable to load database %s.",
                               file.c_str());
        }
        if (text != nullptr)
            *text = out.take();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSaver::remove_partial(const std::string& file)
{
    try {
        if (d->m_readOnly)
            return tverror(TVDatabase::TVErrC_DatabaseReadOnly, TVLOCATION,
                           "This database was opened read-only.");
        if (!file.empty())
            return tv_delete_file(TVDBFileNames::partial(file), false);
        if (!d->m_completeFile.empty()) {
            TV_PASS_ON(tv_delete_file(d->m_partialFile, false));
            d->m_firstPartialWrite = true;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- What the loader and the recovery of a damaged file ask for -------------

int TVDBSaver::put_back_old()
{
    try {
        const std::string& file = d->m_completeFile;
        const std::string oldFile = TVDBFileNames::old_main(file);
        tvlog(TVLOCATION, "Putting %s back as %s", oldFile.c_str(), file.c_str());
        TV_PASS_ON(tv_rename_file(oldFile, file, true, false));
        TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSaver::copy_in(const std::string& from, const std::string& to)
{
    return tv_copy_file(from, to, true, false);
}

int TVDBSaver::copy_template(const std::string& template_file)
{
    return tv_copy_file(template_file, d->m_completeFile, true, false);
}

int TVDBSaver::keep_damaged_partial(long good_bytes)
{
    try {
        const std::string& partial = d->m_partialFile;
        TV_PASS_ON(tv_copy_file(partial, TVDBFileNames::damaged_partial(d->m_completeFile), true,
                                true));
        // Appending after a damaged tail would put every later change where
        // no load reads it: a file that can't be cut back stops the load.
        std::error_code ec;
        if (TVFileFaults::should_fail(TVFileFaults::E_OpWrite, partial))
            ec = std::make_error_code(std::errc::io_error);
        else
            std::filesystem::resize_file(partial, static_cast<std::uintmax_t>(good_bytes), ec);
        if (ec)
            return tverror(TVErrC_FileWrite, TVLOCATION,
                           "Could not cut the damaged session file %s back to its last whole "
                           "operation (%s).",
                           partial.c_str(), ec.message().c_str());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBSaver::keep_version_copy(int version)
{
    const std::string& file = d->m_completeFile;
    if (file.empty() || !tv_file_exists(file))
        return TVErrC_ok;
    return tv_copy_file(file, get_cache_name(file, false) + ".Ver" + std::to_string(version),
                        true, true);
}

int TVDBSaver::keep_damaged(const std::string& file)
{
    return tv_rename_file(file, TVDBFileNames::kept_damaged(file), true, true);
}

int TVDBSaver::recover_from(const std::string& file, const std::string& recovery)
{
    try {
        TV_PASS_ON(tv_delete_file(TVDBFileNames::partial(file), false));
        TV_PASS_ON(keep_damaged(file));
        TV_PASS_ON(tv_copy_file(recovery, file, true, true));
        TV_PASS_ON(tv_sync_dir(tv_dirname(file)));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
