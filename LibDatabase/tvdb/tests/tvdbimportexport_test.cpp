// tvdb export and tvdb import end to end, through the built tool: what
// lands on the disk, what the tool prints, and the sources it must refuse
// with DBFILE left byte for byte as it was.

#include "LibDatabase/db/tvdatabase.h"
#include "TestSupport/tvdbrun.h"
#include "TestSupport/tvraise.h"

#include <QTemporaryDir>
#include <QtGlobal>

#include <fstream>
#include <sstream>
#include <string>

namespace {

class TVDBImportExportTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        get_tverror()->set_action(TVActContinue, TVSevError);
        ASSERT_TRUE(m_dir.isValid());
        m_root = m_dir.path().toStdString();
        for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
            qputenv(name, QByteArray::fromStdString(m_root + "/" + name));
    }
    // A file of that type holding count plain objects, the last one only in
    // the partial file.
    std::string make(const std::string& name, int count, const std::string& type = "Drill")
    {
        const std::string file = m_root + "/" + name;
        TVDatabase db;
        db.set_app_type(type);
        EXPECT_EQ(db.load(file, true, "", true, true, true), TVErrC_ok);
        for (int i = 0; i < count; ++i) {
            if (i + 1 == count) {
                EXPECT_EQ(db.save(true, true, false), TVErrC_ok);
            }
            EXPECT_EQ(db.add_object(new TVDBObject, nullptr, "", "", -1, "Add"), TVErrC_ok);
        }
        db.stop_recalc_thread();
        return file;
    }
    // Live objects of file read as type, or -1 when it doesn't load.
    static int live(const std::string& file, const std::string& type = "Drill")
    {
        TVDatabase db;
        db.set_app_type(type);
        if (istvwarn(db.read(file, true, true))) {
            get_tverror()->clear_all();
            return -1;
        }
        int count = 0;
        for (int i = 0; i < db.get_nobjects(); ++i)
            count += db.get_object_by_index(i)->is_deleted() ? 0 : 1;
        return count;
    }

    QTemporaryDir m_dir;
    std::string m_root;
};

TEST_F(TVDBImportExportTest, ExportWritesACopyThatLoadsAndMayClaimAnotherType)
{
    const std::string file = make("drill.tvmaths", 3);
    const std::string before = tv_file_bytes(file);
    const std::string copy = m_root + "/out/copy.tvmaths";
    TVDBRun run = run_tvdb({"export", file, copy});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, "Exported 3 objects of " + file + " to " + copy + "\n");
    EXPECT_EQ(live(copy), 3);

    run = run_tvdb({"export", file, copy, "--app-type", "Diary"});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(live(copy, "Diary"), 3);
    EXPECT_EQ(live(copy), -1) << "the copy claims the other type";
    EXPECT_EQ(live(file), 3) << "the file keeps its own";
    EXPECT_EQ(tv_file_bytes(file), before);

    run = run_tvdb({"export", file});
    EXPECT_EQ(run.m_exitCode, 2);
}

TEST_F(TVDBImportExportTest, ImportMergesTheSourceAndSaves)
{
    const std::string file = make("drill.tvmaths", 2);
    const std::string source = make("other.tvmaths", 3);
    TVDBRun run = run_tvdb({"import", file, source});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, "Imported 3 objects from " + source + " into " + file + "\n");
    EXPECT_EQ(live(file), 5);
    EXPECT_EQ(live(source), 3);

    // Twice: two sets.
    ASSERT_EQ(run_tvdb({"import", file, source}).m_exitCode, 0);
    EXPECT_EQ(live(file), 8);
}

TEST_F(TVDBImportExportTest, ASourceThatIsNotThisProgramsDatabaseLeavesTheFile)
{
    const std::string file = make("drill.tvmaths", 2);
    const std::string garbage = m_root + "/notes.txt";
    std::ofstream(garbage) << "shopping list\n";
    const std::string foreign = make("diary.tvdiary", 1, "Diary");
    const std::string before = tv_file_bytes(file);
    const std::string partial = tv_file_bytes(TVDatabase::partial_name(file));
    const struct {
        std::string source;
        std::string says;
    } cases[] = {
        {garbage, "not a database file"},
        {foreign, foreign + " is not a Drill data file"},
        {m_root + "/missing.tvmaths", "missing.tvmaths"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.source);
        const TVDBRun run = run_tvdb({"import", file, c.source});
        EXPECT_EQ(run.m_exitCode, 1);
        EXPECT_NE(run.m_err.find(c.says), std::string::npos) << run.m_err;
        EXPECT_EQ(tv_file_bytes(file), before);
        EXPECT_EQ(tv_file_bytes(TVDatabase::partial_name(file)), partial);
        EXPECT_EQ(live(file), 2);
    }
}

} // namespace
