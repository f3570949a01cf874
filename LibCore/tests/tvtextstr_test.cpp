#include "LibCore/textstr/tvtextstr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport/tvraise.h"

namespace {

using Strings = std::vector<std::string>;

class TextStrTest : public TVQuietErrorTest
{
};

// ---- Searching ------------------------------------------------------------

// Every row runs through the C and string forms, and the char forms too
// when the match is one character.
TEST_F(TextStrTest, MoveToAndReadToStopAtTheMatchOrTheEnd)
{
    struct Row {
        const char* source;
        const char* match;
        int start;
        int pos;
        const char* text;  // what tv_read_to copies
    };
    const Row rows[] = {
        {"a,b,c", ",", 2, 3, "b"},
        {"a,b,c", ",", 4, 5, "c"},        // no match: the length
        {"a,b,c", ",", 5, 5, ""},         // start at the end is allowed
        {"key := value", ":=", 0, 4, "key "},
        {"abab", "ab", 1, 2, "b"},
        {"abc", "", 1, 1, ""},            // an empty match is found where it starts
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.source) + " / " + r.match + " @" + std::to_string(r.start));
        char buffer[32];
        std::memset(buffer, 'Z', sizeof buffer);
        std::string target = "stale";
        EXPECT_EQ(tv_move_to(r.source, r.match, r.start), r.pos);
        EXPECT_EQ(tv_move_to(std::string(r.source), std::string(r.match), r.start), r.pos);
        EXPECT_EQ(tv_read_to(r.source, buffer, r.match, r.start), r.pos);
        EXPECT_STREQ(buffer, r.text);
        EXPECT_EQ(tv_read_to(std::string(r.source), target, std::string(r.match), r.start), r.pos);
        EXPECT_EQ(target, r.text);
        if (std::strlen(r.match) == 1) {
            const char ch = r.match[0];
            EXPECT_EQ(tv_move_to(r.source, ch, r.start), r.pos);
            EXPECT_EQ(tv_move_to(std::string(r.source), ch, r.start), r.pos);
            EXPECT_EQ(tv_read_to(r.source, buffer, ch, r.start), r.pos);
            EXPECT_STREQ(buffer, r.text);
            EXPECT_EQ(tv_read_to(std::string(r.source), target, ch, r.start), r.pos);
            EXPECT_EQ(target, r.text);
        }
    }
}

TEST_F(TextStrTest, SkipSpaceStopsAtTheFirstNonBlank)
{
    struct Row {
        const char* text;
        int start;
        int expected;
    };
    const Row rows[] = {{" \t x", 0, 3}, {"x  y", 1, 3}, {"   ", 0, 3}, {"", 0, 0}, {"\nx", 0, 0}, {"ab", 2, 2}};
    for (const Row& r : rows) {
        EXPECT_EQ(tv_skip_space(r.text, r.start), r.expected) << r.text;
        EXPECT_EQ(tv_skip_space(std::string(r.text), r.start), r.expected) << r.text;
    }
}

