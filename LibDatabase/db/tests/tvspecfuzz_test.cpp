// The spec fuzzer's property, run in `make check` without clang: every
// file of the committed corpus (LibDatabase/db/fuzz/corpus, where inputs
// that once failed are kept), then pseudo-random texts from a fixed seed,
// built from the language's own pieces so that many of them parse.

#include "LibDatabase/db/fuzz/tvspecfuzzcheck.h"

#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace {

constexpr unsigned C_Seed = 20261125;
constexpr int C_RandomInputs = 2000;

const char* const C_Pieces[] = {
    "$<", ">", "$[", "]", "${", "}", " = ", "(", ")", ";", ",", ":", "%U", "^", "$=(", ">\"",
    "\"<", "\"", "`", "#", "[]", "[+]", "[^]", "[-]", "prompt", "init", "eval", "auto",
    "inherits ", "baseOnly", "defunct", "private ", "constrain ", "choice ", "@Script ",
    "@Shortcut ", "A", "B", "Name", "\n", " ", "\\", "\t", "007", "x y",
};

std::string check(const std::string& text)
{
    return tv_spec_fuzz_check(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

class SpecFuzzTest : public TVQuietErrorTest
{
};

TEST_F(SpecFuzzTest, CorpusHoldsTheProperty)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TV_SPEC_CORPUS_DIR)) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_EQ(check(text), "") << entry.path();
        ++files;
    }
    EXPECT_GT(files, 0);
}

TEST_F(SpecFuzzTest, RandomTextsOfThePiecesHoldTheProperty)
{
    std::mt19937 random(C_Seed);
    std::uniform_int_distribution<size_t> piece(0, std::size(C_Pieces) - 1);
    std::uniform_int_distribution<int> length(1, 40);
    for (int i = 0; i < C_RandomInputs; ++i) {
        std::string text;
        for (int n = length(random); n > 0; --n)
            text += C_Pieces[piece(random)];
        ASSERT_EQ(check(text), "") << "seed " << C_Seed << ", input " << i << ": " << text;
    }
}

} // namespace
