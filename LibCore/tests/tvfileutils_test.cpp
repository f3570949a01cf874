#include "LibCore/fileutils/tvfileutils.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "TestSupport/tvfiletest.h"

namespace {

using Strings = std::vector<std::string>;

// ---- Path names -------------------------------------------------------------

TEST(PathNameTest, SplitsNamesAtTheRightSeparator)
{
    struct Row {
        const char* path;
        const char* dir;
        const char* file;
        const char* base;
        const char* ext;
    };
    const Row rows[] = {
        {"a/b/c.txt", "a/b", "c.txt", "c", "txt"},
        {"c.tar.gz", ".", "c.tar.gz", "c.tar", "gz"},
        {"/c.txt", "/", "c.txt", "c", "txt"},
        {"a/b/", "a/b", "", "", ""},
        // A dotted folder and a file without extension: the search for
        // the dot stops at the separator, of either kind.
        {"dir.d/file", "dir.d", "file", "file", ""},
        {"w.x\\y.z", ".", "w.x\\y.z", "y", "z"},
        {".cfg", ".", ".cfg", "", "cfg"},
        {"name.", ".", "name.", "name", ""},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.path);
        EXPECT_EQ(tv_dirname(r.path), r.dir);
        EXPECT_EQ(tv_filename(r.path), r.file);
        EXPECT_EQ(tv_basename(r.path), r.base);
        EXPECT_EQ(tv_extension(r.path), r.ext);
    }
}

TEST(PathNameTest, SplitPathGivesComponentsAndRoot)
{
    struct Row {
        const char* path;
        Strings parts;
        const char* root;
        bool absolute;
    };
    const Row rows[] = {
        {"/usr//local/bin/", {"usr", "local", "bin"}, "/", true},
        {"a\\b/c", {"a", "b", "c"}, "", false},
        {"\\\\srv\\share", {"srv", "share"}, "\\", true},
        {"C:\\x", {"C:", "x"}, "", false},
        {"", {}, "", false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.path);
        Strings parts{"left over"};
        std::string root = "left over";
        tv_split_path(r.path, parts, root);
        EXPECT_EQ(parts, r.parts);
        EXPECT_EQ(root, r.root);
        EXPECT_EQ(tv_is_absolute_path(r.path), r.absolute);
    }
}

