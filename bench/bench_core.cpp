// Throughput of the text functions the serial form leans on: splitting
// lines into fields and escaping / unescaping values.

#include "LibCore/textstr/tvtextstr.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t C_TextBytes = 4 * 1024 * 1024;

// Serial-form-like text: short fields, a comma now and then, and enough line
// feeds and backslashes that the escapes have work to do.
const std::string& sample_text()
{
    static const std::string text = [] {
        std::mt19937 rng(42);
        const char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789 ,.;:/\\\n";
        std::string out;
        out.reserve(C_TextBytes);
        while (out.size() < C_TextBytes) {
            unsigned pick = rng() % 100;
            if (pick < 3)
                out += '\n';
            else if (pick < 5)
                out += '\\';
            else if (pick < 12)
                out += ',';
            else
                out += alphabet[rng() % (sizeof alphabet - 4)];
        }
        return out;
    }();
    return text;
}

void BM_Tokenise(benchmark::State& state)
{
    const std::string& text = sample_text();
    std::vector<std::string> tokens;
    for (auto _ : state) {
        tv_tokenise(text, ',', tokens);
        benchmark::DoNotOptimize(tokens.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(text.size()));
}

void BM_StreamOut(benchmark::State& state)
{
    const std::string& text = sample_text();
    for (auto _ : state) {
        std::string out = tv_stream_out(text);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(text.size()));
}

void BM_StreamIn(benchmark::State& state)
{
    const std::string escaped = tv_stream_out(sample_text());
    for (auto _ : state) {
        std::string out = tv_stream_in(escaped);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(escaped.size()));
}

} // namespace

BENCHMARK(BM_Tokenise)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamOut)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamIn)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
