// The lock file that keeps a second process off a database, and the cache
// names that place it.

#include "LibDatabase/db/tvlockfile.h"

#include "LibDatabase/db/tvcachename.h"
#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <chrono>
#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class LockFileTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        ASSERT_TRUE(m_cache.isValid());
        // No application object here: the cache is Qt's, under this variable.
        qputenv("XDG_CACHE_HOME", m_cache.path().toUtf8());
    }

    // A lock file as a process that died holding it leaves it: the lock's
    // own bytes, with no one holding the file, dated days back.
    void leave_lock_behind(const std::string& file)
    {
        TVLockFile holder;
        ASSERT_EQ(holder.lock(file, false), TVErrC_ok);
        const QString path = QString::fromStdString(holder.get_lock_filename());
        QFile in(path);
        ASSERT_TRUE(in.open(QIODevice::ReadOnly));
        const QByteArray bytes = in.readAll();
        in.close();
        holder.unlock();
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(bytes);
        // Flushed first, or the write would date the file again.
        ASSERT_TRUE(out.flush());
        ASSERT_TRUE(out.setFileTime(QDateTime::currentDateTimeUtc().addDays(-3),
                                    QFileDevice::FileModificationTime));
        out.close();
    }

    int refused_code(TVLockFile& lock, const std::string& file, bool steal)
    {
        const int result = lock.lock(file, steal);
        const int code = get_tverror()->is_error() ? get_tverror()->get_code() : -1;
        get_tverror()->clear_all();
        return istvwarn(result) ? code : -1;
    }

    QTemporaryDir m_cache;
    const std::string m_file = "/data/maths.tvmaths";
};

TEST_F(LockFileTest, SecondLockIsRefusedAtOnceEvenWhenStealing)
{
    TVLockFile first;
    ASSERT_EQ(first.lock(m_file, false), TVErrC_ok);
    EXPECT_TRUE(first.is_locked());

    TVLockFile second;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(refused_code(second, m_file, false), TVErrC_FileOpen);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    // A live holder can't be robbed.
    EXPECT_EQ(refused_code(second, m_file, true), TVErrC_FileOpen);

    first.unlock();
    EXPECT_EQ(second.lock(m_file, false), TVErrC_ok);
}

TEST_F(LockFileTest, LeftOverLockIsNeverStaleByAgeAndIsTakenOnlyByStealing)
{
    leave_lock_behind(m_file);
    TVLockFile lock;
    EXPECT_EQ(refused_code(lock, m_file, false), TVErrC_FileOpen);
    EXPECT_FALSE(lock.is_locked());
    EXPECT_EQ(lock.lock(m_file, true), TVErrC_ok);
    EXPECT_TRUE(lock.is_locked());
}

// A process of this machine that really ended, as in a crash, leaves its
// lock behind: taken only by stealing.
TEST_F(LockFileTest, LockOfAProcessThatEndedIsTakenOnlyByStealing)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        TVLockFile lock;
        _exit(istvwarn(lock.lock(m_file, false)) ? 1 : 0); // no unlock: gone with the lock held
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    ASSERT_NE(::kill(child, 0), 0); // no such process any more

    TVLockFile lock;
    EXPECT_EQ(refused_code(lock, m_file, false), TVErrC_FileOpen);
    EXPECT_FALSE(lock.is_locked());
    EXPECT_EQ(lock.lock(m_file, true), TVErrC_ok);
    EXPECT_TRUE(lock.is_locked());
}

TEST_F(LockFileTest, LockingAnotherFileReleasesTheFirst)
{
    TVLockFile lock;
    ASSERT_EQ(lock.lock(m_file, false), TVErrC_ok);
    ASSERT_EQ(lock.lock("/data/other.tvmaths", false), TVErrC_ok);
    TVLockFile other;
    EXPECT_EQ(other.lock(m_file, false), TVErrC_ok);
}

TEST_F(LockFileTest, CopyHoldsNoLockAndReleasesNone)
{
    TVLockFile lock;
    ASSERT_EQ(lock.lock(m_file, false), TVErrC_ok);
    {
        TVLockFile copy(lock);
        EXPECT_FALSE(copy.is_locked());
    }
    TVLockFile other;
    EXPECT_EQ(refused_code(other, m_file, false), TVErrC_FileOpen);
}

TEST_F(LockFileTest, CacheNameKeepsTheRunOfSeparatorsAndDropsTheDirectory)
{
    const std::string cache = m_cache.path().toStdString();
    const struct {
        std::string path;
        bool force;
        std::string expected;
    } cases[] = {
        {"/data/maths.tvmaths", true, cache + "/" + "//" + "/" + "maths"},
        {"/a/data/maths.tvmaths", true, cache + "/" + "///" + "/" + "maths"},
        {"c:\\work/maths.tvmaths", true, cache + "/" + "\\/" + "/" + "maths"},
        {"maths.tvmaths", true, cache + "/" + "maths"},
        // Side files stand beside the database here unless forced.
        {"/data/maths.tvmaths", false, "/data/maths.tvmaths"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(get_cache_name(c.path, c.force), c.expected);
    }
}

} // namespace
