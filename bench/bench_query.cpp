// A query over a maths file of 100,000 objects against the load of that
// file, in one run: two conditions and three fields over every run of
// the file (the parent's "runs slower than 5 s of every other exercise,
// with their exercise, start and time"), and the file's load as the program does it
// after a restart. The query must cost less than the load.
//
// The file: 20 exercises and 99,980 runs, each run of 2 to 20 seconds, an
// hour after the one before; made once, then loaded.

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvquery.h"
#include "LibDatabase/db/tvqueryresult.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/date/tvdateparser.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr int C_Objects = 100000;
constexpr int C_Exercises = 20;
constexpr long C_FirstDay = 1700000000;

const char* const C_Query = "Condition: From=Go, Value=Time, GreaterThan=5;\n"
                            "Condition: From=Go, Value=Exercise, Regex=[13579]$;\n"
                            "Field: Title=Exercise, From=Go, Value=Exercise;\n"
                            "Field: Title=Start, From=Go, Value=Start;\n"
                            "Field: Title=Time, From=Go, Value=Time;\n";

std::string g_file;
double g_loadSeconds = -1;
double g_querySeconds = -1;

void check(int result, const char* what)
{
    if (istvwarn(result)) {
        const TVErrDetails* details = get_tverror()->error_details();
        std::fprintf(stderr, "bench_query: %s: %s\n", what,
                     details != nullptr ? details->get_details(TVAspectUser).c_str() : "?");
        std::exit(1);
    }
}

void make_file()
{
    MathsDB db;
    check(db.load(g_file, true, std::string(), true, true, true), "create");
    std::vector<int> exercises;
    for (int i = 0; i < C_Exercises; ++i) {
        Exercise* exercise = nullptr;
        check(db.create_exercise(exercise), "exercise");
        exercise->set_name("Exercise " + std::to_string(i));
        exercises.push_back(exercise->get_id());
    }
    for (int i = 0; i < C_Objects - C_Exercises; ++i) {
        auto* go = new Go;
        go->set_exercise(exercises[static_cast<size_t>(i % C_Exercises)]);
        TVDate start;
        start.set_time_t(C_FirstDay + i * 3600L, 0);
        go->set_time(TVDateSlot(start, start + TVDuration(2 + i % 19), false));
        check(db.add_object(go, &db, MathsDB::C_GoTag, "", -1, ""), "run");
    }
    check(db.save(true, true, false), "save");
    check(db.unload(), "unload");
}

std::unique_ptr<MathsDB> load()
{
    auto db = std::make_unique<MathsDB>();
    check(db->load(g_file, true, std::string(), true, true, true), "load");
    return db;
}

void BM_Load(benchmark::State& state)
{
    for (auto _ : state) {
        std::unique_ptr<MathsDB> db = load();
        state.PauseTiming();
        check(db->unload(), "unload");
        db.reset();
        state.ResumeTiming();
    }
}

void BM_Query(benchmark::State& state)
{
    std::unique_ptr<MathsDB> db = load();
    TVQuery query("bench", C_Query);
    check(query.parse(false, nullptr), "parse");
    TVQueryResult result;
    for (auto _ : state) {
        check(query.execute(*db, result), "execute");
        benchmark::DoNotOptimize(result.get_nrows());
    }
    state.counters["rows"] = result.get_nrows();
    check(db->unload(), "unload");
}

// Google Benchmark's table, then the seconds of the two for the summary.
class Reporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const double seconds = run.GetAdjustedRealTime() /
                                   benchmark::GetTimeUnitMultiplier(run.time_unit);
            if (run.benchmark_name().rfind("load", 0) == 0)
                g_loadSeconds = seconds;
            else if (run.benchmark_name().rfind("query", 0) == 0)
                g_querySeconds = seconds;
        }
    }
};

} // namespace

int main(int argc, char** argv)
{
    QTemporaryDir dir;
    if (!dir.isValid())
        return 1;
    const std::string root = dir.path().toStdString();
    ::setenv("XDG_DATA_HOME", (root + "/data").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (root + "/cache").c_str(), 1);
    TVApplication application(0, nullptr, TVAppIdentity());
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    tv_install_date_parser();
    g_file = root + "/runs" + MathsDB::C_FileExtension;
    make_file();

    benchmark::RegisterBenchmark("load/100000", BM_Load)
        ->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(3);
    benchmark::RegisterBenchmark("query/100000", BM_Query)
        ->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(3);
    benchmark::Initialize(&argc, argv);
    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    std::printf("\nSummary (wall-clock ms)\n");
    if (g_loadSeconds < 0 || g_querySeconds < 0) {
        std::printf("query of 2 conditions, 3 fields < load, 100000 objects: not measured\n");
        return 0;
    }
    std::printf("query of 2 conditions, 3 fields < load, 100000 objects: %.1f < %.1f: %s\n",
                g_querySeconds * 1e3, g_loadSeconds * 1e3,
                g_querySeconds < g_loadSeconds ? "reached" : "not reached");
    return 0;
}
