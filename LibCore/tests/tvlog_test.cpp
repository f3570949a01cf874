#include "LibCore/log/tvlog.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibDate/core/tvlocale.h"
#include "TestSupport/tvfiletest.h"
#include "TestSupport/tvtestclock.h"

namespace {

const long C_Start = 1767225600; // 2026-01-01 00:00:00 GMT
const char* const C_Name = "Database";

class LogTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        savedLocale = *tvlocale();
        tvlocale()->set_timezone(TVDate::C_GMT);
        tvlocale()->set_day_format(7); // "%Y-%m-%d"
        tvlocale()->set_24hour_clock(true);
        get_tverror()->set_stream(nullptr, TVSevAll);
        TVLog::release();
        log = tvlog();
        log->set_folder(folder());
    }

    void TearDown() override
    {
        TVLog::release();
        get_tverror()->clear_all();
        *tvlocale() = savedLocale;
    }

    std::string folder() const { return dir.path().toStdString(); }
    std::string path(const std::string& name = C_Name) const { return log->get_log_path(name); }

    // Verbs on the log file behind the log's back.
    void write_old_lines(int count, const std::string& name = C_Name) const
    {
        std::ofstream out(path(name));
        for (int i = 1; i <= count; ++i)
            out << "old " << i << "\n";
    }
    std::vector<std::string> lines(const std::string& name = C_Name) const { return tv_read_lines(path(name)); }
    std::string bytes() const
    {
        std::ifstream in(path(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    void add(const std::string& text, const std::string& name = C_Name)
    {
        ASSERT_EQ(log->log(name, text), TVErrC_ok);
    }

    QTemporaryDir dir;
    TestClock clock{C_Start};
    TVLocale savedLocale;
    TVLog* log = nullptr;
};

} // namespace

TEST_F(LogTest, EntriesAreTimedLinesAndReadJoinsThemWithoutATrailingBreak)
{
    EXPECT_EQ(log->read(C_Name), "");
    add("first");
    clock.advance(65);
    add("second");
    EXPECT_EQ(bytes(), "2026-01-01 00:00:00: first\n2026-01-01 00:01:05: second\n");
    EXPECT_EQ(log->read(C_Name), "2026-01-01 00:00:00: first\n2026-01-01 00:01:05: second");
    EXPECT_EQ(path(), folder() + "/Database.log");
}

TEST_F(LogTest, RotateKeepsTheNewestThousandLinesAndLeavesShorterLogsAlone)
{
    struct Row {
        int lines;
        size_t kept;
        const char* oldest;
    };
    const Row rows[] = {
        {999, 999, "old 1"},
        {1000, 1000, "old 1"},
        {1001, 1000, "old 2"},
        {2500, 1000, "old 1501"},
    };
    for (const Row& row : rows) {
        write_old_lines(row.lines);
        const std::string before = bytes();
        EXPECT_EQ(log->rotate(C_Name), TVErrC_ok);
        const std::vector<std::string> after = lines();
        ASSERT_EQ(after.size(), row.kept) << row.lines;
        EXPECT_EQ(after.front(), row.oldest) << row.lines;
        EXPECT_EQ(after.back(), "old " + std::to_string(row.lines));
        if (row.lines <= TVLog::C_MaxLines) {
            EXPECT_EQ(bytes(), before) << row.lines;
        }
    }
}

TEST_F(LogTest, RotatingAMissingLogCreatesNothing)
{
    EXPECT_EQ(log->rotate(C_Name), TVErrC_ok);
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path())));
}

TEST_F(LogTest, FirstEntryOfARunRotatesAndThenOnlyAfterHalfAnHour)
{
    write_old_lines(1000);
    add("a"); // rotates: a log of 1000 lines isn't touched
    EXPECT_EQ(lines().size(), 1001u);
    EXPECT_EQ(lines().front(), "old 1");

    clock.advance(TVLog::C_RotateSeconds);
    add("b"); // exactly half an hour: not yet
    EXPECT_EQ(lines().size(), 1002u);
    EXPECT_EQ(lines().front(), "old 1");

    clock.advance(1);
    add("c"); // cut to 1000 first, then the entry
    const std::vector<std::string> now = lines();
    ASSERT_EQ(now.size(), 1001u);
    EXPECT_EQ(now.front(), "old 3");
    EXPECT_EQ(now.back(), "2026-01-01 00:30:01: c");
}

TEST_F(LogTest, LogFirstWrittenLaterStillRotatesAtItsFirstEntry)
{
    write_old_lines(1001, C_Name);
    write_old_lines(1001, "Other");
    add("first");
    clock.advance(100);
    add("second", "Other");
    EXPECT_EQ(lines(C_Name).front(), "old 2");
    EXPECT_EQ(lines("Other").front(), "old 2");
    EXPECT_EQ(lines("Other").size(), 1001u);
}

TEST_F(LogTest, LogThatCannotBeOpenedIsAWarningToTheUser)
{
    // A folder where the file should be can't be opened for appending.
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(path())));
    const int result = log->log(C_Name, "lost");
    EXPECT_EQ(result, TVErrDetails::compute_combination(TVErrC_FileOpen, TVSevUser));
    EXPECT_EQ(tvuserinfo_get(), "Could not open the log file " + path());
}

TEST_F(LogTest, MissingFolderIsCreatedAtTheFirstEntry)
{
    const std::string deeper = folder() + "/cache/logs";
    log->set_folder(deeper);
    add("first");
    EXPECT_EQ(log->read(C_Name), "2026-01-01 00:00:00: first");
    EXPECT_TRUE(QFile::exists(QString::fromStdString(deeper + "/Database.log")));
}

TEST_F(LogTest, WithoutAFolderLogsLieInTheApplicationCache)
{
    log->set_folder("");
    EXPECT_EQ(log->get_folder(), tvapplication()->get_cache_dir());
    EXPECT_EQ(log->get_log_path("Sync"), tvapplication()->get_cache_dir() + "/Sync.log");
}

TEST_F(LogTest, EntriesFromManyThreadsArriveWholeAndOnce)
{
    const int C_Threads = 4;
    const int C_Entries = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < C_Threads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < C_Entries; ++i)
                EXPECT_EQ(log->log(C_Name, "t" + std::to_string(t) + "-" + std::to_string(i)), TVErrC_ok);
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    std::set<std::string> seen;
    for (const std::string& line : lines()) {
        ASSERT_EQ(line.compare(0, 21, "2026-01-01 00:00:00: "), 0) << line;
        seen.insert(line.substr(21));
    }
    EXPECT_EQ(lines().size(), static_cast<size_t>(C_Threads * C_Entries));
    EXPECT_EQ(seen.size(), static_cast<size_t>(C_Threads * C_Entries));
}
