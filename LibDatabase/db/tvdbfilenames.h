#ifndef TVDBFILENAMES_H
#define TVDBFILENAMES_H

// TVDBFileNames: the name of every file that stands beside a database's
// main file F. One place for them all: the engine, the flows that recover
// a file and the tests ask here, and no other code spells an extension.
//
//   partial          scratch(F) ".bpu"       the operations since the base
//   damaged partial  scratch(F) ".bpu.bad"   a partial file as it was found damaged
//   base             cache(F, forced) ".tvdbbase"   where the log starts
//   index            cache(F, forced) ".tvdbindex"  the transaction log
//   new, old         cache(F) ".new", ".old" the next and the previous main
//                                            file during a save (beside F but
//                                            on Apple systems)
//   backup n         scratch(F) ".bk" n      ".bk0" the newest
//   last known good  scratch(F) ".lkg"       the last main file that verified
//   safety copy      scratch(F) ".bkc"       the state before a snapshot's restore
//   kept damaged     F ".bak"                a main file the user gave up
//   lock             cache(F, forced) ".dblock"
//
// scratch(F) is the application's scratch folder, "/" and F's base name;
// cache(F, force) is get_cache_name (tvcachename.h). Names only: nothing
// here touches the disk.

#include <string>

class TVDBFileNames
{
public:
    static constexpr const char* C_PartialExt = ".bpu";
    static constexpr const char* C_DamagedExt = ".bad";
    static constexpr const char* C_BaseExt = ".tvdbbase";
    static constexpr const char* C_IndexExt = ".tvdbindex";
    static constexpr const char* C_NewExt = ".new";
    static constexpr const char* C_OldExt = ".old";
    static constexpr const char* C_BackupExt = ".bk";
    static constexpr const char* C_LastKnownGoodExt = ".lkg";
    static constexpr const char* C_SafetyExt = ".bkc";
    static constexpr const char* C_KeptExt = ".bak";

    static std::string scratch(const std::string& file);
    static std::string partial(const std::string& file);
    static std::string damaged_partial(const std::string& file);
    static std::string base(const std::string& file);
    static std::string index(const std::string& file);
    static std::string new_main(const std::string& file);
    static std::string old_main(const std::string& file);
    static std::string backup(const std::string& file, int n);
    static std::string last_known_good(const std::string& file);
    static std::string safety_copy(const std::string& file);
    static std::string kept_damaged(const std::string& file);
    // What a damaged main file can be put back from, best first: the last
    // known good copy, then the newest backup; empty when neither exists.
    static std::string recovery_candidate(const std::string& file);
};

#endif // TVDBFILENAMES_H
