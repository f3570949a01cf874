// tvdb on a maths file: two days of practice written by MathsDB in a
// temporary folder, as the maths program would, its latest work only in
// the partial file; then read by the built tool without any option.

#include "AppTarvelloMaths/tools/tests/mathsfiletest.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/question.h"
#include "LibCore/application/tvapplication.h"
#include "TestSupport/tvdbrun.h"
#include "TestSupport/tvraise.h"
#include "TestSupport/tvtestclock.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtGlobal>

#include <map>
#include <memory>
#include <string>

namespace {

class MathsReportTest : public MathsFileTest
{
protected:
    // Day one: three exercises, two of them done; saved. Day two: Division
    // retired, Zoë's sums new, Tables done twice and Adding begun; these
    // live only in the partial file, in the maths program's own folders.
    void write_progress()
    {
        TVAppIdentity identity;
        identity.m_application = "TarvelloMaths";
        identity.m_company = "Tarvello";
        TVApplication application(0, nullptr, identity);
        ASSERT_EQ(tvapplication(), &application);
        m_db = std::make_unique<MathsDB>();
        ASSERT_EQ(m_db->load(m_file, true, std::string(), true, true, true), TVErrC_ok);

        const int tables = add_exercise("Tables", Exercise::C_TypeTimesTables);
        const int adding = add_exercise("Adding", Exercise::C_TypeAddition);
        const int division = add_exercise("Division", Exercise::C_TypeDivision);
        ASSERT_EQ(m_db->start(), TVErrC_ok);
        answer(open_go(tables), 4);
        answer(open_go(division), 3);
        ASSERT_EQ(m_db->update(), TVErrC_ok);
        ASSERT_EQ(m_db->complete_operation("Day one"), TVErrC_ok);
        ASSERT_EQ(m_db->save(true, true, false), TVErrC_ok);

        m_clock.advance(C_Day);
        ASSERT_EQ(m_db->delete_exercise(division), TVErrC_ok);
        add_exercise("Zoë's sums", Exercise::C_TypeSubtraction);
        m_db->get_exercise_id(adding)->set_number(3);
        ASSERT_EQ(m_db->start(), TVErrC_ok);
        answer(open_go(tables), 6.5);
        int again = -1;
        ASSERT_EQ(m_db->add_go(tables, again), TVErrC_ok);
        answer(*m_db->get_go_id(again), 5);
        answer(open_go(adding), 2, 1);
        ASSERT_EQ(m_db->update(), TVErrC_ok);
        ASSERT_EQ(m_db->complete_operation("Day two"), TVErrC_ok);
        m_db.reset();
    }

    // Every file below the temporary folder, by path: its size and hash.
    std::map<std::string, QByteArray> snapshot() const
    {
        std::map<std::string, QByteArray> files;
        QDirIterator it(m_dir.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            files[it.filePath().toStdString()] =
                QByteArray::number(QFileInfo(file).lastModified().toMSecsSinceEpoch()) + " " +
                QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1).toHex();
        }
        return files;
    }

};

TEST_F(MathsReportTest, ReportShowsEachExerciseAndTheSession)
{
    write_progress();
    const auto before = snapshot();
    TVDBRun run = run_tvdb({"report", m_file});
    ASSERT_EQ(0, run.m_exitCode) << run.m_err;
    // The ë of Zoë is two bytes but one column.
    EXPECT_EQ("Exercise    Type          Active  Runs  Best (s)  Latest (s)\n"
              "Tables      Times Tables  yes        3       4.0         5.0\n"
              "Adding      Addition      yes        0         -           -\n"
              "Zoë's sums  Subtraction   yes        0         -           -\n"
              "Division    Division      no         1       3.0         3.0\n"
              "\n"
              "Session started 2024-06-03 12:00: 2 of 4 runs to do\n"
              "Exercise    State\n"
              "Tables      done\n"
              "Adding      started\n"
              "Zoë's sums  to do\n"
              "Tables      done\n",
              run.m_out);
    EXPECT_EQ("", run.m_err);
    EXPECT_EQ(before, snapshot());
}

TEST_F(MathsReportTest, CheckOpensAMathsFileWithoutOptions)
{
    write_progress();
    TVDBRun run = run_tvdb({"check", m_file});
    ASSERT_EQ(0, run.m_exitCode) << run.m_err;
    EXPECT_NE(std::string::npos, run.m_out.find("application type: TVMaths\n")) << run.m_out;
    EXPECT_NE(std::string::npos, run.m_out.find("  Exercise: 4\n")) << run.m_out;
    EXPECT_NE(std::string::npos, run.m_out.find("  Session: 2\n")) << run.m_out;
    EXPECT_EQ("", run.m_err);
}

TEST_F(MathsReportTest, FilesItCantReportOnFailWithTheirName)
{
    struct Row
    {
        const char* m_name;
        bool m_plainDatabase; // else no file at all
        const char* m_errPart;
    };
    const Row rows[] = {
        {"no file", false, "does not exist"},
        {"not a maths file", true, "is not a maths file (it is a Drill data file)"},
    };
    for (const Row& row : rows) {
        QFile::remove(QString::fromStdString(m_file));
        if (row.m_plainDatabase) {
            TVDatabase db;
            db.set_app_type("Drill");
            ASSERT_EQ(db.load(m_file, true, "", true, true, true), TVErrC_ok);
        }
        TVDBRun run = run_tvdb({"report", m_file});
        EXPECT_EQ(1, run.m_exitCode) << row.m_name;
        EXPECT_EQ("", run.m_out) << row.m_name;
        EXPECT_NE(std::string::npos, run.m_err.find(m_file)) << row.m_name << ": " << run.m_err;
        EXPECT_NE(std::string::npos, run.m_err.find(row.m_errPart))
            << row.m_name << ": " << run.m_err;
    }
}

} // namespace
