#include "LibObject/core/tvidlist.h"

#include <gtest/gtest.h>

#include <QLine>
#include <string>
#include <vector>

namespace {

std::string text(const TVIdList& list)
{
    std::string out;
    for (const TVId& id : list)
        out += id.to_string() + " ";
    return out;
}

TVIdList make(const std::vector<TVId>& ids)
{
    TVIdList list;
    for (const TVId& id : ids)
        list.add(id);
    return list;
}

// A list whose members match one another, which add() would refuse:
// placeholders first, then replace() puts the wanted ids in.
TVIdList overlapping(const std::vector<TVId>& ids)
{
    TVIdList list;
    for (size_t i = 0; i < ids.size(); ++i)
        list.add(1000 + static_cast<int>(i), 0, 0);
    for (size_t i = 0; i < ids.size(); ++i)
        list.replace(ids[i], static_cast<int>(i));
    return list;
}

TEST(IdListTest, AddAndInsertRefuseAnyWildcardMatch)
{
    struct Row {
        const char* name;
        std::vector<TVId> start;
        TVId value;
        bool front;
        const char* expected;
    };
    const Row rows[] = {
        {"wildcard onto exact", {TVId(5, 2, 3)}, TVId(5, -1, -1), false, "5/2/3/ "},
        {"exact onto wildcard", {TVId(5, -1, -1)}, TVId(5, 2, 3), false, "5/-1/-1/ "},
        {"other seq is new", {TVId(5, 1, -1)}, TVId(5, 2, -1), false, "5/1/-1/ 5/2/-1/ "},
        {"other id is new", {TVId(5, 2, 3)}, TVId(6, 2, 3), false, "5/2/3/ 6/2/3/ "},
        {"insert goes first", {TVId(5, 2, 3)}, TVId(6, 2, 3), true, "6/2/3/ 5/2/3/ "},
        {"insert refuses too", {TVId(5, 2, 3)}, TVId(5, 2, -1), true, "5/2/3/ "},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        TVIdList list = make(r.start);
        if (r.front)
            list.insert(r.value);
        else
            list.add(r.value);
        EXPECT_EQ(text(list), r.expected);
    }
}

TEST(IdListTest, AppendAddsEachMemberOfItselfWithoutGrowing)
{
    TVIdList list = make({TVId(1, 1, 1), TVId(2, -1, -1)});
    list.append(make({TVId(2, 7, 7), TVId(3, 3, 3)}));
    EXPECT_EQ(text(list), "1/1/1/ 2/-1/-1/ 3/3/3/ ");
    list.append(list);
    EXPECT_EQ(list.size(), 3);
    EXPECT_TRUE(list.is_marked(3, -1, 3));
    EXPECT_FALSE(list.is_marked(3, -1, 9));
    EXPECT_FALSE(list.is_marked(4, -1, -1));
}

TEST(IdListTest, RemoveTreatsOnlyTheArgumentsAsWildcards)
{
    struct Row {
        const char* name;
        TVId remove;
        const char* expected;
    };
    const Row rows[] = {
        {"all of an id", TVId(5, -1, -1), "6/1/1/ "},
        {"one seq", TVId(5, 2, -1), "5/1/1/ 5/-1/-1/ 6/1/1/ "},
        {"exact", TVId(5, 2, 4), "5/1/1/ 5/2/3/ 5/-1/-1/ 6/1/1/ "},
        {"a wildcard member is not matched by a seq", TVId(5, 1, 1), "5/2/3/ 5/2/4/ 5/-1/-1/ 6/1/1/ "},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        TVIdList list = overlapping({TVId(5, 1, 1), TVId(5, 2, 3), TVId(5, 2, 4), TVId(5, -1, -1),
                                     TVId(6, 1, 1)});
        list.remove(r.remove);
        EXPECT_EQ(text(list), r.expected);
    }
}

TEST(IdListTest, ReadingPastEitherEndGivesEmptyValues)
{
    TVIdList list;
    EXPECT_EQ(list.first(), TVId::C_Empty);
    EXPECT_EQ(list.pop(), TVId::C_Empty);
    EXPECT_EQ(list.first_id(), -1);
    EXPECT_EQ(list.first_sequence(), -1);
    list.add(4, 8, 1);
    for (int index : {-1, 1, 99}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(list[index], TVId::C_Empty);
        EXPECT_EQ(list.sequence(index), -1);
        list.replace(TVId(9, 9, 9), index);
    }
    EXPECT_EQ(text(list), "4/8/1/ ");
    EXPECT_EQ(list.first_sequence(), 8);
    EXPECT_EQ(list.pop(), TVId(4, 8, 1));
    EXPECT_EQ(list.size(), 0);
}

TEST(IdListTest, IndexOfIsExactWhereInsertionIsNot)
{
    TVIdList list = make({TVId(5, 2, 3), TVId(6, -1, -1)});
    EXPECT_EQ(list.index_of(TVId(6, -1, -1)), 1);
    EXPECT_EQ(list.index_of(TVId(5, -1, -1)), -1);
    EXPECT_TRUE(list.is_marked(TVId(5, -1, -1)));
}

TEST(IdListTest, SetIdsDropsDuplicatesAndGetIdsGivesThemBack)
{
    TVIdList list;
    list.add(1, 1, 1);
    list.set_ids({3, 1, 3, 2});
    EXPECT_EQ(text(list), "3/-1/-1/ 1/-1/-1/ 2/-1/-1/ ");
    EXPECT_EQ(list.get_ids(), (std::vector<int>{3, 1, 2}));
}

TEST(IdTest, QLineCarriesAllThreePartsAndBack)
{
    EXPECT_EQ(TVId(4, 5, 6).to_qline(), QLine(4, 5, 6, 0));
    for (const TVId& id : {TVId(12, -1, -1), TVId(-5, 7, 2000000000), TVId::C_Empty}) {
        TVId back(1, 2, 3);
        back.from_qline(id.to_qline());
        EXPECT_EQ(back, id) << id.to_string();
    }
}

} // namespace
