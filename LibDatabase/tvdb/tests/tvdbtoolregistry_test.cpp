// What a program registers with the tool: its files found by their
// application type, and a database class the tool was built without.

#include "LibDatabase/tvdb/tvdbtoolregistry.h"

#include "LibDatabase/db/tvdatabase.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(TVDBToolRegistryTest, FindsAProgramByTypeAndNamesTheClassesNotLinkedIn)
{
    const TVDatabase linked;
    TVDBToolRegistry registry;
    registry.add_program({"Drill", "DrillOne", "Drills", linked.get_class_name()});
    registry.add_program({"Diary", "Diary", "Diaries", "DiaryDB"});
    registry.add_program({"Drill", "DrillTwo", "Drills", linked.get_class_name()});

    ASSERT_NE(registry.find_program("Drill"), nullptr);
    EXPECT_EQ(registry.find_program("Drill")->m_application, "DrillTwo");
    EXPECT_EQ(registry.find_program("Other"), nullptr);
    EXPECT_EQ(registry.find_program(""), nullptr);
    EXPECT_EQ(registry.unlinked_classes(), std::vector<std::string>{"DiaryDB"});
}
