#include "LibCore/fileutils/tvdirectory.h"

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "TestSupport/tvfiletest.h"

namespace {

using Strings = std::vector<std::string>;

// A small image folder: matching and non-matching files, a hidden file and
// folder, links to a file and to a folder, and an empty folder.
class DirectoryTest : public TVFileTest
{
protected:
    void SetUp() override
    {
        TVFileTest::SetUp();
        make_dir("sub");
        make_dir("sub/deeper");
        make_dir(".git");
        make_dir("empty");
        for (const char* name : {"a.jpg", "b.PNG", "c.txt", ".hidden.jpg", "sub/d.jpg", "sub/e.txt",
                                 "sub/deeper/f.png", ".git/g.jpg"})
            write(name, name);
        ASSERT_EQ(::symlink(path("sub").c_str(), path("loop").c_str()), 0);
        ASSERT_EQ(::symlink(path("a.jpg").c_str(), path("link.jpg").c_str()), 0);
    }

    // The listed paths, relative to the scratch folder.
    Strings listed(const TVDirectory& dir) const
    {
        Strings out;
        const std::string root = path("");
        for (int i = 0; i < dir.get_nfiles(); ++i)
            out.push_back(dir.get_file_by_index(i)->get_pathname().substr(root.size()));
        return out;
    }
};

TEST_F(DirectoryTest, FilterAndSubdirectoriesChooseTheFiles)
{
    struct Row {
        const char* filter;
        bool subdirs;
        Strings files;
    };
    const Row rows[] = {
        {"*.jpg,*.png", false, {"a.jpg", "b.PNG", "link.jpg"}},
        {"*.jpg,*.png", true, {"a.jpg", "b.PNG", "link.jpg", "sub/d.jpg", "sub/deeper/f.png"}},
        {"", false, {"a.jpg", "b.PNG", "c.txt", "link.jpg"}},
        {" *.txt , ", true, {"c.txt", "sub/e.txt"}},
        {"?.jpg", true, {"a.jpg", "sub/d.jpg"}},
        {"*.gif", true, {}},
    };
    TVDirectory dir(path("").substr(0, path("").size() - 1)); // no trailing "/"
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.filter) + (r.subdirs ? " with subdirs" : ""));
        ASSERT_EQ(dir.load(r.filter, r.subdirs), TVErrC_ok);
        EXPECT_EQ(dir.get_filter(), r.filter);
        EXPECT_EQ(listed(dir), r.files);
    }
}

TEST_F(DirectoryTest, LookupsFindListedFilesOnly)
{
    TVDirectory dir(path("sub"));
    ASSERT_EQ(dir.load("*.jpg,*.png", true), TVErrC_ok);
    const TVFile* d = dir.get_file_by_pathname(path("sub/d.jpg"));
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->get_size(), 9); // "sub/d.jpg"
    EXPECT_TRUE(d->get_modified().is_ok());
    EXPECT_EQ(dir.get_file_by_pathname(path("sub/e.txt")), nullptr); // filtered out
    EXPECT_EQ(dir.get_file_by_pathname(path("sub/zzz.jpg")), nullptr);
    EXPECT_EQ(dir.get_file_by_index(-1), nullptr);
    EXPECT_EQ(dir.get_file_by_index(dir.get_nfiles()), nullptr);
    EXPECT_TRUE(dir.get_modified().is_ok()); // the folder's own time
}

TEST_F(DirectoryTest, ReloadSeesAddedAndRemovedFiles)
{
    TVDirectory dir(path("sub"));
    ASSERT_EQ(dir.load(true), TVErrC_ok);
    ASSERT_EQ(dir.get_nfiles(), 3);
    ASSERT_EQ(::unlink(path("sub/d.jpg").c_str()), 0);
    write("sub/deeper/new.txt", "n");
    ASSERT_EQ(dir.load(true), TVErrC_ok);
    EXPECT_EQ(listed(dir), (Strings{"sub/deeper/f.png", "sub/deeper/new.txt", "sub/e.txt"}));
}

TEST_F(DirectoryTest, MissingFolderEmptiesTheList)
{
    TVDirectory dir(path("sub"));
    ASSERT_EQ(dir.load(true), TVErrC_ok);
    for (const std::string& bad : {path("missing"), path("c.txt")}) {
        TVDirectory gone(dir);
        gone.set_pathname(bad);
        const TVFileOutcome o = outcome([&] { return gone.load(true); });
        EXPECT_EQ(o.severity, TVSevWarning);
        EXPECT_EQ(o.code, TVErrC_FileNotExist);
        EXPECT_EQ(o.text, "The directory " + bad + " does not exist.");
        EXPECT_EQ(gone.get_nfiles(), 0);
    }
}

TEST_F(DirectoryTest, UnreadableFolders)
{
    if (is_root())
        GTEST_SKIP() << "root reads every folder";
    ASSERT_EQ(::chmod(path("sub/deeper").c_str(), 0), 0);
    TVDirectory dir(path("sub"));
    ASSERT_EQ(dir.load(true), TVErrC_ok); // a closed subfolder is passed over
    EXPECT_EQ(listed(dir), (Strings{"sub/d.jpg", "sub/e.txt"}));

    ASSERT_EQ(::chmod(path("sub").c_str(), 0), 0);
    const TVFileOutcome o = outcome([&] { return dir.load(true); });
    EXPECT_EQ(o.code, TVErrC_FileOpen);
    EXPECT_EQ(o.text, "Could not read the directory " + path("sub"));
    ::chmod(path("sub").c_str(), 0755);
    ::chmod(path("sub/deeper").c_str(), 0755);
}

} // namespace
