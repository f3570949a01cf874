#include "LibDatabase/db/tvdbloader.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvdbreader.h"
#include "LibDatabase/db/tvdbsaver.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibDate/core/tvdateutils.h"
#include "LibObject/object/tvtrail.h"

#include <map>
#include <vector>

TVDBLoader::TVDBLoader(TVDatabase& db) : m_db(db), d(db.d.get())
{
}

// A load that fails leaves nothing of the file behind: the next load
// (the file that was open before, say) must not read onto its objects.
int TVDBLoader::load(const std::string& file, bool read_only, bool create_file,
                     const std::string& default_file, bool keep_partial, bool use_partial,
                     bool remove_intermediate, bool no_clean)
{
    if (d->m_isLoaded)
        return tverror(TVDatabase::TVErrC_DatabaseAlreadyLoaded, TVLOCATION,
                       "Database file %s already loaded.", d->m_completeFile.c_str());
    int result = TVErrC_ok;
    try {
        result = load_steps(file, read_only, create_file, default_file, keep_partial, use_partial,
                            remove_intermediate, no_clean);
    } catch (const TVErrDetails&) {
        forget_contents();
        tv_trail_throw(TVLOCATION);
    }
    if (istvwarn(result))
        forget_contents();
    return result;
}

void TVDBLoader::forget_contents()
{
    m_db.clear_objects();
    m_db.clear_unhandled_data();
    d->m_isLoaded = false;
    d->m_isResolved = false;
    d->m_uniqueId = m_db.get_id() + 1;
    d->m_comment.clear();
    d->m_appFileVersion = 0;
    d->m_featureCount = 0;
    d->m_writeTime = TVDateUtils::blank_date();
    d->m_writeHost.clear();
    d->m_appRelease.clear();
    d->m_noteURL.clear();
}

