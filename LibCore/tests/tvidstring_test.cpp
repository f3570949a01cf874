#include "LibCore/ptrarray/tvidstring.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LibCore/ptrarray/tvtagvalue.h"

namespace {

// The shape in which an enumeration fills a combo box: ids from a code
// alone, texts in the order the code chose.
TVIdString operations()
{
    TVIdString list;
    list.add(TVId(3, -1, -1), "Times");
    list.add(TVId(1, -1, -1), "Add");
    list.add(TVId(4, -1, -1), "Divide");
    list.add(TVId(2, -1, -1), "Subtract");
    return list;
}

std::vector<std::string> names(const TVIdString& list)
{
    std::vector<std::string> out;
    for (const TVIdEntry& e : list)
        out.push_back(e.get_text());
    return out;
}

TEST(IdStringTest, LooksUpInBothDirectionsAndMissesGiveEmptyAnswers)
{
    const TVIdString list = operations();
    EXPECT_EQ(list.get_row_id(2), TVId(4, -1, -1));
    EXPECT_EQ(list.get_id_row(TVId(2, -1, -1)), 3);
    EXPECT_EQ(list.get_id_name(TVId(1, -1, -1)), "Add");
    EXPECT_EQ(list.get_name_id("Divide"), TVId(4, -1, -1));

    EXPECT_EQ(list.get_row_id(-1), TVId::C_Empty);
    EXPECT_EQ(list.get_row_id(4), TVId::C_Empty);
    EXPECT_EQ(list.get_row_name(4), "");
    EXPECT_EQ(list.get_id_name(TVId(9, -1, -1)), "");
    EXPECT_EQ(list.get_name_id("times"), TVId::C_Empty);  // texts match exactly
    // Ids match exactly too: a wildcard part doesn't find a full id.
    TVIdString full;
    full.add(TVId(3, 1, 0), "x");
    EXPECT_EQ(full.get_id_row(TVId(3, -1, -1)), -1);
}

TEST(IdStringTest, SortOrdersByTextAndKeepsIdsWithTheirTexts)
{
    TVIdString list = operations();
    list.add(TVId(5, -1, -1), "Add");  // a second "Add" stays behind the first
    list.sort();
    EXPECT_EQ(names(list), (std::vector<std::string>{"Add", "Add", "Divide", "Subtract", "Times"}));
    EXPECT_EQ(list.get_row_id(0), TVId(1, -1, -1));
    EXPECT_EQ(list.get_row_id(1), TVId(5, -1, -1));
    EXPECT_EQ(list.get_id_row(TVId(3, -1, -1)), 4);
    EXPECT_EQ(list.get_name_id("Add"), TVId(1, -1, -1));  // the first match wins
}

TEST(IdStringTest, AppendAddsBehindAndCopesWithItself)
{
    TVIdString list = operations();
    list.append(list);
    EXPECT_EQ(list.size(), 8);
    EXPECT_EQ(list.get_row_name(7), "Subtract");
    EXPECT_EQ(list.get_row_name(4), "Times");
}

TEST(TagValueTest, MissingTagsGiveTheDefault)
{
    TVTagValue tags;
    tags.set("name", "Ann");
    tags.set("count", "12");
    tags.set("ratio", "0.75");
    tags.set("blank", "");
    tags.set("word", "many");

    EXPECT_EQ(tags.get_string("nobody", "?"), "?");
    EXPECT_EQ(tags.get_string("blank", "?"), "");   // present, so not the default
    EXPECT_EQ(tags.get_int("count", -1), 12);
    EXPECT_EQ(tags.get_int("nobody", -1), -1);
    EXPECT_EQ(tags.get_int("blank", -1), -1);
    EXPECT_EQ(tags.get_int("word", -1), 0);         // read as atoi reads it
    EXPECT_DOUBLE_EQ(tags.get_double("ratio", 0.0), 0.75);
    EXPECT_DOUBLE_EQ(tags.get_double("nobody", 2.5), 2.5);

    EXPECT_TRUE(tags.remove("count"));
    EXPECT_FALSE(tags.remove("count"));
    EXPECT_EQ(tags.get_int("count", -1), -1);
}

} // namespace
