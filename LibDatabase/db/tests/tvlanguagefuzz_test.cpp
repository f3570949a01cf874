// The spec and query fuzzers' properties, run in `make check` without
// clang: every file of each committed corpus (LibDatabase/db/fuzz/corpus
// and corpus-query, where inputs that once failed are kept), then
// pseudo-random texts from a fixed seed, built from each language's own
// pieces so that many of them parse (and, for queries, run).

#include "LibDatabase/db/fuzz/tvqueryfuzzcheck.h"
#include "LibDatabase/db/fuzz/tvspecfuzzcheck.h"

#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned C_Seed = 20261125;

struct Language
{
    const char* name;
    std::string (*check)(const uint8_t* data, size_t size);
    const char* corpus;
    std::vector<const char*> pieces;
    int inputs;
    int longest; // pieces per text
};

const Language C_Languages[] = {
    {"spec", tv_spec_fuzz_check, TV_SPEC_CORPUS_DIR,
     {"$<", ">", "$[", "]", "${", "}", " = ", "(", ")", ";", ",", ":", "%U", "^", "$=(", ">\"",
      "\"<", "\"", "`", "#", "[]", "[+]", "[^]", "[-]", "prompt", "init", "eval", "auto",
      "inherits ", "baseOnly", "defunct", "private ", "constrain ", "choice ", "@Script ",
      "@Shortcut ", "A", "B", "Name", "\n", " ", "\\", "\t", "007", "x y"},
     2000, 40},
    {"query", tv_query_fuzz_check, TV_QUERY_CORPUS_DIR,
     {"Prompt", "Condition", "Field", ": ", "Title=", "From=", "Value=", "Go", "DB", "Go+DB",
      "RangeType=Date", "RangeType=Number", "RangeStart=1", "RangeEnd=5", "RangeDiv=1 day",
      "RangeDiv=2", "LessThan=3", "GreaterThan=1", "Equal=2", "NotEqual=0", "Regex=a(",
      "MinDate=today", "MaxDate=2024-06-01", "ID=-1", "Spec=Item", "Text=x y", "Exact=1",
      "Show=ID", "Sort=Down", "$<P>", ",", ";", "\"", "`", "#", "\n", " ", "=", "T", "*"},
     1500, 30},
};

std::string check(const Language& language, const std::string& text)
{
    return language.check(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

class LanguageFuzzTest : public TVQuietErrorTest
{
};

TEST_F(LanguageFuzzTest, CorporaHoldTheProperty)
{
    for (const Language& language : C_Languages) {
        int files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(language.corpus)) {
            std::ifstream in(entry.path(), std::ios::binary);
            const std::string text((std::istreambuf_iterator<char>(in)),
                                   std::istreambuf_iterator<char>());
            EXPECT_EQ(check(language, text), "") << entry.path();
            ++files;
        }
        EXPECT_GT(files, 0) << language.name;
    }
}

TEST_F(LanguageFuzzTest, RandomTextsOfThePiecesHoldTheProperty)
{
    for (const Language& language : C_Languages) {
        std::mt19937 random(C_Seed);
        std::uniform_int_distribution<size_t> piece(0, language.pieces.size() - 1);
        std::uniform_int_distribution<int> length(1, language.longest);
        for (int i = 0; i < language.inputs; ++i) {
            std::string text;
            for (int n = length(random); n > 0; --n)
                text += language.pieces[piece(random)];
            ASSERT_EQ(check(language, text), "")
                << language.name << ", seed " << C_Seed << ", input " << i << ": " << text;
        }
    }
}

} // namespace