int TVDBLoader::load_steps(const std::string& file, bool read_only, bool create_file,
                           const std::string& default_file, bool keep_partial, bool use_partial,
                           bool remove_intermediate, bool no_clean)
{
    try {
        const std::string appType = d->m_appType;
        m_db.set_filename(file);
        d->m_readOnly = read_only;
        if (file.empty()) {
            d->m_isLoaded = true;
            TV_PASS_ON(m_db.initialise(true));
            return TVErrC_ok;
        }
        bool existed = tv_file_exists(file);
        if (!existed && !read_only && tv_file_exists(TVDBFileNames::old_main(file))) {
            // A save stopped between its two renames: the old file is whole,
            // and the partial file holds everything done since it was written.
            TV_PASS_ON(TVDBSaver(m_db).put_back_old());
            existed = true;
        }
        if (!existed) {
            if (!create_file)
                return tvwarning(TVErrC_FileOpen, TVLOCATION, "The file %s does not exist.",
                                 file.c_str());
            if (default_file.empty())
                return create(file, false);
            TV_PASS_ON(TVDBSaver(m_db).copy_template(default_file));
        }
        if (!no_clean && !read_only)
            TV_PASS_ON(clean_intermediate(keep_partial, remove_intermediate));
        // A log that survived the clean starts from the base of the session
        // that wrote it, not from the main file, which may have been saved
        // since: undo replays onto that base.
        const std::string base = TVDBFileNames::base(file);
        if (m_db.has_partial("") && tv_file_exists(base))
            d->m_baseFile = base;
        TV_PASS_ON(load_file(file));
        if (!appType.empty() && appType != d->m_appType) {
            const std::string found = d->m_appType;
            d->m_appType = appType;
            return tverror(TVDatabase::TVErrC_WrongAppType, TVLOCATION,
                           "%s is not a %s data file (it is a %s data file).", file.c_str(),
                           appType.c_str(), found.c_str());
        }
        d->m_isLoaded = true;
        ++d->m_loadID;
        m_db.mark_partial_written();
        d->m_lastFullWrite = d->m_lastPartialWrite;
        if (use_partial && m_db.has_partial("")) {
            // A damaged session file must not cost the main file: what
            // reads whole is applied, the file as it was is kept aside, the
            // warning stays recorded and the load goes on. One that can't
            // be opened at all stops the load, for the user to decide on.
            const int result = load_partial(true);
            if (d->m_partialUnread)
                return result;
        }
        TV_PASS_ON(m_db.upgrade_appfileversion());
        TV_PASS_ON(m_db.initialise(true));
        // Setting up marks the database changed; only a replay puts the
        // main file behind.
        if (!d->m_partialAhead)
            d->m_lastFullWrite = m_db.get_counter(true);
        d->m_linkWrite = d->m_lastFullWrite;
        // What was loaded is what the files hold: nothing of it is due to
        // the partial file. Otherwise the first write (the one before an
        // undo or redo replays) appends the database record as loaded to
        // the last block, and a redo of that block brings the old values.
        m_db.mark_partial_written();
        if (!existed)
            TV_PASS_ON(TVDBSaver(m_db).save(true, true, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBLoader::load_file(const std::string& file)
{
    try {
        std::string text;
        TV_PASS_ON(tv_db_read_file(file, text));
        int result = TVErrC_ok;
        try {
            result = TVDBReader(m_db).read(text, false, false);
        } catch (const TVErrDetails&) {
            tvuserinfo_set("%s contains invalid data.", file.c_str());
            tvsysinfo_append(TVLOCATION, "reading %s", file.c_str());
            get_tverror()->perform_action();
            return tverrorvalue();
        }
        if (istvwarn(result)) {
            if (get_tverror()->is_error()) {
                tvuserinfo_set("%s contains invalid data.", file.c_str());
                tvsysinfo_append(TVLOCATION, "reading %s", file.c_str());
            }
            return tv_trail_return(result, TVLOCATION);
        }
        if (d->m_appFileVersion > m_db.current_appfileversion()) {
            const int newer = tverror(TVDatabase::TVErrC_NewerAppVersion, TVLOCATION,
                                      "This file was written by a newer version of %s - Cannot "
                                      "load.",
                                      tvapplication()->get_application().c_str());
            tvsysinfo_append(TVLOCATION, "reading %s", file.c_str());
            return newer;
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBLoader::load_partial(bool skip_saved)
{
    try {
        if (!d->m_isLoaded)
            return tverror(TVDatabase::TVErrC_DatabaseNotLoaded, TVLOCATION, "Database file %s not loaded.",
                           d->m_completeFile.c_str());
        const std::string& partial = d->m_partialFile;
        if (d->m_completeFile.empty() || !tv_file_exists(partial))
            return TVErrC_ok;
        // An unreadable index only costs the skipping of saved blocks:
        // replaying them onto the main file changes nothing.
        const bool logged = tv_file_exists(d->m_indexFile) && !istvwarn(d->m_index.load());
        std::string text;
        d->m_partialUnread = istvwarn(tv_db_read_file(partial, text));
        if (d->m_partialUnread)
            return tvwarning(TVDatabase::TVErrC_CorruptPartial, TVLOCATION, "Could not open the file %s",
                             partial.c_str());
        int result = TVErrC_ok;
        try {
            result = TVDBReader(m_db).read(text, true, skip_saved);
        } catch (const TVErrDetails&) {
            result = tverrorvalue();
        }
        // New transactions go after every tag in the file, even when the
        // log lost records: a shared tag would tie a new operation's undo
        // to an old block. Records a crash cut off the log's end (they
        // aren't flushed) come back from the blocks' transaction lines.
        d->m_index.recover(d->m_partialNextTag, d->m_partialOps, logged);
        m_db.mark_changed(TVLOCATION, true);
        d->m_partialAhead = true;
        // A read-only load (a check of the files) leaves every file as it
        // found it: the repairs below are for the load that writes next.
        if (result == TVErrC_okDelete)
            return d->m_readOnly ? TVErrC_ok : tv_delete_file(partial, false);
        if (!istvwarn(result))
            return TVErrC_ok;
        if (d->m_readOnly)
            return tvwarning(TVDatabase::TVErrC_CorruptPartial, TVLOCATION,
                             "The session file %s is damaged: the changes after its last whole "
                             "operation are not shown.",
                             partial.c_str());
        // Keep the damaged file as it was, and cut the live one back to its
        // last whole block so the next append follows good data.
        const std::string damaged = TVDBFileNames::damaged_partial(d->m_completeFile);
        if (istvwarn(TVDBSaver(m_db).keep_damaged_partial(d->m_partialGoodBytes))) {
            // Later changes would follow the damage, where no load reads
            // them: the user decides, as for a file that won't open.
            d->m_partialUnread = true;
            return tvwarning(TVDatabase::TVErrC_CorruptPartial, TVLOCATION,
                             "The session file %s is damaged and could not be repaired.",
                             partial.c_str());
        }
        return tvwarning(TVDatabase::TVErrC_CorruptPartial, TVLOCATION,
                         "The session file %s was damaged: the changes after its last whole "
                         "operation are lost (the file as it was is %s).",
                         partial.c_str(), damaged.c_str());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBLoader::load_base(bool save_pending)
{
    try {
        if (save_pending)
            TV_PASS_ON(TVDBSaver(m_db).save_partial(""));
        // The links and what was written to them are no part of what the
        // user undoes: the base knows neither a link made since nor the
        // writes since, and the next pull would judge by them.
        const TVPtrArray<TVExternalDB> links(d->m_external);
        const TVDate writeTime = d->m_writeTime;
        const std::string writeHost = d->m_writeHost;
        std::map<int, long> counters;
        for (const TVDBObject* object : d->m_objects)
            counters[object->get_id()] = object->get_last_update();
        m_db.clear_objects();
        d->m_isLoaded = false;
        d->m_isResolved = false;
        const std::string file = d->m_baseFile.empty() ? d->m_completeFile : d->m_baseFile;
        TV_PASS_ON(load_file(file));
        d->m_isLoaded = true;
        TV_PASS_ON(load_partial(false));
        d->m_external = links;
        d->m_writeTime = writeTime;
        d->m_writeHost = writeHost;
        // Objects the replay left as they were look unchanged to the views.
        for (TVDBObject* object : d->m_objects) {
            const auto it = counters.find(object->get_id());
            if (it != counters.end())
                object->restore_update(it->second);
        }
        TV_PASS_ON(m_db.initialise(true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBLoader::clean_intermediate(bool keep_partial, bool remove)
{
    try {
        if (d->m_readOnly)
            return tverror(TVDatabase::TVErrC_DatabaseReadOnly, TVLOCATION,
                           "This database was opened read-only.");
        const std::string& file = d->m_completeFile;
        if (file.empty())
            return TVErrC_ok;
        const std::string newFile = TVDBFileNames::new_main(file);
        const std::string oldFile = TVDBFileNames::old_main(file);
        if (!remove) {
            std::vector<std::string> names{newFile, oldFile};
            if (!keep_partial) {
                names.push_back(d->m_partialFile);
                names.push_back(d->m_indexFile);
            }
            for (const std::string& name : names)
                if (tv_file_exists(name))
                    return tvwarning(TVDatabase::TVErrC_Intermediate, TVLOCATION,
                                     "File %s exists with main database.", name.c_str());
            return TVErrC_ok;
        }
        TV_PASS_ON(tv_delete_file(newFile, false));
        TV_PASS_ON(tv_delete_file(oldFile, false));
        if (!keep_partial) {
            TV_PASS_ON(tv_delete_file(d->m_partialFile, false));
            d->m_firstPartialWrite = true;
        }
        // The log says which blocks of the partial file are undone and
        // which the main file holds: it goes with the partial file, or an
        // undone block would replay and new ids would reuse old tags.
        if (keep_partial && tv_file_exists(d->m_partialFile))
            return TVErrC_ok;
        // By its name, named or not: a base left behind would be taken for
        // the start of the next session's log.
        TV_PASS_ON(tv_delete_file(TVDBFileNames::base(file), false));
        d->m_baseFile.clear();
        TV_PASS_ON(tv_delete_file(d->m_indexFile, false));
        d->m_index.reset();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBLoader::create(const std::string& file, bool overwrite)
{
    try {
        TV_PASS_ON(m_db.check_writable(false));
        if (d->m_isLoaded)
            return tverror(TVDatabase::TVErrC_DatabaseAlreadyLoaded, TVLOCATION,
                           "Database file %s already loaded.", d->m_completeFile.c_str());
        m_db.set_filename(file);
        if (tv_file_exists(file) && !overwrite)
            return tvwarning(TVErrC_FileExists, TVLOCATION, "The file %s already exists",
                             file.c_str());
        TV_PASS_ON(clean_intermediate(false, true));
        d->m_isLoaded = true;
        TV_PASS_ON(m_db.initialise(true));
        TV_PASS_ON(TVDBSaver(m_db).save(true, true, false));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBLoader::unload()
{
    try {
        // The side files go only when the main file holds everything: after
        // a failed load or save they are what the next load recovers from.
        if (!d->m_readOnly && d->m_isLoaded && !d->m_partialAhead)
            TV_PASS_ON(clean_intermediate(false, true));
        forget_contents();
        d->m_readOnly = false;
        d->m_firstPartialWrite = true;
        m_db.set_filename(std::string());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