TEST_F(TextStrTest, BadArgumentsRaiseWithTheirOwnMessages)
{
    struct Row {
        const char* name;
        std::function<void()> call;
        int code;
        const char* message;
    };
    char buffer[16];
    std::string target;
    const char* noText = nullptr;
    char* noBuffer = nullptr;
    const Row rows[] = {
        {"move null source", [&] { (void)tv_move_to(noText, 'x', 0); }, TVErrC_Assert,
         "Assertion Failed: (source != nullptr)"},
        {"move null match", [&] { (void)tv_move_to("abc", noText, 0); }, TVErrC_Assert,
         "Assertion Failed: (match != nullptr)"},
        {"move past end", [&] { (void)tv_move_to("abc", 'x', 4); }, TVErrC_StringBounds,
         "Position out of bounds."},
        {"move negative", [&] { (void)tv_move_to(std::string("abc"), "b", -1); },
         TVErrC_StringBounds, "Position out of bounds."},
        {"read null source", [&] { (void)tv_read_to(noText, buffer, 'x', 0); }, TVErrC_Assert,
         "Assertion Failed: (source != nullptr)"},
        {"read null target", [&] { (void)tv_read_to("abc", noBuffer, 'x', 0); }, TVErrC_Assert,
         "Assertion Failed: (target != nullptr)"},
        {"read null match", [&] { (void)tv_read_to("abc", buffer, noText, 0); }, TVErrC_Assert,
         "Assertion Failed: (match != nullptr)"},
        {"read past end", [&] { (void)tv_read_to("abc", buffer, 'x', 9); }, TVErrC_StringBounds,
         "String position out of bounds."},
        {"read string past end", [&] { (void)tv_read_to(std::string("abc"), target, "b", 7); },
         TVErrC_StringBounds, "String position out of bounds."},
        {"skip null", [&] { (void)tv_skip_space(noText, 0); }, TVErrC_Assert,
         "Assertion Failed: (strng != nullptr )"},
        {"skip past end", [&] { (void)tv_skip_space("ab", 5); }, TVErrC_StringBounds,
         "Start position 5 out of bounds in ab."},
        {"skip string negative", [&] { (void)tv_skip_space(std::string("ab"), -2); },
         TVErrC_StringBounds, "Start position -2 out of bounds in ab."},
        {"copy null source", [&] { (void)tv_copy_string(noText, buffer, 4); }, TVErrC_Assert,
         "Assertion Failed: (source != nullptr)"},
        {"copy null target", [&] { (void)tv_copy_string("a", noBuffer, 4); }, TVErrC_Assert,
         "Assertion Failed: (target != nullptr)"},
        {"elim null", [&] { (void)tv_elim_whitespace(noBuffer, true, true, true, true); },
         TVErrC_Assert, "Assertion Failed: (text != nullptr)"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        TVRaised raised = tv_catch_raise(r.call);
        EXPECT_TRUE(raised.thrown);
        EXPECT_EQ(raised.code, r.code);
        EXPECT_EQ(raised.text, r.message);
    }
    // When errors continue, a position call gives -1 and the error stays.
    get_tverror()->set_action(TVActContinue, TVSevError);
    EXPECT_EQ(tv_move_to("abc", 'b', 9), -1);
    EXPECT_EQ(get_tverror()->get_code(), TVErrC_StringBounds);
    EXPECT_TRUE(istverr(tv_copy_string("abc", noBuffer, 4)));
}

TEST_F(TextStrTest, CaseInsensitiveSearches)
{
    EXPECT_TRUE(tv_compare_nocase("Hello", "hELLO"));
    EXPECT_FALSE(tv_compare_nocase("Hello", "Hell"));
    EXPECT_EQ(tv_find_nocase("The Quick Fox", "quick"), 4u);
    EXPECT_EQ(tv_find_nocase("The Quick Fox", "slow"), std::string::npos);
    EXPECT_EQ(tv_find_nocase("anything", ""), 0u);
    const Strings days = {"Mon", "Tue", "Wed"};
    EXPECT_EQ(tv_find_in_vector("Tue", days), 1);
    EXPECT_EQ(tv_find_in_vector("tue", days), -1);
    EXPECT_EQ(tv_find_in_vector("tue", days, true), 1);
    EXPECT_EQ(tv_tolower("MiXeD 12!"), "mixed 12!");
}

TEST_F(TextStrTest, CopyStringTruncatesAndAlwaysTerminates)
{
    char buffer[8];
    std::memset(buffer, 'Z', sizeof buffer);
    EXPECT_EQ(tv_copy_string("abcdefghij", buffer, 4), TVErrC_ok);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(buffer[4], 'Z');  // nothing written past length
    EXPECT_EQ(tv_copy_string("hi", buffer, sizeof buffer), TVErrC_ok);
    EXPECT_STREQ(buffer, "hi");
}

// ---- Splitting and joining ------------------------------------------------

TEST_F(TextStrTest, TokeniseKeepsInnerEmptyTokensAndDropsAnEmptyLastOne)
{
    const std::pair<const char*, Strings> rows[] = {
        {"", {}},         {",", {""}},        {"a,,b", {"a", "", "b"}}, {"a,b,", {"a", "b"}},
        {",a", {"", "a"}}, {"a,,", {"a", ""}}, {"solo", {"solo"}},
    };
    for (const auto& [text, tokens] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(tv_tokenise(text, ','), tokens);
        Strings filled = {"left", "over"};  // the vector form reuses these
        tv_tokenise(text, ',', filled);
        EXPECT_EQ(filled, tokens);
    }
}

TEST_F(TextStrTest, TagValueSplitsAtTheFirstSeparatorOnly)
{
    struct Row {
        const char* text;
        const char* sep;
        const char* tag;
        const char* value;
        bool found;
    };
    const Row rows[] = {
        {"a=b=c", "=", "a", "b=c", true},
        {"no separator", "=", "", "no separator", false},
        {"name: Ann: B", ": ", "name", "Ann: B", true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        std::string tag = "stale", value = "stale";
        EXPECT_EQ(tv_tag_value(r.text, std::string(r.sep), tag, value), r.found);
        EXPECT_EQ(tag + "|" + value, std::string(r.tag) + "|" + r.value);
        if (std::strlen(r.sep) == 1) {
            tag = value = "stale";
            EXPECT_EQ(tv_tag_value(r.text, r.sep[0], tag, value), r.found);
            EXPECT_EQ(tag + "|" + value, std::string(r.tag) + "|" + r.value);
        }
    }
}

TEST_F(TextStrTest, ReplaceNeverRescansInsertedText)
{
    struct Row {
        const char* text;
        const char* from;
        const char* to;
        bool once;
        const char* expected;
    };
    const Row rows[] = {
        {"aaa", "a", "aa", false, "aaaaaa"},  // would never end if rescanned
        {"aaa", "a", "aa", true, "aaaa"},
        {"aaaa", "aa", "b", false, "bb"},
        {"abc", "", "X", false, "abc"},
        {"abc", "b", "b", false, "abc"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.text) + " " + r.from + "->" + r.to);
        EXPECT_EQ(tv_replace_substr(r.text, r.from, r.to, r.once), r.expected);
    }
}

TEST_F(TextStrTest, LineWrapBreaksAtBlanksAndIndentsContinuations)
{
    struct Row {
        const char* name;
        const char* text;
        int width;
        int indent;
        bool keepLeading;
        const char* expected;
    };
    const Row rows[] = {
        {"plain", "the quick brown fox jumps over the lazy dog", 15, 2, false,
         "the quick brown\n  fox jumps\n  over the lazy\n  dog"},
        {"keeps leading blanks", "  alpha beta gamma", 12, 1, true, "  alpha beta\n   gamma"},
        {"indent capped at half a narrow width", "aaaa bbbb cccc dddd", 10, 8, false,
         "aaaa bbbb\n     cccc\n     dddd"},
        {"long word left whole", "a verylongword b", 5, 0, false, "a\nverylongword\nb"},
        {"each line on its own", "ab cd\nef gh", 3, 0, false, "ab\ncd\nef\ngh"},
        {"runs of blanks fold into the break", "aaa   bbb", 4, 0, false, "aaa\nbbb"},
        {"trailing blanks don't make a line", "abc      ", 3, 0, false, "abc"},
        {"no width", "a b c", 0, 2, false, "a b c"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(tv_line_wrap(r.text, r.width, r.indent, r.keepLeading), r.expected);
    }
}

TEST_F(TextStrTest, LineWrapLosesNoWordsAndKeepsWithinWidth)
{
    const unsigned seed = 1594;
    std::cout << "line wrap seed " << seed << "\n";
    std::mt19937 rng(seed);
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int w = 1 + static_cast<int>(rng() % 30); w > 0; --w)
            text += std::string(1 + rng() % 9, static_cast<char>('a' + rng() % 26)) + (w > 1 ? " " : "");
        const int width = 21 + static_cast<int>(rng() % 50);  // words always fit the room
        const int indent = static_cast<int>(rng() % 9);
        SCOPED_TRACE(text + " | width " + std::to_string(width) + " indent " + std::to_string(indent));
        // Joined back without each continuation's indent, the text is whole.
        std::string unwrapped;
        for (const std::string& line : tv_tokenise(tv_line_wrap(text, width, indent, false), '\n')) {
            EXPECT_LE(static_cast<int>(line.size()), width) << line;
            unwrapped += unwrapped.empty() ? line : " " + line.substr(static_cast<size_t>(indent));
        }
        EXPECT_EQ(unwrapped, text);
    }
}

