// tvdb check, dump, log and script end to end: a file written by the engine in a
// temporary folder, read by the built tool; and files it must refuse.

#include "LibDatabase/db/tvdatabase.h"
#include "TestSupport/tvdbrun.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

#include <QTemporaryDir>
#include <QtGlobal>

#include <fstream>
#include <string>

namespace {

class TVDBFileCommandTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        get_tverror()->set_action(TVActContinue, TVSevError);
        ASSERT_TRUE(m_dir.isValid());
        // The tool inherits these, so it finds the side files where we left them.
        const std::string root = m_dir.path().toStdString();
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/data"));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/cache"));
        m_file = root + "/drill.tvmaths";
    }

    // Three objects added, saved, then one deleted and one changed after
    // the save: the last two are only in the partial file.
    void write_database()
    {
        TVDatabase db;
        db.set_app_type("Drill");
        ASSERT_EQ(db.load(m_file, true, "", true, true, true), TVErrC_ok);
        for (const char* operation : {"Add one", "Add two", "Add three"})
            ASSERT_EQ(db.add_object(new TVDBObject, nullptr, "", "", -1, operation), TVErrC_ok);
        ASSERT_EQ(db.save(true, true, false), TVErrC_ok);
        ASSERT_EQ(db.delete_object(2, "Delete two"), TVErrC_ok);
        db.set_comment("after the save");
        ASSERT_EQ(db.complete_operation("Comment"), TVErrC_ok);
    }


    void spill(const std::string& text)
    {
        std::ofstream out(m_file, std::ios::binary | std::ios::trunc);
        out << text;
    }

    TestClock m_clock{1717329600}; // 2 June 2024 12:00 GMT
    QTemporaryDir m_dir;
    std::string m_file;
};

TEST_F(TVDBFileCommandTest, CheckSummarisesMainAndPartialFile)
{
    write_database();
    TVDBRun run = run_tvdb({"check", m_file});
    ASSERT_EQ(0, run.m_exitCode) << run.m_err;
    EXPECT_EQ("file: " + m_file +
                  "\n"
                  "application type: Drill\n"
                  "next id: 4\n"
                  "objects: 3\n"
                  "  TVDBObject: 2 (+1 deleted)\n"
                  "transactions: 5 (0 undone)\n"
                  "last save: 3\n",
              run.m_out);
    EXPECT_EQ("", run.m_err);
}

TEST_F(TVDBFileCommandTest, LogListsEachTransactionWithItsStatus)
{
    write_database();
    TVDBRun run = run_tvdb({"log", m_file});
    ASSERT_EQ(0, run.m_exitCode) << run.m_err;
    EXPECT_EQ("0 active Add one\n1 active Add two\n2 active Add three\n3 active Delete two\n"
              "4 active Comment\nlast save: 3\n",
              run.m_out);
}

TEST_F(TVDBFileCommandTest, DumpPrintsTheSerialFormAsTheFileHoldsIt)
{
    write_database();
    TVDBRun all = run_tvdb({"dump", m_file});
    ASSERT_EQ(0, all.m_exitCode) << all.m_err;
    // The database's record first, with what the partial file changed.
    EXPECT_EQ(0u, all.m_out.find("@O:\n{TVDatabase\n"));
    EXPECT_NE(std::string::npos, all.m_out.find("!Comment!after the save\n"));
    TVDBRun one = run_tvdb({"dump", m_file, "3"});
    ASSERT_EQ(0, one.m_exitCode) << one.m_err;
    EXPECT_EQ(0u, one.m_out.find("@O:\n{TVDBObject\n"));
    EXPECT_NE(std::string::npos, all.m_out.find(one.m_out));
    EXPECT_EQ(1u, std::count(one.m_out.begin(), one.m_out.end(), '@'));
}

TEST_F(TVDBFileCommandTest, ScriptRunsAgainstAnObjectAndReportsWhereItFailed)
{
    write_database();
    const std::string before = tv_file_bytes(m_file);
    TVDBRun answer = run_tvdb({"script", m_file, "3", "var n = 6;\nn * 7"});
    ASSERT_EQ(0, answer.m_exitCode) << answer.m_err;
    EXPECT_EQ("42\n", answer.m_out);

    const std::string path = m_dir.path().toStdString() + "/check.js";
    std::ofstream(path) << "var a = 1;\n\nthrow 'no such table';\n";
    TVDBRun raised = run_tvdb({"script", m_file, "3", "@" + path});
    EXPECT_EQ(1, raised.m_exitCode);
    EXPECT_EQ(path + ":3: no such table\n", raised.m_err);

    TVDBRun missing = run_tvdb({"script", m_file, "2", "1"});
    EXPECT_EQ(1, missing.m_exitCode);
    EXPECT_EQ("tvdb script: " + m_file + " has no object 2\n", missing.m_err);
    EXPECT_EQ(before, tv_file_bytes(m_file));
}

TEST_F(TVDBFileCommandTest, FilesThatDontLoadFailWithTheirName)
{
    struct Row
    {
        const char* m_name;
        const char* m_text; // null: no file at all
        const char* m_errPart;
    };
    const Row rows[] = {
        {"no file", nullptr, "does not exist"},
        {"not a database", "hello\n", "not a database"},
        {"unknown class", "TVDatabase:7685\n!Version!0\n@O:\n{DrillDB\n!UnID!1\n}\n", ""},
        {"newer file version", "TVDatabase:7685\n!Version!1\n", "version 1"},
    };
    for (const Row& row : rows) {
        QFile::remove(QString::fromStdString(m_file));
        if (row.m_text != nullptr)
            spill(row.m_text);
        for (const char* command : {"check", "dump", "log", "query"}) {
            TVDBRun run = run_tvdb({command, m_file});
            EXPECT_EQ(1, run.m_exitCode) << row.m_name << " " << command;
            EXPECT_EQ("", run.m_out) << row.m_name << " " << command;
            EXPECT_NE(std::string::npos, run.m_err.find(m_file)) << row.m_name << ": " << run.m_err;
            EXPECT_NE(std::string::npos, run.m_err.find(row.m_errPart))
                << row.m_name << ": " << run.m_err;
        }
    }
}

TEST_F(TVDBFileCommandTest, WrongCommandLinesAndMissingObjects)
{
    write_database();
    struct Row
    {
        const char* m_name;
        std::vector<std::string> m_args;
        int m_exitCode;
        const char* m_errPart;
    };
    const Row rows[] = {
        {"no file", {"check"}, 2, "Usage: tvdb check"},
        {"too many words", {"log", m_file, "7"}, 2, "Usage: tvdb log"},
        {"query without its text", {"query", m_file}, 2, "Usage: tvdb query"},
        {"unknown option", {"dump", "--deep", m_file}, 2, "'--deep'"},
        {"app without name", {"check", m_file, "--app"}, 2, "'--app' needs a value"},
        {"no such object", {"dump", m_file, "42"}, 1, "has no object 42"},
        {"id that isn't a number", {"dump", m_file, "3x"}, 1, "has no object 3x"},
    };
    for (const Row& row : rows) {
        TVDBRun run = run_tvdb(row.m_args);
        EXPECT_EQ(row.m_exitCode, run.m_exitCode) << row.m_name;
        EXPECT_NE(std::string::npos, run.m_err.find(row.m_errPart))
            << row.m_name << ": " << run.m_err;
    }
}

} // namespace
