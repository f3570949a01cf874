// The fuzzer's property, run in `make check` without clang: every file of
// the committed corpus (LibDate/date/fuzz/corpus, where inputs that once
// failed are kept), then pseudo-random inputs from a fixed seed, built from
// the pieces of the language so that most of them get past the first
// token. Each must come back, with a well-formed date.

#include "LibDate/date/fuzz/tvdatefuzzcheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "LibDate/date/tests/tvdateexptest.h"

namespace {

constexpr unsigned C_Seed = 20210401;
constexpr int C_RandomInputs = 2000;

const char* const C_Pieces[] = {
    "NEXT", "LAST", "Now", "Today", "Tomorrow", "Yesterday", "Hour", "Minute", "Second",
    "USecond", "Week", "Month", "Year", "UTC", "GMT", "DST", "NoDST", "Local", "DefaultZone",
    "WorkDay", "WorkDayFor", "Fixed", "FixedFor", "am", "pm", "st", "nd", "th", "Mon", "Fri",
    "Sat", "March", "Feb", "Days", "+", "-", ":", ";", "/", ".", ",", "@", "(", "|", ")", " ",
    " ", " ", "0", "1", "12", "31", "2021", "99999999", "123456789012", "?", "\t", "\xc3\xa4"};

std::string bytes_of(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

} // namespace

class TVDateFuzzTest : public TVDateExpTest
{
protected:
    void expect_holds(const std::string& bytes, const std::string& name)
    {
        TVDateFuzzResult result = tv_date_fuzz_check(
            reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        EXPECT_EQ("", result.fault) << name << ": \"" << result.text << "\"";
    }
};

TEST_F(TVDateFuzzTest, CorpusHolds)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(TV_DATE_CORPUS_DIR))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end()); // directory order is not fixed
    ASSERT_FALSE(files.empty());
    for (const auto& file : files)
        expect_holds(bytes_of(file), file.filename().string());
}

TEST_F(TVDateFuzzTest, RandomInputsHold)
{
    std::cout << "[ seed     ] " << C_Seed << "\n";
    std::mt19937 random(C_Seed);
    auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    for (int i = 0; i < C_RandomInputs; ++i) {
        std::string bytes;
        if (below(2) == 0) {
            bytes += static_cast<char>(C_DateFuzzHeaderMark);
            for (size_t k = 1; k < C_DateFuzzHeaderSize; ++k)
                bytes += static_cast<char>(below(256));
        }
        const size_t pieces = 1 + below(12);
        for (size_t k = 0; k < pieces; ++k)
            bytes += C_Pieces[below(std::size(C_Pieces))];
        expect_holds(bytes, "seed " + std::to_string(C_Seed) + " input " + std::to_string(i));
        if (HasFailure())
            return;
    }
}