// ---- CSV ------------------------------------------------------------------

TEST_F(TextStrTest, CsvWriterQuotesDoublesQuotesAndReadsBack)
{
    EXPECT_EQ(tv_csv_out("say \"hi\""), "\"say \"\"hi\"\"\"");
    std::string list;
    for (const char* entry : {"a", "", "c"})
        tv_add_csv_entry(list, entry);
    EXPECT_EQ(list, "a, , c");

    const Strings fields = {"plain", "with, comma", "quote \"q\"", "line\nbreak", "", "end"};
    std::string line;
    for (const std::string& f : fields)
        tv_add_csv_entry(line, tv_csv_out(f));
    std::istringstream in(line + "\n" + line + "\n");
    EXPECT_EQ(tv_read_csv(in), fields);
    EXPECT_EQ(tv_read_csv(in), fields);
}

TEST_F(TextStrTest, ReadCsvRecordByRecord)
{
    std::istringstream in("name,\"say \"\"hi\"\"\",3\n"
                          "\"two\nlines\",x\r\n"
                          "\"cr\r\nlf\",\"bare\rcr\"\n"
                          "a,\n"
                          "\n"
                          "a,\"\"\n"
                          "\"a\", \"b\"\n"
                          "a, b\r"
                          "last");
    const std::vector<Strings> records = {
        {"name", "say \"hi\"", "3"},
        {"two\nlines", "x"},
        {"cr\nlf", "bare\ncr"},
        {"a", ""},        // the line ended with a comma
        {},               // an empty line
        {"a", ""},        // a quoted empty field is a field
        {"a", "b"},       // blanks before an opening quote are padding
        {"a", " b"},      // but they belong to an unquoted field
        {"last"},
    };
    for (size_t i = 0; i < records.size(); ++i)
        EXPECT_EQ(tv_read_csv(in), records[i]) << "record " << i;
    EXPECT_EQ(tv_read_csv(in), Strings());
    EXPECT_TRUE(in.eof());
}

