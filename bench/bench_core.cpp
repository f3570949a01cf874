// Throughput of the text functions the serial form leans on: splitting
// lines into fields and escaping / unescaping values.

#include "LibCore/textstr/tvtextstr.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t C_TextBytes = 4 * 1024 * 1024;

// Serial-form-like text: short fields and a comma now and then. The dense
// sample has a line feed or backslash in one byte of twenty (the escapes'
// worst realistic case); the prose sample one line feed per line of about
// eighty bytes and a rare backslash, like the notes of a real file.
std::string make_text(bool dense)
{
    std::mt19937 rng(dense ? 42 : 43);
    const char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789 .;:";
    const unsigned newlines = dense ? 30 : 12;    // per thousand
    const unsigned backslashes = dense ? 20 : 1;  // per thousand
    std::string out;
    out.reserve(C_TextBytes);
    while (out.size() < C_TextBytes) {
        unsigned pick = rng() % 1000;
        if (pick < newlines)
            out += '\n';
        else if (pick < newlines + backslashes)
            out += '\\';
        else if (pick < newlines + backslashes + 70)
            out += ',';
        else
            out += alphabet[rng() % (sizeof alphabet - 1)];
    }
    return out;
}

const std::string& sample_text(int64_t dense)
{
    static const std::string prose = make_text(false);
    static const std::string heavy = make_text(true);
    return dense != 0 ? heavy : prose;
}

void BM_Tokenise(benchmark::State& state)
{
    const std::string& text = sample_text(state.range(0));
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
    const std::string& text = sample_text(state.range(0));
    for (auto _ : state) {
        std::string out = tv_stream_out(text);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(text.size()));
}

void BM_StreamIn(benchmark::State& state)
{
    const std::string escaped = tv_stream_out(sample_text(state.range(0)));
    for (auto _ : state) {
        std::string out = tv_stream_in(escaped);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(escaped.size()));
}

} // namespace

// Argument 0: prose-like text; 1: dense with escapes.
BENCHMARK(BM_Tokenise)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamOut)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamIn)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
