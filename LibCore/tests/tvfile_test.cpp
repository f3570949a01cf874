#include "LibCore/fileutils/tvfile.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include "LibCore/fileutils/tvfileutils.h"
#include "TestSupport/tvfiletest.h"

namespace {

class FileTest : public TVFileTest
{
protected:
    // Seconds since 1970 of the file's modification time, by stat itself.
    long stat_mtime(const std::string& name) const
    {
        struct stat st;
        return ::stat(path(name).c_str(), &st) == 0 ? static_cast<long>(st.st_mtime) : -1;
    }
};

TEST_F(FileTest, RefreshReadsWhatTheDiskSays)
{
    write("f", "twelve bytes");
    TVFile file(path("f"));
    EXPECT_FALSE(file.get_modified().is_ok()); // nothing read yet
    ASSERT_EQ(file.refresh(), TVErrC_ok);
    EXPECT_EQ(file.get_size(), 12);
    EXPECT_EQ(file.get_filename(), "f");
    EXPECT_EQ(file.get_modified() - tv_file_modified(path("f")), TVDuration(0, 0, 0));
    // Not every file system keeps a creation time; where one does, it is
    // no later than the first write.
    if (file.get_created().is_ok()) {
        EXPECT_LE(file.get_created(), file.get_modified());
    }
}

TEST_F(FileTest, RefreshOfAVanishedFileForgetsWhatItKnew)
{
    write("f", "data");
    TVFile file(path("f"));
    ASSERT_EQ(file.refresh(), TVErrC_ok);
    ASSERT_EQ(::unlink(path("f").c_str()), 0);

    const TVFileOutcome o = outcome([&] { return file.refresh(); });
    EXPECT_EQ(o.severity, TVSevWarning);
    EXPECT_EQ(o.code, TVErrC_FileNotExist);
    EXPECT_EQ(o.text, "The file " + path("f") + " does not exist.");
    EXPECT_EQ(file.get_size(), 0);
    EXPECT_FALSE(file.get_modified().is_ok());
    EXPECT_FALSE(file.get_created().is_ok());
}

TEST_F(FileTest, NewPathForgetsTheOldFilesFacts)
{
    write("f", "abc");
    TVFile file(path("f"));
    ASSERT_EQ(file.refresh(), TVErrC_ok);
    const TVFile copy(file);
    file.set_pathname(path("other"));
    EXPECT_EQ(file.get_size(), 0);
    EXPECT_EQ(copy.get_size(), 3);
    EXPECT_NE(copy, file);
}

TEST_F(FileTest, SetTimesWritesTheModificationTime)
{
    write("f", "x");
    TVFile file(path("f"));
    // 2040 lies beyond the years get_time_t answers for; 2208988800 is
    // 2040-01-01 00:00:00 GMT counted by hand.
    const TVDate later(2040, 0, 0, 0, 0, 0, 123456, TVDate::C_GMT);
    ASSERT_EQ(file.set_times(TVDate(), later), TVErrC_ok);
    EXPECT_EQ(stat_mtime("f"), 2208988800L);
    EXPECT_EQ(file.get_modified() - later, TVDuration(0, 0, 0)); // refreshed, micro kept

    // An invalid date leaves the time alone.
    ASSERT_EQ(file.set_times(TVDate(), TVDate()), TVErrC_ok);
    EXPECT_EQ(stat_mtime("f"), 2208988800L);
}

TEST_F(FileTest, SetTimesOnAMissingFileIsNamed)
{
    TVFile file(path("gone"));
    const TVFileOutcome o = outcome([&] { return file.set_times(TVDate(), TVDateUtils::now()); });
    EXPECT_TRUE(o.thrown);
    EXPECT_EQ(o.code, TVErrC_FileNotExist);
    EXPECT_EQ(o.text, "The file " + path("gone") + " does not exist.");
}

} // namespace