// ---- Number forms ---------------------------------------------------------

TEST_F(TextStrTest, NumberFormsUseTheirBlankAndDefaultOnlyForThatValue)
{
    EXPECT_EQ(tv_double_to_string(2.5), "2.500000");
    EXPECT_EQ(tv_double_to_string(2.5, "%.1f"), "2.5");
    EXPECT_EQ(tv_double_to_string(-1.0, "%.1f", -1.0), "");
    EXPECT_EQ(tv_long_to_string(1234567890123L), "1234567890123");
    EXPECT_EQ(tv_long_to_string(0L, "", 0L), "");
    EXPECT_EQ(tv_int_to_string(5, "[%d]"), "[5]");
    EXPECT_EQ(tv_int_to_string(-1, "", -1), "");
    EXPECT_EQ(tv_int_to_string(3, "", -1), "3");
    EXPECT_EQ(tv_bool_to_string(true) + tv_bool_to_string(false), "10");

    EXPECT_EQ(tv_string_to_int("", 9), 9);
    EXPECT_EQ(tv_string_to_int("abc", 9), 0);  // atoi, not the default
    EXPECT_EQ(tv_string_to_long("", -3), -3);
    EXPECT_EQ(tv_string_to_long("9000000000", 0), 9000000000L);
    EXPECT_DOUBLE_EQ(tv_string_to_double("", 1.5), 1.5);
    EXPECT_DOUBLE_EQ(tv_string_to_double("2.25e1", 0), 22.5);
    EXPECT_TRUE(tv_string_to_bool("", true));
    EXPECT_FALSE(tv_string_to_bool("0", true));
    EXPECT_TRUE(tv_string_to_bool("2", false));
}

// ---- White space ----------------------------------------------------------

struct SpaceRow {
    const char* text;
    bool tabs, lines, leading, trailing;
    const char* expected;
};

TEST_F(TextStrTest, ElimWhitespaceGivesTheSameOnCAndByteStrings)
{
    const SpaceRow rows[] = {
        {"\tA\tB\t", true, false, false, false, " A B "},
        {"\r  x", false, false, true, false, "\r  x"},   // a leading CR stops the strip
        {" \t\nx", false, false, true, false, "x"},
        {"x \t\r\n", false, false, false, true, "x"},
        {"\r\n x", false, true, true, false, "x"},       // lines go before leading
        {" \t", false, false, true, false, ""},
    };
    for (const SpaceRow& r : rows) {
        SCOPED_TRACE(::testing::PrintToString(std::string(r.text)));
        std::string s = r.text;
        tv_elim_whitespace(s, r.tabs, r.lines, r.leading, r.trailing);
        EXPECT_EQ(s, r.expected);

        std::vector<char> buffer(r.text, r.text + std::strlen(r.text) + 1);
        EXPECT_EQ(tv_elim_whitespace(buffer.data(), r.tabs, r.lines, r.leading, r.trailing), TVErrC_ok);
        EXPECT_STREQ(buffer.data(), r.expected);
    }
}

