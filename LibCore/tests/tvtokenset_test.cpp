#include "LibCore/textstr/tvtokenset.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <utility>
#include <vector>

#include "LibCore/textstr/tvscopeguard.h"

namespace {

using Tokens = std::vector<std::pair<std::string, int>>;

// A scanner of the kind the parsers build on the token set: words
// upper-cased, numbers, white space as one marker, anything else a
// single-character token.
class Scanner : public TVTokenSet
{
public:
    explicit Scanner(const std::string& text)
    {
        int line = 1;
        int pos = 0;
        const int n = static_cast<int>(text.size());
        while (pos < n) {
            unsigned char c = static_cast<unsigned char>(text[static_cast<size_t>(pos)]);
            if (c == ' ' || c == '\t' || c == '\n')
                pos = push_whitespace(text, pos, line);
            else if (std::isdigit(c))
                pos = push_numeric(text, pos, line);
            else if (std::isalpha(c) || c == '_')
                pos = push_alphanum(text, pos, true, line);
            else
                push_token(text[static_cast<size_t>(pos++)], line);
        }
    }

    Tokens drain()
    {
        Tokens out;
        while (!empty()) {
            int line = get_line_no();
            out.emplace_back(pop_token(), line);
        }
        return out;
    }
};

TEST(TokenSetTest, ScannerSplitsWordsNumbersMarkersAndCharacters)
{
    Scanner scan("every 2 weeks\n  on mon_day1 at 3.25, 4.\tend");
    const Tokens expected = {
        {"EVERY", 1}, {" ", 1}, {"2", 1}, {" ", 1}, {"WEEKS", 1}, {" ", 1},
        {"ON", 2}, {" ", 2}, {"MON_DAY1", 2}, {" ", 2}, {"AT", 2}, {" ", 2},
        {"3.25", 2}, {",", 2}, {" ", 2}, {"4", 2}, {".", 2}, {" ", 2}, {"END", 2},
    };
    EXPECT_EQ(scan.drain(), expected);
}

using PushFn = int (*)(TVTokenSet&, const std::string&, int);

int alphanum(TVTokenSet& set, const std::string& text, int start)
{
    return set.push_alphanum(text, start, true, 7);
}

int alpha(TVTokenSet& set, const std::string& text, int start)
{
    return set.push_alpha(text, start, true, 7);
}

int numeric(TVTokenSet& set, const std::string& text, int start)
{
    return set.push_numeric(text, start, 7);
}

TEST(TokenSetTest, PushFunctionsGiveThePositionBehindTheRun)
{
    struct Row {
        const char* name;
        PushFn push;
        const char* text;
        int start;
        int end;
        const char* token;  // nullptr: nothing pushed
    };
    // The scanner above covers the plain runs; these are their edges.
    const Row rows[] = {
        {"alpha takes underscore, stops at a digit", alpha, "_x1", 0, 2, "_X"},
        {"numeric point without digit", numeric, "7.x", 0, 1, "7"},
        {"numeric point at end", numeric, "7.", 0, 1, "7"},
        {"alphanum no run", alphanum, "+", 0, 0, nullptr},
        {"numeric no run", numeric, ".5", 0, 0, nullptr},
        {"start at end", alphanum, "ab", 2, 2, nullptr},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        TVTokenSet set;
        EXPECT_EQ(r.push(set, r.text, r.start), r.end);
        if (r.token == nullptr) {
            EXPECT_TRUE(set.empty());
        } else {
            ASSERT_EQ(set.size(), 1);
            EXPECT_EQ(set.first_token(), r.token);
            EXPECT_EQ(set.get_line_no(), 7);
        }
    }
}

TEST(TokenSetTest, AlphanumKeepsCaseUnlessAskedToUpperCase)
{
    TVTokenSet set;
    EXPECT_EQ(set.push_alphanum("MixEd", 0, false, 1), 5);
    EXPECT_EQ(set.push_alpha("MixEd", 0, true, 1), 5);
    EXPECT_EQ(set.pop_token(), "MixEd");
    EXPECT_EQ(set.pop_token(), "MIXED");
}

TEST(TokenSetTest, WhitespaceCountsLinesAndPushesOneMarkerOnlyForARun)
{
    TVTokenSet set;
    int line = 4;
    EXPECT_EQ(set.push_whitespace(" \t\n\n x", 0, line), 5);
    EXPECT_EQ(line, 6);
    EXPECT_EQ(set.get_line_no(), 4);  // where the run began
    EXPECT_EQ(set.push_whitespace("x", 0, line), 0);
    EXPECT_EQ(set.push_whitespace("ab", 2, line), 2);
    EXPECT_EQ(set.size(), 1);
}

TEST(TokenSetTest, ReadingFromBothEnds)
{
    Scanner scan("  ( a1 , 2 )  ");
    EXPECT_EQ(scan.pop_whitespace(), " ");
    EXPECT_EQ(scan.pop_last_whitespace(), " ");
    EXPECT_EQ(scan.first_token(), "(");
    EXPECT_EQ(scan.last_token(), ")");
    EXPECT_FALSE(scan.match(')'));
    EXPECT_TRUE(scan.match('('));
    EXPECT_EQ(scan.pop_whitespace(), " ");
    EXPECT_TRUE(scan.is_alphabetic());
    EXPECT_FALSE(scan.is_numeric());
    EXPECT_FALSE(scan.match("A"));   // a prefix isn't the token
    EXPECT_TRUE(scan.match("A1"));
    EXPECT_EQ(scan.pop_last_token(), ")");
    EXPECT_EQ(scan.pop_last_whitespace(), " ");
    EXPECT_EQ(scan.pop_last_token(), "2");
    EXPECT_EQ(scan.pop_whitespace(), " ");
    EXPECT_FALSE(scan.match(",,"));
    EXPECT_TRUE(scan.match(","));
    EXPECT_EQ(scan.size(), 1);
    scan.remove_all();
    EXPECT_TRUE(scan.empty());
}

TEST(TokenSetTest, AnEmptySetAnswersQuietly)
{
    TVTokenSet set;
    EXPECT_EQ(set.get_line_no(), -1);
    EXPECT_FALSE(set.is_alphabetic() || set.is_numeric() || set.match('x'));
    EXPECT_EQ(set.first_token() + set.last_token() + set.pop_token() + set.pop_last_token() +
                  set.pop_whitespace(),
              "");

    set.push_token("12", 1);
    set.push_token('x', 1);
    EXPECT_TRUE(set.is_numeric());
    set.pop_token();
    EXPECT_TRUE(set.is_alphabetic());
}

// An operation that refuses to run inside itself, as the error handler does.
int reentrant_calls(bool recurse)
{
    static bool busy = false;
    if (busy)
        return 0;
    TVScopeGuard guard(busy);
    return 1 + (recurse ? reentrant_calls(false) : 0);
}

TEST(ScopeGuardTest, RefusesReentryAndReleasesEvenOnThrow)
{
    EXPECT_EQ(reentrant_calls(true), 1);
    EXPECT_EQ(reentrant_calls(true), 1);  // released after the first call

    bool flag = false;
    try {
        TVScopeGuard guard(flag);
        EXPECT_TRUE(flag);
        throw 1;
    } catch (int) {
    }
    EXPECT_FALSE(flag);
}

} // namespace
