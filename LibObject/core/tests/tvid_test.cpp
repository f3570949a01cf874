#include "LibObject/core/tvid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

TEST(IdTest, CompareTreatsNegativePartsAsWildcards)
{
    struct Row {
        TVId a, b;
        bool match;
    };
    const Row rows[] = {
        {TVId(5, -1, -1), TVId(5, 2, 3), true},
        {TVId(5, 1, -1), TVId(5, 2, -1), false},
        {TVId(5, 2, 3), TVId(6, 2, 3), false},
        {TVId(-1, 2, 3), TVId(5, 2, 3), false},   // the id part is never a wildcard
        {TVId(5, 2, -1), TVId(5, -1, 4), true},
        {TVId(5, 2, 3), TVId(5, 2, 4), false},
        {TVId(5, -7, 3), TVId(5, 0, 3), true},    // any negative, not just -1
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.a.to_string() + " vs " + r.b.to_string());
        EXPECT_EQ(r.a.compare(r.b), r.match);
        EXPECT_EQ(r.b.compare(r.a), r.match);  // symmetric
    }
}

TEST(IdTest, EqualityIsExactAndOrderIsLexicographic)
{
    EXPECT_NE(TVId(5, -1, -1), TVId(5, 2, 3));
    EXPECT_TRUE(TVId(5, 9, 9) == 5);
    EXPECT_FALSE(TVId(5, 9, 9) == 9);

    std::vector<TVId> ids = {TVId(2, 0, 0), TVId(1, 5, 0), TVId(1, 2, 9), TVId(1, 2, 3),
                             TVId(-1, -1, -1)};
    std::sort(ids.begin(), ids.end());
    const std::vector<TVId> sorted = {TVId(-1, -1, -1), TVId(1, 2, 3), TVId(1, 2, 9),
                                      TVId(1, 5, 0), TVId(2, 0, 0)};
    EXPECT_EQ(ids, sorted);
    std::set<TVId> unique(ids.begin(), ids.end());
    unique.insert(TVId(1, 2, 3));
    EXPECT_EQ(unique.size(), 5u);
}

TEST(IdTest, FromStringFillsAsManyPartsAsItFinds)
{
    struct Row {
        const char* text;
        TVId id;
    };
    const Row rows[] = {
        {"7/", TVId(7, -1, -1)},
        {"7", TVId(7, -1, -1)},
        {"7/8", TVId(7, 8, -1)},
        {"5//3/", TVId(5, -1, 3)},
        {"", TVId(-1, -1, -1)},
        {"-2147483648/2147483647/0/", TVId(-2147483647 - 1, 2147483647, 0)},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(TVId::from_string(r.text), r.id);
    }
}

TEST(IdTest, TextRoundTripsThroughBothForms)
{
    for (const TVId& id : {TVId(0, 0, 0), TVId(12, -1, -1), TVId(-5, 7, 2000000000)}) {
        SCOPED_TRACE(id.to_string());
        EXPECT_EQ(TVId::from_string(id.to_string()), id);
        std::stringstream stream;
        stream << id;
        EXPECT_EQ(stream.str(), id.to_string());
        TVId back(9, 9, 9);
        stream >> back;
        EXPECT_EQ(back, id);
    }
}

TEST(IdTest, StreamReadStopsAtTheThirdSlashOrTheLineEnd)
{
    std::istringstream in("1/2/3/4/5/6/\n7/8\n\n9/");
    TVId a, b, c, d, e;
    in >> a >> b;
    EXPECT_EQ(a, TVId(1, 2, 3));
    EXPECT_EQ(b, TVId(4, 5, 6));
    in >> c;   // the line end after the second id
    EXPECT_EQ(c, TVId::C_Empty);
    in >> d;
    EXPECT_EQ(d, TVId(7, 8, -1));
    in >> e;   // an empty line
    EXPECT_EQ(e, TVId::C_Empty);
    TVId f;
    in >> f;
    EXPECT_EQ(f, TVId(9, -1, -1));
    EXPECT_TRUE(in.eof());
    in >> f;  // nothing left
    EXPECT_EQ(f.to_string(), "-1/-1/-1/");
}

} // namespace
