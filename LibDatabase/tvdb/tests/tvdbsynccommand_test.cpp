// tvdb sync end to end: two devices, each a home of its own with a file of
// its own, take turns on one shared folder through the built tool; and the
// folder or file it must refuse, leaving the file as it was.

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvlockfile.h"
#include "TestSupport/tvdbrun.h"
#include "TestSupport/tvraise.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtGlobal>

#include <fstream>
#include <sstream>
#include <string>

namespace {

class TVDBSyncCommandTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        get_tverror()->set_action(TVActContinue, TVSevError);
        ASSERT_TRUE(m_dir.isValid());
        m_share = m_dir.path().toStdString() + "/share";
        QDir().mkpath(QString::fromStdString(m_share));
    }
    // The device whose home the tool (and this process) works in next.
    std::string be(const std::string& device)
    {
        const std::string home = m_dir.path().toStdString() + "/" + device;
        for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
            qputenv(name, QByteArray::fromStdString(home + "/" + name));
        return home + "/maths.tvmaths";
    }
    // A file of the device holding count plain objects, saved.
    void make(const std::string& device, int count)
    {
        TVDatabase db;
        db.set_app_type("Drill");
        ASSERT_EQ(db.load(be(device), true, "", true, true, true), TVErrC_ok);
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(db.add_object(new TVDBObject, nullptr, "", "", -1, "Add"), TVErrC_ok);
        ASSERT_EQ(db.save(true, true, false), TVErrC_ok);
        ASSERT_EQ(db.unload(), TVErrC_ok);
    }
    TVDBRun sync(const std::string& device)
    {
        return run_tvdb({"sync", be(device), "--share", m_share, "--host", device});
    }
    int live(const std::string& device)
    {
        TVDatabase db;
        db.set_app_type("Drill");
        EXPECT_EQ(db.read(be(device), true, true), TVErrC_ok);
        int count = 0;
        for (int i = 0; i < db.get_nobjects(); ++i)
            count += db.get_object_by_index(i)->is_deleted() ? 0 : 1;
        return count;
    }

    QTemporaryDir m_dir;
    std::string m_share;
};

TEST_F(TVDBSyncCommandTest, TwoDevicesTakingTurnsEndWithTheSameObjects)
{
    make("kitchen", 2);
    make("study", 1);
    TVDBRun run = sync("kitchen");
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_NE(run.m_out.find("Linked"), std::string::npos) << run.m_out;
    EXPECT_NE(run.m_out.find("Writing Linked DB: maths"), std::string::npos) << run.m_out;
    run = sync("study");
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_NE(run.m_out.find("They wrote DB on kitchen"), std::string::npos) << run.m_out;
    EXPECT_NE(run.m_out.find("Collisions: 1"), std::string::npos) << run.m_out;
    run = sync("kitchen");
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(live("kitchen"), 3) << run.m_out;
    EXPECT_EQ(live("study"), 3);
    EXPECT_TRUE(QFile::exists(QString::fromStdString(m_share + "/study@maths")));
}

TEST_F(TVDBSyncCommandTest, MissingFolderOrAFileInUseIsRefusedAndTheFileStays)
{
    make("kitchen", 1);
    const std::string file = be("kitchen");
    const std::string before = tv_file_bytes(file);
    TVDBRun run = run_tvdb({"sync", file, "--share", m_share + "/gone"});
    EXPECT_EQ(run.m_exitCode, 1);
    EXPECT_NE(run.m_err.find(m_share + "/gone"), std::string::npos) << run.m_err;
    {
        TVLockFile program;
        ASSERT_EQ(program.lock(file, false), TVErrC_ok);
        run = sync("kitchen");
        EXPECT_EQ(run.m_exitCode, 1);
        EXPECT_NE(run.m_err.find("is open in another program"), std::string::npos) << run.m_err;
    }
    EXPECT_EQ(tv_file_bytes(file), before);
    run = run_tvdb({"sync", file});
    EXPECT_EQ(run.m_exitCode, 2);
    run = run_tvdb({"sync", "--help"});
    EXPECT_EQ(run.m_exitCode, 0);
    EXPECT_NE(run.m_out.find("--share DIR"), std::string::npos);
}

} // namespace
