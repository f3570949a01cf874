// Throughput of the stream form of TVDate, which every stored object with a
// date writes and reads: a few megabytes of dates each way.

#include "LibDate/core/tvdate.h"

#include <benchmark/benchmark.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// About 4 MB of text: a date with a microsecond is 27 characters, one
// without 21, and each is followed by a blank.
constexpr size_t C_DateCount = 160000;

// Dates over two centuries in real zones, half of them with a microsecond
// (as stamped by unow) and half without (as typed by a user).
const std::vector<TVDate>& sample_dates()
{
    static const std::vector<TVDate> dates = [] {
        std::mt19937 rng(1970);
        std::vector<TVDate> out;
        out.reserve(C_DateCount);
        for (size_t i = 0; i < C_DateCount; ++i) {
            int year = 1900 + static_cast<int>(rng() % 200);
            int micro = (i % 2 == 0) ? static_cast<int>(rng() % 1000000) : 0;
            int zone = (static_cast<int>(rng() % 47) - 23) * 3600 + static_cast<int>(rng() % 2);
            out.emplace_back(year, static_cast<int>(rng() % 365), static_cast<int>(rng() % 86400),
                             micro, zone);
        }
        return out;
    }();
    return dates;
}

const std::string& sample_text()
{
    static const std::string text = [] {
        std::ostringstream out;
        for (const TVDate& date : sample_dates())
            out << date << ' ';
        return out.str();
    }();
    return text;
}

void BM_DateWrite(benchmark::State& state)
{
    const std::vector<TVDate>& dates = sample_dates();
    size_t bytes = 0;
    for (auto _ : state) {
        std::ostringstream out;
        for (const TVDate& date : dates)
            out << date << ' ';
        std::string text = out.str();
        bytes = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(bytes));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(dates.size()));
}
BENCHMARK(BM_DateWrite)->Unit(benchmark::kMillisecond);

void BM_DateRead(benchmark::State& state)
{
    const std::string& text = sample_text();
    size_t count = 0;
    for (auto _ : state) {
        std::istringstream in(text);
        TVDate date;
        count = 0;
        while (in >> date) {
            benchmark::DoNotOptimize(date);
            ++count;
        }
    }
    if (count != sample_dates().size())
        state.SkipWithError("read back a different number of dates");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(text.size()));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(count));
}
BENCHMARK(BM_DateRead)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
