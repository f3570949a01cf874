#include "LibCore/textstr/tvtextstr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "LibCore/tests/tvraise.h"

namespace {

using Strings = std::vector<std::string>;

class TextStrTest : public TVQuietErrorTest
{
};

// ---- Searching ------------------------------------------------------------

TEST_F(TextStrTest, MoveToAgreesBetweenCAndStringForms)
{
    struct Row {
        const char* source;
        const char* match;
        int start;
        int expected;
    };
    const Row rows[] = {
        {"a,b,c", ",", 0, 1},
        {"a,b,c", ",", 2, 3},
        {"a,b,c", ",", 4, 5},       // no match: the length
        {"a,b,c", ",", 5, 5},       // start at the end is allowed
        {"", ",", 0, 0},
        {"key := value", ":=", 0, 4},
        {"key := value", ":=", 5, 12},
        {"abab", "ab", 1, 2},
        {"abc", "", 1, 1},          // an empty match is found where it starts
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.source) + " / " + r.match + " @" + std::to_string(r.start));
        EXPECT_EQ(tv_move_to(r.source, r.match, r.start), r.expected);
        EXPECT_EQ(tv_move_to(std::string(r.source), std::string(r.match), r.start), r.expected);
        if (std::strlen(r.match) == 1) {
            EXPECT_EQ(tv_move_to(r.source, r.match[0], r.start), r.expected);
            EXPECT_EQ(tv_move_to(std::string(r.source), r.match[0], r.start), r.expected);
        }
    }
}

