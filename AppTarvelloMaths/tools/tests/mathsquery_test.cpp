// Queries on a real maths file: three weeks of practice, two sessions a
// week on a clock the test holds, written by MathsDB; then asked through
// the built tvdb as a parent would ask, and in the program's own process
// for what a window does with a result (summaries, rows back to runs).

#include "AppTarvelloMaths/tools/tests/mathsfiletest.h"

#include "LibCore/application/tvapplication.h"
#include "LibDatabase/db/tvquery.h"
#include "LibDatabase/db/tvqueryresult.h"
#include "LibDate/date/tvdateparser.h"
#include "TestSupport/tvdbrun.h"

#include <QFile>

#include <fstream>
#include <sstream>

namespace {

class MathsQueryTest : public MathsFileTest
{
protected:
    // Monday 3 June 2024 09:00 GMT.
    static constexpr long C_Monday = 1717405200;

    void SetUp() override
    {
        MathsFileTest::SetUp();
        TVAppIdentity identity;
        identity.m_application = "TarvelloMaths";
        identity.m_company = "Tarvello";
        m_application = std::make_unique<TVApplication>(0, nullptr, identity);
        tv_install_date_parser();
        m_clock.set(C_Monday, 0);
        write_weeks();
    }

    // Mondays and Thursdays of three weeks: "7 times" in 10, 13; 12, 15;
    // 14, 17 seconds, "Adding" in 5 + the week. Each run starts as many
    // seconds after 09:00 as it lasts, at its first answer.
    void write_weeks()
    {
        m_db = std::make_unique<MathsDB>();
        ASSERT_EQ(m_db->load(m_file, true, std::string(), true, true, true), TVErrC_ok);
        m_seven = add_exercise("7 times", Exercise::C_TypeTimesTables);
        m_adding = add_exercise("Adding", Exercise::C_TypeAddition);
        for (int week = 0; week < 3; ++week) {
            for (const int day : {0, 3}) {
                m_clock.set(C_Monday + (week * 7 + day) * C_Day, 0);
                ASSERT_EQ(m_db->start(), TVErrC_ok);
                answer(open_go(m_seven), 10 + 2 * week + day);
                answer(open_go(m_adding), 5 + week);
                ASSERT_EQ(m_db->update(), TVErrC_ok);
                ASSERT_EQ(m_db->complete_operation("Practice"), TVErrC_ok);
            }
        }
        ASSERT_EQ(m_db->save(true, true, false), TVErrC_ok);
    }

    std::string write(const std::string& name, const std::string& text)
    {
        const std::string path = m_dir.path().toStdString() + "/" + name;
        std::ofstream(path) << text;
        return path;
    }

    std::string slurp_file() const
    {
        QFile file(QString::fromStdString(m_file));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }

    void TearDown() override
    {
        m_db.reset();
        m_application.reset();
        MathsFileTest::TearDown();
    }

    // The side files' folders are the program's, as when it wrote them.
    std::unique_ptr<TVApplication> m_application;
    int m_seven = -1;
    int m_adding = -1;
};

TEST_F(MathsQueryTest, RunsOfOneTableSinceADateWithTheirTimes)
{
    const std::string query = "Prompt: Title=Since, Value=2024-06-01 0:00;\n"
                              "Condition: From=Go, Value=Exercise, Text=7 times;\n"
                              "Condition: From=Go, Value=Start, MinDate=$<Since>;\n"
                              "Condition: From=Go, Value=Time, LessThan=16;\n"
                              "Field: Title=Run, From=Go, Value=Start;\n"
                              "Field: Title=Time (s), From=Go, Value=Time;\n";
    const std::string before = slurp_file();
    TVDBRun run = run_tvdb({"query", m_file, query, "--prompt", "Since=2024-06-10 0:00"});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, "Run                  Time (s)\n"
                         "2024-06-10 09:00:12  12.0\n"
                         "2024-06-13 09:00:15  15.0\n"
                         "2024-06-17 09:00:14  14.0\n");
    EXPECT_EQ(run.m_err, "");
    EXPECT_EQ(slurp_file(), before);

    // Without the prompt its default holds; as CSV.
    run = run_tvdb({"query", m_file, query, "--csv"});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, "Run,Time (s)\n"
                         "2024-06-03 09:00:10,10.0\n"
                         "2024-06-06 09:00:13,13.0\n"
                         "2024-06-10 09:00:12,12.0\n"
                         "2024-06-13 09:00:15,15.0\n"
                         "2024-06-17 09:00:14,14.0\n");
}

