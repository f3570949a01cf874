// The expressions of variable texts: an evaluation the cache answers
// against a fresh engine for every call, the way it would go without it.
// The summary says whether the cache is at least ten times cheaper.

#include "LibDatabase/db/tvdbscriptcache.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QScriptEngine>

#include <cstdio>
#include <map>
#include <string>

namespace {

const std::string C_Expression = "Math.round(7 * 12 / 3 + 0.5)";

void BM_FreshEngine(benchmark::State& state)
{
    for (auto _ : state) {
        QScriptEngine engine;
        benchmark::DoNotOptimize(
            engine.evaluate(QString::fromStdString(C_Expression)).toString());
    }
}

void BM_CachedExpression(benchmark::State& state)
{
    TVDBScriptCache cache;
    (void)cache.evaluate(C_Expression, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(cache.evaluate(C_Expression, 0));
}

class Collecting : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            m_seconds[run.benchmark_name()] = run.GetAdjustedRealTime() * 1e-9;
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> m_seconds;
};

} // namespace

int main(int argc, char** argv)
{
    static char noName[] = "";
    static char* qtArgv[] = {noName, nullptr};
    int qtArgc = 1;
    QCoreApplication application(qtArgc, qtArgv);
    benchmark::RegisterBenchmark("script/fresh_engine", BM_FreshEngine);
    benchmark::RegisterBenchmark("script/cached_expression", BM_CachedExpression);
    benchmark::Initialize(&argc, argv);
    Collecting reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double fresh = reporter.m_seconds["script/fresh_engine"];
    const double cached = reporter.m_seconds["script/cached_expression"];
    if (fresh > 0 && cached > 0)
        std::printf("\n%-52s %10.4f %10.4f %7.1f  %s\n",
                    "expression cache >= 10 x cheaper than a fresh engine", cached * 1e3,
                    fresh * 1e3, fresh / cached, fresh / cached >= 10 ? "reached" : "not reached");
    benchmark::Shutdown();
    return 0;
}