TEST_F(TextStrTest, ReadToCopiesUpToTheMatch)
{
    struct Row {
        const char* source;
        const char* match;
        int start;
        const char* text;
        int pos;
    };
    const Row rows[] = {
        {"name=value", "=", 0, "name", 4},
        {"name=value", "=", 5, "value", 10},
        {"a--b--c", "--", 3, "b", 4},
        {"abc", "x", 3, "", 3},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.source);
        char buffer[32];
        std::memset(buffer, 'Z', sizeof buffer);
        EXPECT_EQ(tv_read_to(r.source, buffer, r.match, r.start), r.pos);
        EXPECT_STREQ(buffer, r.text);

        std::string target = "stale";
        EXPECT_EQ(tv_read_to(std::string(r.source), target, std::string(r.match), r.start), r.pos);
        EXPECT_EQ(target, r.text);
        if (std::strlen(r.match) == 1) {
            EXPECT_EQ(tv_read_to(r.source, buffer, r.match[0], r.start), r.pos);
            EXPECT_STREQ(buffer, r.text);
            EXPECT_EQ(tv_read_to(std::string(r.source), target, r.match[0], r.start), r.pos);
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
    const Row rows[] = {
        {" \t x", 0, 3}, {"x  y", 1, 3}, {"   ", 0, 3}, {"", 0, 0}, {"\nx", 0, 0}, {"ab", 2, 2},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(tv_skip_space(r.text, r.start), r.expected);
        EXPECT_EQ(tv_skip_space(std::string(r.text), r.start), r.expected);
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
}

TEST_F(TextStrTest, WhenErrorsContinueAPositionCallGivesMinusOneAndLeavesTheErrorPending)
{
    get_tverror()->set_action(TVActContinue, TVSevError);
    EXPECT_EQ(tv_move_to("abc", 'b', 9), -1);
    EXPECT_EQ(get_tverror()->get_code(), TVErrC_StringBounds);
    char* noBuffer = nullptr;
    EXPECT_TRUE(istverr(tv_copy_string("abc", noBuffer, 4)));
}

TEST_F(TextStrTest, CaseInsensitiveSearches)
{
    EXPECT_TRUE(tv_compare_nocase("Hello", "hELLO"));
    EXPECT_FALSE(tv_compare_nocase("Hello", "Hell"));
    EXPECT_FALSE(tv_compare_nocase("a-b", "a_b"));
    EXPECT_TRUE(tv_compare_nocase("", ""));

    EXPECT_EQ(tv_find_nocase("The Quick Fox", "quick"), 4u);
    EXPECT_EQ(tv_find_nocase("The Quick Fox", "slow"), std::string::npos);
    EXPECT_EQ(tv_find_nocase("anything", ""), 0u);
    EXPECT_EQ(tv_find_nocase("", "x"), std::string::npos);

    const Strings days = {"Mon", "Tue", "Wed"};
    EXPECT_EQ(tv_find_in_vector("Tue", days), 1);
    EXPECT_EQ(tv_find_in_vector("tue", days), -1);
    EXPECT_EQ(tv_find_in_vector("tue", days, true), 1);
    EXPECT_EQ(tv_find_in_vector("Sun", days, true), -1);
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
    struct Row {
        const char* text;
        Strings tokens;
    };
    const Row rows[] = {
        {"", {}},
        {",", {""}},
        {"a,,b", {"a", "", "b"}},
        {"a,b,", {"a", "b"}},
        {",a", {"", "a"}},
        {"a,,", {"a", ""}},
        {"solo", {"solo"}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(tv_tokenise(r.text, ','), r.tokens);
        Strings filled = {"left", "over"};
        tv_tokenise(r.text, ',', filled);
        EXPECT_EQ(filled, r.tokens);
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
        {"=v", "=", "", "v", true},
        {"t=", "=", "t", "", true},
        {"no separator", "=", "", "no separator", false},
        {"name: Ann: B", ": ", "name", "Ann: B", true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        std::string tag = "stale", value = "stale";
        EXPECT_EQ(tv_tag_value(r.text, std::string(r.sep), tag, value), r.found);
        EXPECT_EQ(tag, r.tag);
        EXPECT_EQ(value, r.value);
        if (std::strlen(r.sep) == 1) {
            tag = value = "stale";
            EXPECT_EQ(tv_tag_value(r.text, r.sep[0], tag, value), r.found);
            EXPECT_EQ(tag, r.tag);
            EXPECT_EQ(value, r.value);
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
        {"aaa", "a", "aa", false, "aaaaaa"},
        {"aaa", "a", "aa", true, "aaaa"},
        {"aaaa", "aa", "b", false, "bb"},
        {"x.y.z", ".", "", false, "xyz"},
        {"abc", "", "X", false, "abc"},
        {"abc", "b", "b", false, "abc"},
        {"abc", "q", "X", false, "abc"},
        {"%d of %d", "%d", "%s", true, "%s of %d"},
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
        {"fits", "short", 80, 4, false, "short"},
        {"runs of blanks fold into the break", "aaa   bbb", 4, 0, false, "aaa\nbbb"},
        {"trailing blanks don't make a line", "abc      ", 3, 0, false, "abc"},
        {"no width", "a b c", 0, 2, false, "a b c"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(tv_line_wrap(r.text, r.width, r.indent, r.keepLeading), r.expected);
    }
}

// Joins wrapped lines back, dropping each continuation's indent.
std::string unwrap(const std::string& wrapped, int indent)
{
    std::string out;
    Strings lines = tv_tokenise(wrapped, '\n');
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0)
            out += ' ' + lines[i].substr(static_cast<size_t>(indent));
        else
            out += lines[i];
    }
    return out;
}

TEST_F(TextStrTest, LineWrapLosesNoWordsAndKeepsWithinWidth)
{
    const unsigned seed = 1594;
    std::cout << "line wrap seed " << seed << "\n";
    std::mt19937 rng(seed);
    for (int round = 0; round < 300; ++round) {
        std::string text;
        int words = 1 + static_cast<int>(rng() % 30);
        for (int w = 0; w < words; ++w) {
            if (w > 0)
                text += ' ';
            text.append(1 + rng() % 9, static_cast<char>('a' + rng() % 26));
        }
        int width = 21 + static_cast<int>(rng() % 50);  // words always fit the room
        int indent = static_cast<int>(rng() % 9);
        SCOPED_TRACE(text + " | width " + std::to_string(width) + " indent " +
                     std::to_string(indent));
        std::string wrapped = tv_line_wrap(text, width, indent, false);
        EXPECT_EQ(unwrap(wrapped, indent), text);
        for (const std::string& line : tv_tokenise(wrapped, '\n'))
            EXPECT_LE(static_cast<int>(line.size()), width) << line;
    }
}

// ---- CSV ------------------------------------------------------------------

TEST_F(TextStrTest, CsvOutQuotesAndDoublesQuotes)
{
    EXPECT_EQ(tv_csv_out("plain"), "\"plain\"");
    EXPECT_EQ(tv_csv_out("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(tv_csv_out(""), "\"\"");

    std::string list;
    tv_add_csv_entry(list, "a");
    tv_add_csv_entry(list, "");
    tv_add_csv_entry(list, "c");
    EXPECT_EQ(list, "a, , c");
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
    for (size_t i = 0; i < records.size(); ++i) {
        SCOPED_TRACE("record " + std::to_string(i));
        EXPECT_EQ(tv_read_csv(in), records[i]);
    }
    EXPECT_EQ(tv_read_csv(in), Strings());
    EXPECT_TRUE(in.eof());
}

TEST_F(TextStrTest, CsvWrittenByTheWriterReadsBack)
{
    const Strings fields = {"plain", "with, comma", "quote \"q\"", "line\nbreak", "", "end"};
    std::string line;
    for (const std::string& f : fields)
        tv_add_csv_entry(line, tv_csv_out(f));
    std::istringstream in(line + "\n" + line + "\n");
    EXPECT_EQ(tv_read_csv(in), fields);
    EXPECT_EQ(tv_read_csv(in), fields);
}

// ---- Number forms ---------------------------------------------------------

TEST_F(TextStrTest, NumbersToText)
{
    EXPECT_EQ(tv_double_to_string(2.5), "2.500000");
    EXPECT_EQ(tv_double_to_string(2.5, "%.1f"), "2.5");
    EXPECT_EQ(tv_double_to_string(-1.0, "%.1f", -1.0), "");
    EXPECT_EQ(tv_double_to_string(0.0, "", -1.0), "0.000000");
    EXPECT_EQ(tv_long_to_string(1234567890123L), "1234567890123");
    EXPECT_EQ(tv_long_to_string(7L, "%03ld"), "007");
    EXPECT_EQ(tv_long_to_string(0L, "", 0L), "");
    EXPECT_EQ(tv_int_to_string(-42), "-42");
    EXPECT_EQ(tv_int_to_string(5, "[%d]"), "[5]");
    EXPECT_EQ(tv_int_to_string(-1, "", -1), "");
    EXPECT_EQ(tv_int_to_string(3, "", -1), "3");
    EXPECT_EQ(tv_bool_to_string(true), "1");
    EXPECT_EQ(tv_bool_to_string(false), "0");
}

TEST_F(TextStrTest, TextToNumbersUsesTheDefaultOnlyForEmptyText)
{
    EXPECT_EQ(tv_string_to_int("", 9), 9);
    EXPECT_EQ(tv_string_to_int("12abc", 9), 12);
    EXPECT_EQ(tv_string_to_int("abc", 9), 0);  // atoi, not the default
    EXPECT_EQ(tv_string_to_int(" -7", 9), -7);
    EXPECT_EQ(tv_string_to_long("", -3), -3);
    EXPECT_EQ(tv_string_to_long("9000000000", 0), 9000000000L);
    EXPECT_DOUBLE_EQ(tv_string_to_double("", 1.5), 1.5);
    EXPECT_DOUBLE_EQ(tv_string_to_double("2.25e1", 0), 22.5);
    EXPECT_TRUE(tv_string_to_bool("", true));
    EXPECT_FALSE(tv_string_to_bool("0", true));
    EXPECT_TRUE(tv_string_to_bool("2", false));
    EXPECT_FALSE(tv_string_to_bool("yes", true));
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
        {"a\r\nb\n", false, true, false, false, "ab"},
        {"\r  x", false, false, true, false, "\r  x"},   // a leading CR stops the strip
        {" \t\nx", false, false, true, false, "x"},
        {"x \t\r\n", false, false, false, true, "x"},
        {"\t a \r\n", true, true, true, true, "a"},
        {"\r\n x", false, true, true, false, "x"},       // lines go before leading
        {" \t", false, false, true, false, ""},
        {"", true, true, true, true, ""},
    };
    for (const SpaceRow& r : rows) {
        SCOPED_TRACE(::testing::PrintToString(std::string(r.text)));
        std::string s = r.text;
        tv_elim_whitespace(s, r.tabs, r.lines, r.leading, r.trailing);
        EXPECT_EQ(s, r.expected);

        std::vector<char> buffer(r.text, r.text + std::strlen(r.text) + 1);
        EXPECT_EQ(tv_elim_whitespace(buffer.data(), r.tabs, r.lines, r.leading, r.trailing),
                  TVErrC_ok);
        EXPECT_STREQ(buffer.data(), r.expected);
    }
}

TEST_F(TextStrTest, CleanStringTurnsWhiteSpaceIntoBlanks)
{
    const SpaceRow rows[] = {
        {"  \t \r\n", false, false, false, true, ""},
        {"a\tb", true, false, false, false, "a b"},
        {"a\r\nb", false, true, false, false, "a  b"},
        {" a ", false, false, true, false, "a "},
        {"a\tb\n", false, false, false, false, "a\tb\n"},
        {"\tx\n", true, true, true, true, "x"},
    };
    for (const SpaceRow& r : rows) {
        SCOPED_TRACE(::testing::PrintToString(std::string(r.text)));
        EXPECT_EQ(tv_clean_string(r.text, r.tabs, r.lines, r.leading, r.trailing), r.expected);
    }
}

TEST_F(TextStrTest, CleanUnicodeStraightensQuotesOnly)
{
    EXPECT_EQ(tv_clean_unicode("\xE2\x80\x98x\xE2\x80\x99 \xE2\x80\x9Cy\xE2\x80\x9D\xE2\x80\xA9z"),
              "'x' \"y\"\nz");
    // Other marks of the same block and a cut-off sequence pass through.
    EXPECT_EQ(tv_clean_unicode("a\xE2\x80\x94" "b"), "a\xE2\x80\x94" "b");
    EXPECT_EQ(tv_clean_unicode("tail\xE2\x80"), "tail\xE2\x80");
}

TEST_F(TextStrTest, CleanParagraphsJoinsLinesAndKeepsParagraphBreaks)
{
    EXPECT_EQ(tv_clean_paragraphs("\nOne\ntwo  \n\n \nThree\r\nfour\n"), "One two\n\nThree four");
    EXPECT_EQ(tv_clean_paragraphs("it\xE2\x80\x99s\xE2\x80\xA9" "done"), "it's done");
    EXPECT_EQ(tv_clean_paragraphs("  indented\nnext"), "  indented next");
    EXPECT_EQ(tv_clean_paragraphs(""), "");
}

// ---- Stream escapes -------------------------------------------------------

TEST_F(TextStrTest, StreamEscapesBothWays)
{
    struct Row {
        std::string text;
        std::string escaped;
    };
    const Row out[] = {
        {"a\nb", "a\\nb"},
        {"c:\\x", "c:\\\\x"},
        {"r\r\n", "r\\n"},
        {std::string("a\0b", 3), "ab"},
        {"", ""},
        {"\\n", "\\\\n"},
        {std::string(1000, '\n'), [] {
             std::string all;
             for (int i = 0; i < 1000; ++i)
                 all += "\\n";
             return all;
         }()},  // twice as long as the input
        {std::string(40, 'p') + "\r" + std::string(40, 'q'),
         std::string(40, 'p') + std::string(40, 'q')},
    };
    for (const Row& r : out)
        EXPECT_EQ(tv_stream_out(r.text), r.escaped) << ::testing::PrintToString(r.text);

    const Row in[] = {
        {"\n", "\\n"},
        {"\\", "\\\\"},
        {"t", "\\t"},            // any other escaped character is itself
        {"end\\", "end\\"},      // a lone backslash at the very end stays
        {"\\n", "\\\\n"},
        {"a\nb\\", "a\\nb\\\\"},
    };
    for (const Row& r : in)
        EXPECT_EQ(tv_stream_in(r.escaped), r.text) << r.escaped;
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
