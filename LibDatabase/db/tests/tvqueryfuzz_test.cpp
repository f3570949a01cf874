// The query fuzzer's property, run in `make check` without clang: every
// file of the committed corpus (LibDatabase/db/fuzz/corpus-query), then
// pseudo-random texts from a fixed seed, built from the language's own
// pieces so that many of them parse and run.

#include "LibDatabase/db/fuzz/tvqueryfuzzcheck.h"

#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace {

constexpr unsigned C_Seed = 20261125;
constexpr int C_RandomInputs = 1500;

const char* const C_Pieces[] = {
    "Prompt", "Condition", "Field", ": ", "Title=", "From=", "Value=", "Go", "DB", "Go+DB",
    "RangeType=Date", "RangeType=Number", "RangeStart=1", "RangeEnd=5", "RangeDiv=1 day",
    "RangeDiv=2", "LessThan=3", "GreaterThan=1", "Equal=2", "NotEqual=0", "Regex=a(",
    "MinDate=today", "MaxDate=2024-06-01", "ID=-1", "Spec=Item", "Text=x y", "Exact=1",
    "Show=ID", "Sort=Down", "$<P>", ",", ";", "\"", "`", "#", "\n", " ", "=", "T", "*",
};

std::string check(const std::string& text)
{
    return tv_query_fuzz_check(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

class QueryFuzzTest : public TVQuietErrorTest
{
};

TEST_F(QueryFuzzTest, CorpusHoldsTheProperty)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TV_QUERY_CORPUS_DIR)) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        EXPECT_EQ(check(text), "") << entry.path();
        ++files;
    }
    EXPECT_GT(files, 0);
}

TEST_F(QueryFuzzTest, RandomTextsOfThePiecesHoldTheProperty)
{
    std::mt19937 random(C_Seed);
    std::uniform_int_distribution<size_t> piece(0, std::size(C_Pieces) - 1);
    std::uniform_int_distribution<int> length(1, 30);
    for (int i = 0; i < C_RandomInputs; ++i) {
        std::string text;
        for (int n = length(random); n > 0; --n)
            text += C_Pieces[piece(random)];
        ASSERT_EQ(check(text), "") << "seed " << C_Seed << ", input " << i << ": " << text;
    }
}

} // namespace
