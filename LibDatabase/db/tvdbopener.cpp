#include "LibDatabase/db/tvdbopener.h"

#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvdbsaver.h"
#include "LibDatabase/db/tvlockfile.h"
#include "LibObject/object/tvtrail.h"

namespace {
// A fallible call as a value, whatever the error action (an error may throw).
template <class F>
int value_of(F&& f)
{
    try {
        return f();
    } catch (const TVErrDetails&) {
        return tverrorvalue();
    }
}
} // namespace

TVDBOpener::TVDBOpener(TVDatabase& db, TVLockFile* lock) : m_db(db), m_lock(lock)
{
}

TVDBOpener::Result TVDBOpener::open(const std::string& file, bool creating,
                                    const std::string& template_file, bool steal)
{
    Result found;
    if (!creating && !tv_file_exists(file)) {
        found.outcome = E_Missing;
        return found;
    }
    if (m_lock != nullptr) {
        const int result = value_of([&] { return m_lock->lock(file, steal); });
        if (istvwarn(result)) {
            // A refusal is a warning with no text, left for the user.
            if (!steal && TVErrDetails::compute_code(result) == TVErrC_FileOpen) {
                get_tverror()->clear_all();
                found.outcome = E_Locked;
            } else {
                found.outcome = E_Failed;
                found.result = result;
            }
            return found;
        }
    }
    if (m_db.is_loaded() && m_db.get_filename() == file)
        return found;
    const int result = value_of([&] {
        return m_db.load(file, creating, template_file, m_db.has_partial(file), true, false);
    });
    if (!istvwarn(result))
        return found;
    found.result = result;
    const int code = TVErrDetails::compute_code(result);
    if (code == TVDatabase::TVErrC_CorruptPartial) {
        get_tverror()->clear_all();
        found.outcome = E_DamagedPartial;
    } else if (code == TVDatabase::TVErrC_Intermediate) {
        get_tverror()->clear_all();
        found.outcome = E_Leftovers;
    } else {
        found.outcome = E_Damaged;
        found.recovery = TVDBFileNames::recovery_candidate(file);
    }
    return found;
}

int TVDBOpener::discard_session(const std::string& file, bool creating,
                                const std::string& template_file)
{
    try {
        TV_PASS_ON(m_db.unload());
        TV_PASS_ON(m_db.remove_partial(file));
        TV_PASS_ON(m_db.load(file, creating, template_file, false, false, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBOpener::discard_leftovers(const std::string& file, bool creating,
                                  const std::string& template_file)
{
    try {
        TV_PASS_ON(m_db.unload());
        TV_PASS_ON(m_db.load(file, creating, template_file, true, true, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBOpener::recover(const std::string& file)
{
    try {
        TV_PASS_ON(m_db.unload());
        const std::string recovery = TVDBFileNames::recovery_candidate(file);
        if (recovery.empty())
            return tvwarning(TVErrC_FileNotExist, TVLOCATION,
                             "There is no saved copy of %s to recover from.", file.c_str());
        TV_PASS_ON(TVDBSaver::recover_from(file, recovery));
        TV_PASS_ON(m_db.load(file, false, std::string(), false, false, true));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBOpener::give_up(const std::string& file)
{
    try {
        TV_PASS_ON(m_db.unload());
        TV_PASS_ON(TVDBSaver::keep_damaged(file));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}
