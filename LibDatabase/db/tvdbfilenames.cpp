#include "LibDatabase/db/tvdbfilenames.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvcachename.h"

std::string TVDBFileNames::scratch(const std::string& file)
{
    return tvapplication()->get_scratch_dir() + "/" + tv_basename(file);
}

std::string TVDBFileNames::partial(const std::string& file)
{
    return scratch(file) + C_PartialExt;
}

std::string TVDBFileNames::damaged_partial(const std::string& file)
{
    return partial(file) + C_DamagedExt;
}

std::string TVDBFileNames::base(const std::string& file)
{
    return get_cache_name(file, true) + C_BaseExt;
}

std::string TVDBFileNames::index(const std::string& file)
{
    return get_cache_name(file, true) + C_IndexExt;
}

std::string TVDBFileNames::new_main(const std::string& file)
{
    return get_cache_name(file, false) + C_NewExt;
}

std::string TVDBFileNames::old_main(const std::string& file)
{
    return get_cache_name(file, false) + C_OldExt;
}

std::string TVDBFileNames::backup(const std::string& file, int n)
{
    return scratch(file) + C_BackupExt + std::to_string(n);
}

std::string TVDBFileNames::last_known_good(const std::string& file)
{
    return scratch(file) + C_LastKnownGoodExt;
}

std::string TVDBFileNames::safety_copy(const std::string& file)
{
    return scratch(file) + C_SafetyExt;
}

std::string TVDBFileNames::kept_damaged(const std::string& file)
{
    return file + C_KeptExt;
}

// Last known good first: a backup may hold a state it has outlived.
std::string TVDBFileNames::recovery_candidate(const std::string& file)
{
    for (const std::string& name : {last_known_good(file), backup(file, 0)})
        if (tv_file_exists(name))
            return name;
    return std::string();
}
