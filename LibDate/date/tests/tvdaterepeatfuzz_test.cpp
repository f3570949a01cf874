// The repeat fuzzer's property, run in `make check` without clang: every
// file of the committed corpus (LibDate/date/fuzz/corpus-repeat, where
// inputs that once failed are kept), then pseudo-random texts from a fixed
// seed, built from the pieces of the stored text so that most of them read.

#include "LibDate/date/fuzz/tvdaterepeatfuzzcheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "LibDate/date/tests/tvdaterepeattest.h"

namespace {

constexpr unsigned C_Seed = 20210316;
constexpr int C_RandomInputs = 500;

const char* const C_Pieces[] = {"T=",
                                "T=",
                                "N=",
                                "D=",
                                "A=",
                                "S=",
                                "O=",
                                "B=",
                                "W=",
                                "E=",
                                "Y=",
                                "Z=",
                                "X=",
                                "C=",
                                "@",
                                "@",
                                "@",
                                ",",
                                ",",
                                "-",
                                "\"",
                                "0",
                                "1",
                                "2",
                                "3",
                                "4",
                                "5",
                                "6",
                                "7",
                                "8",
                                "52",
                                "95",
                                "-1",
                                "2174",
                                "5101",
                                "32400",
                                "61200",
                                "-161210",
                                "3610",
                                "11",
                                "1000000001",
                                "9999",
                                "000009000302021000000",
                                "17 Mar 2021",
                                "09:00:00",
                                "\"NEXT Monday 9:00\"",
                                "\"@TIME +2 Hour\"",
                                "\"3/3/2021\"",
                                "REPEAT_WEEKDAY(mon wed)",
                                "REPEAT_DAYS(",
                                ")",
                                " ",
                                "?"};

std::string bytes_of(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

} // namespace

class TVDateRepeatFuzzTest : public TVDateRepeatTest
{
protected:
    void expect_holds(const std::string& bytes, const std::string& name)
    {
        const TVDateRepeatFuzzResult result =
            tv_date_repeat_fuzz_check(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        EXPECT_EQ("", result.fault) << name << ": \"" << result.text << "\"";
    }
};

TEST_F(TVDateRepeatFuzzTest, CorpusHolds)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(TV_DATE_REPEAT_CORPUS_DIR))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end()); // directory order is not fixed
    ASSERT_FALSE(files.empty());
    for (const auto& file : files)
        expect_holds(bytes_of(file), file.filename().string());
}

TEST_F(TVDateRepeatFuzzTest, RandomTextsHold)
{
    std::cout << "[ seed     ] " << C_Seed << "\n";
    std::mt19937 random(C_Seed);
    auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    for (int i = 0; i < C_RandomInputs && !HasFailure(); ++i) {
        std::string bytes;
        if (below(3) == 0) {
            bytes += static_cast<char>(C_RepeatFuzzHeaderMark);
            bytes += static_cast<char>(below(32));
        }
        bytes += "T=" + std::to_string(below(9));
        for (size_t k = 1 + below(10); k > 0; --k)
            bytes += C_Pieces[below(std::size(C_Pieces))];
        expect_holds(bytes, "seed " + std::to_string(C_Seed) + " input " + std::to_string(i));
    }
}