TEST_F(MathsQueryTest, ChainedKindsAndColumnsByWeek)
{
    // Each exercise whose name matches, beside the last session.
    TVDBRun run = run_tvdb({"query", m_file,
                            "Condition: From=Exercise, Value=Name, Regex=^(Add|7);\n"
                            "Condition: From=Session, Value=Start, MinDate=2024-06-20 0:00;\n"
                            "Field: Title=Exercise, From=Exercise, Value=Name;\n"
                            "Field: Title=Type, From=Exercise, Value=Type;\n"
                            "Field: Title=Runs, From=Session, Value=Runs;\n",
                            "--csv"});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, "Exercise,Type,Runs\n7 times,Times Tables,2\nAdding,Addition,2\n");

    // A run's time in the column of its week.
    const std::string file =
        write("weeks.query", "Condition: From=Go, Value=Exercise, Text=7 times;\n"
                             "Field: Title=Week, From=Go, Value=Start, RangeType=Date,\n"
                             "  RangeStart=2024-06-03 0:00, RangeEnd=2024-06-24 0:00,\n"
                             "  RangeDiv=1 week, Show=Time;\n");
    run = run_tvdb({"query", m_file, "@" + file});
    ASSERT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, "2024-06-03  2024-06-10  2024-06-17\n"
                         "10.0\n"
                         "13.0\n"
                         "            12.0\n"
                         "            15.0\n"
                         "                        14.0\n"
                         "                        17.0\n");
}

TEST_F(MathsQueryTest, AWrongQueryOrPromptFailsWithItsLine)
{
    const std::string file = write("bad.query", "Condition: From=Go, ID=-1;\nField: Title=T;\n");
    TVDBRun run = run_tvdb({"query", m_file, "@" + file});
    EXPECT_EQ(run.m_exitCode, 1);
    EXPECT_EQ(run.m_out, "");
    EXPECT_EQ(run.m_err, "tvdb query: " + file + ":2: error  Missing From for Field\n");

    run = run_tvdb({"query", m_file, "Select: all;"});
    EXPECT_EQ(run.m_exitCode, 1);
    EXPECT_EQ(run.m_err, "tvdb query: query:1: error  Unknown symbol \"Select\"\n");

    // Maths objects follow no spec: a spec condition can't be answered.
    run = run_tvdb({"query", m_file, "Condition: From=Go, Spec=Exercise;"});
    EXPECT_EQ(run.m_exitCode, 1);
    EXPECT_NE(run.m_err.find("Could not find object spec for object"), std::string::npos)
        << run.m_err;

    run = run_tvdb({"query", m_file, "Field: Title=T, From=Go, Value=Time;", "--prompt", "X=1"});
    EXPECT_EQ(run.m_exitCode, 2);
    EXPECT_NE(run.m_err.find("no prompt \"X\""), std::string::npos) << run.m_err;
}

TEST_F(MathsQueryTest, SummariesAndRowsBackToTheirRuns)
{
    TVQuery query("times", "Condition: From=Go, Value=Time, GreaterThan=0;\n"
                           "Field: Title=Exercise, From=Go, Value=Exercise;\n"
                           "Field: Title=Time, From=Go, Value=Time, RangeType=Number,\n"
                           "  RangeStart=0, RangeEnd=20, RangeDiv=10;\n");
    ASSERT_EQ(query.parse(false, nullptr), TVErrC_ok);
    TVQueryResult result;
    ASSERT_EQ(query.execute(*m_db, result), TVErrC_ok);
    ASSERT_EQ(result.get_nrows(), 12);
    EXPECT_EQ(result.get_header(1), "0-10");
    EXPECT_EQ(result.get_header(2), "10-20");
    result.add_summary({"7 times"}, "7 times", TVQueryResult::E_SummaryCount);
    result.add_summary({"Adding"}, "Adding", TVQueryResult::E_SummaryTotal);
    std::ostringstream out;
    result.write_csv(out);
    const std::string text = out.str();
    EXPECT_NE(text.find("\n7 times,0,6\nAdding,36.00,\n"), std::string::npos) << text;

    // Each row's header is its run, and the run is of that row's exercise.
    for (int row = 0; row < 12; ++row) {
        const Go* go = m_db->get_go_id(std::stoi(result.get_row_header(row)));
        ASSERT_NE(go, nullptr) << row;
        EXPECT_EQ(go->get_exercise(), result.get_cell(row, 0) == "Adding" ? m_adding : m_seven);
        EXPECT_EQ(result.get_id_no(row)->first_id(), go->get_id());
    }

    // One run by its id.
    const int id = result.get_id_no(5)->first_id();
    TVQuery one("one", "Condition: From=Go, ID=" + std::to_string(id) +
                           ";\nField: Title=Time, From=Go, Value=Time;");
    ASSERT_EQ(one.parse(false, nullptr), TVErrC_ok);
    ASSERT_EQ(one.execute(*m_db, result), TVErrC_ok);
    ASSERT_EQ(result.get_nrows(), 1);
    EXPECT_EQ(result.get_row_header(0), std::to_string(id));
}

} // namespace
