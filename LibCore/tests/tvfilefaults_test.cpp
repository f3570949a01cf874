#include "LibCore/fileutils/tvfilefaults.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <functional>
#include <string>
#include <vector>

#include "LibCore/fileutils/tvfile.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "TestSupport/tvfiletest.h"

namespace {

using Op = TVFileFaults::E_FileOp;

// Each case injects one failure and asserts what survives on the disk.
class FileFaultTest : public TVFileTest
{
protected:
    // A hook that fails every op of that kind.
    static TVFileFaults::FailFn fail_all(Op op)
    {
        return [op](Op asked, const std::string&, const std::string&) { return asked == op; };
    }
    std::string io_error(const std::string& name) const
    {
        return name + " (error " + std::to_string(EIO) + " - " + std::strerror(EIO) + ")";
    }
};

// A failed replace leaves the old target whole, and no temporary file.
TEST_F(FileFaultTest, FailedMoveKeepsTheSourceAndTheOldTarget)
{
    struct Row {
        const char* name;
        Op op;
        bool copy;
        const char* to;
        int code;
        std::string text;
        const char* target; // what "to" holds afterwards
    };
    const Row rows[] = {
        {"rename", TVFileFaults::E_OpRename, false, "fresh", TVErrC_FileRename,
         "Could not rename " + path("from") + " to " + path("fresh"), "<missing>"},
        {"copy leaves no part behind", TVFileFaults::E_OpCopy, true, "fresh", TVErrC_FileRename,
         "Could not copy " + path("from") + " to " + path("fresh"), "<missing>"},
        {"rename over a file", TVFileFaults::E_OpRename, false, "to", TVErrC_FileRename,
         "Could not rename " + path("from") + " to " + path("to"), "old"},
        {"copy over a file", TVFileFaults::E_OpCopy, true, "to", TVErrC_FileRename,
         "Could not copy " + path("from") + " to " + path("to"), "old"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        write("from", "new");
        write("to", "old");
        TVFileFaults faults(fail_all(r.op));
        const TVFileOutcome o = outcome([&] {
            return r.copy ? tv_copy_file(path("from"), path(r.to), false, true)
                          : tv_rename_file(path("from"), path(r.to), false, true);
        });
        EXPECT_EQ(o.code, r.code);
        EXPECT_EQ(o.text, r.text);
        EXPECT_EQ(read("from"), "new");
        EXPECT_EQ(read(r.to), r.target);
        // Nothing beside the two: no temporary copy is left.
        const auto files = std::filesystem::directory_iterator(path(""));
        EXPECT_EQ(std::distance(begin(files), end(files)), 2);
    }
}

// Replacing never deletes the target first: a delete that would fail
// doesn't stop it.
TEST_F(FileFaultTest, ReplaceNeedsNoDelete)
{
    TVFileFaults faults(fail_all(TVFileFaults::E_OpDelete));
    for (bool copy : {false, true}) {
        write("from", copy ? "copied" : "moved");
        write("to", "old");
        EXPECT_EQ(copy ? tv_copy_file(path("from"), path("to"), false, true)
                       : tv_rename_file(path("from"), path("to"), false, true),
                  TVErrC_ok);
        EXPECT_EQ(read("to"), copy ? "copied" : "moved");
    }
}

TEST_F(FileFaultTest, EachInjectedFailureNamesItsPath)
{
    write("f", "x");
    make_dir("d");
    struct Row {
        Op op;
        std::function<int()> call;
        int code;
        std::string text;
    };
    const Row rows[] = {
        {TVFileFaults::E_OpCreateDir, [&] { return tv_create_dir(path("n/m"), true); },
         TVErrC_FileCreate, "Could not create " + path("n/m")},
        {TVFileFaults::E_OpSync, [&] { return tv_sync_file(path("f")); }, TVErrC_FileWrite,
         "Could not sync " + io_error(path("f"))},
        {TVFileFaults::E_OpSync, [&] { return tv_sync_dir(path("d")); }, TVErrC_FileWrite,
         "Could not sync " + io_error(path("d"))},
        {TVFileFaults::E_OpWrite,
         [&] {
             TVFile file(path("f"));
             return file.set_times(TVDate(), TVDateUtils::now());
         },
         TVErrC_FileWrite, "Could not set the times of " + io_error(path("f"))},
        {TVFileFaults::E_OpRead, [&] { return tv_file_compare(path("f"), path("f")) ? 1 : 0; },
         TVErrC_FileOpen, "tv_file_compare: Could not open " + path("f") + " for reading."},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        TVFileFaults faults(fail_all(r.op));
        const TVFileOutcome o = outcome(r.call);
        EXPECT_TRUE(o.thrown);
        EXPECT_EQ(o.code, r.code);
        EXPECT_EQ(o.text, r.text);
    }
    EXPECT_FALSE(there("n"));
    TVFileFaults faults(fail_all(TVFileFaults::E_OpWrite));
    EXPECT_FALSE(tv_dir_writable(path("d")));
}

TEST_F(FileFaultTest, HookSeesBothPathsAndScopesNest)
{
    write("a", "x");
    std::vector<std::string> seen;
    {
        TVFileFaults outer(fail_all(TVFileFaults::E_OpDelete));
        {
            TVFileFaults inner([&](Op op, const std::string& from, const std::string& to) {
                seen.push_back(std::to_string(op) + " " + from + " " + to);
                return false;
            });
            EXPECT_EQ(tv_rename_file(path("a"), path("b"), false, false), TVErrC_ok);
            EXPECT_EQ(tv_delete_file(path("b"), true), TVErrC_ok); // outer is hidden
        }
        write("c", "x");
        EXPECT_EQ(outcome([&] { return tv_delete_file(path("c"), true); }).code, TVErrC_FileDelete);
    }
    const std::string rename = std::to_string(TVFileFaults::E_OpRename);
    const std::string remove = std::to_string(TVFileFaults::E_OpDelete);
    EXPECT_EQ(seen, (std::vector<std::string>{rename + " " + path("a") + " " + path("b"),
                                              remove + " " + path("b") + " "}));
    EXPECT_EQ(tv_delete_file(path("c"), true), TVErrC_ok); // no hook left
}

} // namespace