TEST(PathNameTest, CleanPathnameRemovesDotComponents)
{
    struct Row {
        const char* path;
        bool both;
        const char* clean;
    };
    const Row rows[] = {
        {"a/./b", false, "a/b"},         {"a/b/../c", false, "a/c"},
        {"a/..", false, "."},            {"../a", false, "../a"},
        {"a/../../b", false, "../b"},    {"/../a", false, "/a"},
        {"/", false, "/"},
        {"a\\b", false, "a\\b"},         {"a\\b\\..\\c", true, "a/c"},
        {"\\x\\.\\y", true, "/x/y"},     {"./../x/./y/..", false, "../x"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(tv_clean_pathname(r.path, r.both), r.clean) << r.path << " both=" << r.both;
}

// ---- Probes -----------------------------------------------------------------

class FileUtilsTest : public TVFileTest
{
};

TEST_F(FileUtilsTest, ProbesTellFilesFromFolders)
{
    write("f.txt", "x");
    make_dir("d");
    struct Row {
        std::string path;
        bool file;
        bool dir;
    };
    const Row rows[] = {
        {path("f.txt"), true, false},   {path("d"), false, true},
        {path("gone"), false, false},   {path("f.txt/x"), false, false},
        {"", false, false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.path);
        EXPECT_EQ(tv_file_exists(r.path), r.file);
        EXPECT_EQ(tv_dir_exists(r.path), r.dir);
    }
    EXPECT_FALSE(tv_file_modified(path("gone")).is_ok());
}

TEST_F(FileUtilsTest, DirWritableLeavesNoTestFileBehind)
{
    make_dir("d");
    write("d/ABCDEFFFED-test.txt", "left by a crash");
    EXPECT_TRUE(tv_dir_writable(path("d")));
    EXPECT_FALSE(there("d/ABCDEFFFED-test.txt"));

    write("f", "");
    EXPECT_FALSE(tv_dir_writable(path("f")));
    EXPECT_FALSE(tv_dir_writable(path("missing")));
}

TEST_F(FileUtilsTest, ReadOnlyFolderRefusesWritesAndDeletes)
{
    if (is_root())
        GTEST_SKIP() << "root writes into a read-only folder";
    make_dir("ro");
    write("ro/f", "x");
    ASSERT_EQ(::chmod(path("ro").c_str(), 0555), 0);
    EXPECT_FALSE(tv_dir_writable(path("ro")));
    const TVFileOutcome o = outcome([&] { return tv_delete_file(path("ro/f"), true); });
    EXPECT_EQ(o.code, TVErrC_FileDelete);
    EXPECT_EQ(o.text, "Could not delete " + path("ro/f") + " (error 13 - Permission denied)");
    EXPECT_EQ(read("ro/f"), "x");
    ::chmod(path("ro").c_str(), 0755);
}

TEST_F(FileUtilsTest, ModifiedTimeIsReadToTheMicrosecond)
{
    write("f", "x");
    // 2021-03-04 05:06:07.250000 GMT, counted by hand from 1970.
    const timespec times[2] = {{0, UTIME_OMIT}, {1614834367, 250000000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path("f").c_str(), times, 0), 0);
    const TVDate expected(2021, 2, 3, 5, 6, 7, 250000, TVDate::C_GMT);
    const TVDate modified = tv_file_modified(path("f"));
    EXPECT_EQ(modified - expected, TVDuration(0, 0, 0));
}

TEST_F(FileUtilsTest, CompareLooksAtEveryByte)
{
    const std::string big(200000, 'q');
    std::string bigTail = big;
    bigTail[150000] = 'r'; // beyond the first read block
    struct Row {
        std::string a;
        std::string b;
        bool same;
    };
    const Row rows[] = {{"abc", "abd", false}, {"abc", "abcd", false}, {big, big, true}, {big, bigTail, false}};
    for (const Row& r : rows) {
        write("a", r.a);
        write("b", r.b);
        EXPECT_EQ(tv_file_compare(path("a"), path("b")), r.same) << r.a.size() << "/" << r.b.size();
    }
    EXPECT_TRUE(tv_file_compare(path("a"), path("a")));
}

TEST_F(FileUtilsTest, CompareNamesTheFileThatWontOpen)
{
    write("a", "x");
    make_dir("d");
    // A missing file first, a folder second.
    for (const auto& [first, second] : {std::make_pair(path("missing"), path("a")), std::make_pair(path("a"), path("d"))}) {
        const TVFileOutcome o = outcome([&] { return tv_file_compare(first, second) ? 1 : 0; });
        EXPECT_TRUE(o.thrown);
        EXPECT_EQ(o.code, TVErrC_FileOpen);
        EXPECT_EQ(o.text, "tv_file_compare: Could not open " + (first == path("a") ? second : first) + " for reading.");
    }
}

// ---- Folders and deleting -----------------------------------------------------

TEST_F(FileUtilsTest, CreateDirMakesParents)
{
    EXPECT_EQ(tv_create_dir(path("x/y/z"), false), TVErrC_ok);
    EXPECT_TRUE(tv_dir_exists(path("x/y/z")));
    EXPECT_EQ(tv_create_dir(path("x/y"), true), TVErrC_ok);
    EXPECT_FALSE(get_tverror()->is_error());
}

TEST_F(FileUtilsTest, CreateDirFaultsNameThePath)
{
    make_dir("d");
    write("f", "keep");
    struct Row {
        std::string name;
        bool existsOk;
        int severity;
        int code;
        std::string text;
    };
    const Row rows[] = {
        // Existing folder without existsOk: a warning, not an error.
        {path("d"), false, TVSevWarning, TVErrC_FileExists, path("d") + " already exists"},
        {path("f"), false, TVSevWarning, TVErrC_FileExists, path("f") + " already exists"},
        {path("f"), true, TVSevError, TVErrC_FileCreate, "Could not create " + path("f")},
        {path("f/sub"), true, TVSevError, TVErrC_FileCreate, "Could not create " + path("f/sub")},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const TVFileOutcome o = outcome([&] { return tv_create_dir(r.name, r.existsOk); });
        EXPECT_EQ(o.severity, r.severity);
        EXPECT_EQ(o.thrown, r.severity == TVSevError);
        EXPECT_EQ(o.code, r.code);
        EXPECT_EQ(o.text, r.text);
    }
    EXPECT_EQ(read("f"), "keep");
}

TEST_F(FileUtilsTest, DeleteFileAndAMissingOne)
{
    write("f", "x");
    EXPECT_EQ(tv_delete_file(path("f"), true), TVErrC_ok);
    EXPECT_FALSE(there("f"));
    // Missing without mustExist is a plain success.
    EXPECT_EQ(tv_delete_file(path("f"), false), TVErrC_ok);
    EXPECT_FALSE(get_tverror()->is_error());

    const TVFileOutcome o = outcome([&] { return tv_delete_file(path("f"), true); });
    EXPECT_TRUE(o.thrown);
    EXPECT_EQ(o.code, TVErrC_FileNotExist);
    EXPECT_EQ(o.text, "The file " + path("f") + " does not exist.");
}

TEST_F(FileUtilsTest, SyncReportsAMissingPath)
{
    write("f", "x");
    make_dir("d");
    EXPECT_EQ(tv_sync_file(path("f")), TVErrC_ok);
    EXPECT_EQ(tv_sync_dir(path("d")), TVErrC_ok);
    struct Row {
        std::function<int()> call;
        std::string text;
    };
    const Row rows[] = {
        {[&] { return tv_sync_file(path("gone")); }, "The file " + path("gone")},
        {[&] { return tv_sync_dir(path("gone")); }, "The directory " + path("gone")},
        {[&] { return tv_sync_dir(path("f")); }, "The directory " + path("f")},
    };
    for (const Row& r : rows) {
        const TVFileOutcome o = outcome(r.call);
        EXPECT_TRUE(o.thrown);
        EXPECT_EQ(o.code, TVErrC_FileNotExist);
        EXPECT_EQ(o.text, r.text + " does not exist.");
    }
}

// ---- Rename and copy ----------------------------------------------------------

// Both operations share their checks; each case runs for both.
class MoveTest : public TVFileTest, public ::testing::WithParamInterface<bool>
{
protected:
    bool copying() const { return GetParam(); }
    int move(const std::string& from, const std::string& to, bool createDir, bool overwrite) const
    {
        return copying() ? tv_copy_file(path(from), path(to), createDir, overwrite)
                         : tv_rename_file(path(from), path(to), createDir, overwrite);
    }
    std::string failed(const std::string& from, const std::string& to) const
    {
        return std::string(copying() ? "Could not copy " : "Could not rename ") + path(from) +
               " to " + path(to);
    }
};

TEST_P(MoveTest, MovesOrCopiesTheBytes)
{
    write("from", "payload");
    write("old", "old payload");
    EXPECT_EQ(move("from", "sub/deeper/to", true, false), TVErrC_ok);
    EXPECT_EQ(read("sub/deeper/to"), "payload");
    EXPECT_EQ(there("from"), copying());

    write("from", "second");
    EXPECT_EQ(move("from", "old", false, true), TVErrC_ok);
    EXPECT_EQ(read("old"), "second");
    EXPECT_FALSE(get_tverror()->is_error());
}

TEST_P(MoveTest, RefusalsLeaveBothFilesAsTheyWere)
{
    const std::string source("source\0bytes\n", 13);
    write("from", source);
    write("to", "target bytes");
    make_dir("adir");
    write("blocker", "in the way");
    struct Row {
        const char* name;
        std::string to;
        bool createDir;
        bool overwrite;
        int severity;
        int code;
        std::string text;
    };
    const Row rows[] = {
        {"onto an existing file", "to", false, false, TVSevError, TVErrC_FileExists,
         "The file " + path("to") + " already exists."},
        {"into a missing folder", "nowhere/to", false, true, TVSevWarning, TVErrC_FileNotExist,
         "The directory " + path("nowhere") + " does not exist."},
        {"through a file", "blocker/to", true, true, TVSevError, TVErrC_FileCreate,
         "Could not create " + path("blocker")},
        {"onto itself", "from", false, true, TVSevError, TVErrC_FileRename, failed("from", "from")},
        {"onto a folder", "adir", false, true, TVSevError, TVErrC_FileRename,
         failed("from", "adir")},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const TVFileOutcome o =
            outcome([&] { return move("from", r.to, r.createDir, r.overwrite); });
        EXPECT_EQ(o.severity, r.severity);
        EXPECT_EQ(o.code, r.code);
        EXPECT_EQ(o.text, r.text);
        EXPECT_EQ(read("from"), source);
        EXPECT_EQ(read("to"), "target bytes");
        EXPECT_EQ(read("blocker"), "in the way");
        EXPECT_TRUE(tv_dir_exists(path("adir")));
    }
}

TEST_P(MoveTest, MissingSourceIsNamed)
{
    write("to", "target bytes");
    const TVFileOutcome o = outcome([&] { return move("gone", "to", true, true); });
    EXPECT_TRUE(o.thrown);
    EXPECT_EQ(o.code, TVErrC_FileNotExist);
    EXPECT_EQ(o.text, "The file " + path("gone") + " does not exist.");
    EXPECT_EQ(read("to"), "target bytes");
}

TEST_P(MoveTest, HardLinkedTargetIsNotDeleted)
{
    write("from", "only copy");
    ASSERT_EQ(::link(path("from").c_str(), path("alias").c_str()), 0);
    const TVFileOutcome o = outcome([&] { return move("from", "alias", false, true); });
    EXPECT_EQ(o.code, TVErrC_FileRename);
    EXPECT_EQ(read("from"), "only copy");
}

INSTANTIATE_TEST_SUITE_P(RenameAndCopy, MoveTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "Copy" : "Rename";
                         });

} // namespace