TEST_F(TextStrTest, CleaningTurnsWhiteSpaceIntoBlanksAndStraightensQuotes)
{
    const SpaceRow rows[] = {
        {"a\tb", true, false, false, false, "a b"},
        {"a\r\nb", false, true, false, false, "a  b"},
        {"a\tb\n", false, false, false, false, "a\tb\n"},
        {"\tx\n", true, true, true, true, "x"},
    };
    for (const SpaceRow& r : rows)
        EXPECT_EQ(tv_clean_string(r.text, r.tabs, r.lines, r.leading, r.trailing), r.expected)
            << ::testing::PrintToString(std::string(r.text));

    EXPECT_EQ(tv_clean_unicode("\xE2\x80\x98x\xE2\x80\x99 \xE2\x80\x9Cy\xE2\x80\x9D\xE2\x80\xA9z"),
              "'x' \"y\"\nz");
    // Other marks of the same block and a cut-off sequence pass through.
    EXPECT_EQ(tv_clean_unicode("a\xE2\x80\x94" "b"), "a\xE2\x80\x94" "b");
    EXPECT_EQ(tv_clean_unicode("tail\xE2\x80"), "tail\xE2\x80");

    EXPECT_EQ(tv_clean_paragraphs("\nOne\ntwo  \n\n \nThree\r\nfour\n"), "One two\n\nThree four");
    EXPECT_EQ(tv_clean_paragraphs("it\xE2\x80\x99s\xE2\x80\xA9" "done"), "it's done");
    EXPECT_EQ(tv_clean_paragraphs("  indented\nnext"), "  indented next");
}

// ---- Stream escapes -------------------------------------------------------

TEST_F(TextStrTest, StreamEscapesBothWays)
{
    const std::pair<std::string, std::string> out[] = {
        {"a\nb", "a\\nb"},
        {"c:\\x", "c:\\\\x"},
        {"r\r\n", "r\\n"},
        {std::string("a\0b", 3), "ab"},
        // Twice as long as the input: the buffer must grow.
        {std::string(1000, '\n'), [] {
             std::string all;
             for (int i = 0; i < 1000; ++i)
                 all += "\\n";
             return all;
         }()},
        {std::string(40, 'p') + "\r" + std::string(40, 'q'), std::string(40, 'p') + std::string(40, 'q')},
    };
    for (const auto& [text, escaped] : out)
        EXPECT_EQ(tv_stream_out(text), escaped) << ::testing::PrintToString(text);

    const std::pair<std::string, std::string> in[] = {
        {"t", "\\t"},            // any other escaped character is itself
        {"end\\", "end\\"},      // a lone backslash at the very end stays
        {"a\nb\\", "a\\nb\\\\"},
    };
    for (const auto& [text, escaped] : in)
        EXPECT_EQ(tv_stream_in(escaped), text) << escaped;
}

TEST_F(TextStrTest, StreamInUndoesStreamOutForRandomText)
{
    const unsigned seed = 20240611;
    std::cout << "stream escape seed " << seed << "\n";
    std::mt19937 rng(seed);
    // The bytes that matter to the escapes, at a density that varies by
    // round (so both long plain runs and runs of escapes occur), then
    // anything but CR and NUL.
    const char interesting[] = {'\\', '\n', 'n', '\\', 'x'};
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        const size_t len = rng() % 300;
        const unsigned density = rng() % 101;  // percent
        for (size_t i = 0; i < len; ++i) {
            char c;
            if (rng() % 100 < density)
                c = interesting[rng() % sizeof interesting];
            else
                do
                    c = static_cast<char>(rng() % 256);
                while (c == '\r' || c == '\0');
            text += c;
        }
        std::string escaped = tv_stream_out(text);
        ASSERT_EQ(escaped.find_first_of(std::string("\n\r\0", 3)), std::string::npos)
            << ::testing::PrintToString(text);
        ASSERT_EQ(tv_stream_in(escaped), text) << ::testing::PrintToString(text);
        ASSERT_EQ(tv_stream_out(tv_stream_in(escaped)), escaped);
    }
}

} // namespace
