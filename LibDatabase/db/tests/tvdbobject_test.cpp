// A stored object through its serial form, its change stamps and its
// edit cycle.

#include "LibDatabase/db/tvdbobject.h"

#include "LibDatabase/db/tvdbscript.h"

#include "TestSupport/tvdbtestnode.h"
#include "TestSupport/tvobjecttest.h"
#include "TestSupport/tvtestclock.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>

namespace {

// 2 June 2024 12:00:00 GMT.
constexpr long C_Start = 1717329600;

class DBObjectTest : public TVObjectTest
{
protected:
    TestClock m_clock{C_Start};

    static std::string date_text(const TVDate& date)
    {
        std::ostringstream out;
        out << date;
        return out.str();
    }

    static std::unique_ptr<TVDBTestNode> read_node(const std::string& text)
    {
        return read<TVDBTestNode>(text);
    }
};

TEST_F(DBObjectTest, ObjectAtItsDefaultsWritesNoneOfItsFields)
{
    EXPECT_EQ(write(TVDBTestNode()), "{TVDBTestNode\n}\n");
}

// Every field, in the order in which it must stand. Written by hand: the
// variable's backslash is escaped by the variable and again by the line.
TEST_F(DBObjectTest, EveryFieldRoundTripsInItsOrder)
{
    const std::string created = date_text(TVDate(2024, 0, 15, 9, 30, 0, 0, TVDate::C_GMT));
    const std::string modified = date_text(TVDate(2024, 5, 1, 8, 0, 0, 0, TVDate::C_GMT));
    const std::string text = "{TVDBTestNode\n"
                             "!n!alpha\n"
                             "!TVDBObject+I!12\n"
                             "!TVDBObject+S!D\n"
                             "!TVDBObject+P!3\n"
                             "!TVDBObject+C!kids\n"
                             "!TVDBObject+M!Leaf\n"
                             "!TVDBObject+L!REF:7:\n"
                             "!TVDBObject+L!SEE:9:\n"
                             "!TVDBObject+O!4\n"
                             "!TVDBObject+V!Colour#1 dark\\\\\\\\red\n"
                             "!TVDBObject+V!Size#0 large\n"
                             "!TVDBObject+CT!" + created + "\n"
                             "!TVDBObject+CI!5\n"
                             "!TVDBObject+MT!" + modified + "\n"
                             "@TVDBObject+MC\n"
                             "{TVDBTestNode\n"
                             "!n!child\n"
                             "}\n"
                             "@TVDBObject+SC\n"
                             "{TVDBScript\n"
                             "!name!on_edit\n"
                             "!script!TVSet(\"Size\", \"small\");\\nTVGet(\"Colour\");\n"
                             "!shortcut!Ctrl+E\n"
                             "}\n"
                             "}\n";
    std::unique_ptr<TVDBTestNode> node = read_node(text);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(write(*node), text);
    EXPECT_EQ(node->get_obj_state(), 'D');
    EXPECT_EQ(node->get_links("SEE"), std::vector<int>{9});
    EXPECT_EQ(node->get_nvariables(), 2);
    EXPECT_EQ(node->get_nmanaged_children(), 1);
    EXPECT_EQ(node->get_create_id(), 5);
    ASSERT_NE(node->get_own_script("on_edit"), nullptr);
    EXPECT_EQ(node->get_own_script("on_edit")->get_script(),
              "TVSet(\"Size\", \"small\");\nTVGet(\"Colour\");");
    EXPECT_EQ(node->get_own_script("on_edit")->get_shortcut(), "Ctrl+E");

    // A copy made through the class (edit's backup) writes the same bytes.
    std::unique_ptr<TVObject> copy(node->clone_class());
    EXPECT_EQ(write(*copy), text);
}

TEST_F(DBObjectTest, ModifyTimeIsWrittenOnlyWhenItDiffersFromTheCreateTime)
{
    TVDBTestNode node;
    node.set_id(1, TVDateUtils::now(), true);
    const std::string once = write(node);
    EXPECT_NE(once.find("+CT!"), std::string::npos);
    EXPECT_EQ(once.find("+MT!"), std::string::npos);
    // Read back without it, the modify time is the create time.
    std::unique_ptr<TVDBTestNode> back = read_node(once);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->get_modify_time(), back->get_create_time());

    m_clock.advance(60);
    node.mark_changed("here", true);
    const std::string twice = write(node);
    EXPECT_NE(twice.find("+MT!"), std::string::npos);
    EXPECT_EQ(rewrite(twice), twice);
}

TEST_F(DBObjectTest, ReadingRepairsWhatOldOrDamagedFilesCarry)
{
    struct Case {
        const char* name;
        std::string text;
        std::function<void(const TVDBTestNode&)> check;
        std::string rewritten; // empty: as read
    } cases[] = {
        {"parent equal to own id reads as no parent", "{TVDBTestNode\n!TVDBObject+I!4\n!TVDBObject+P!4\n}\n",
         [](const TVDBTestNode& n) { EXPECT_EQ(n.get_parent_id(), -1); },
         "{TVDBTestNode\n!TVDBObject+I!4\n}\n"},
        {"unknown state reads as normal", "{TVDBTestNode\n!TVDBObject+S!X\n}\n",
         [](const TVDBTestNode& n) { EXPECT_EQ(n.get_obj_state(), 'N'); }, ""},
        {"old edit flag is dropped", "{TVDBTestNode\n!TVDBObject+E!1\n}\n",
         [](const TVDBTestNode&) {}, "{TVDBTestNode\n}\n"},
        {"link with a bad id targets nothing", "{TVDBTestNode\n!TVDBObject+L!REF:x1:\n}\n",
         [](const TVDBTestNode& n) { EXPECT_EQ(n.get_links("REF"), std::vector<int>{-1}); },
         "{TVDBTestNode\n!TVDBObject+L!REF:-1:\n}\n"},
        {"variable without # runs to the space", "{TVDBTestNode\n!TVDBObject+V!Size 1 big\n}\n",
         [](const TVDBTestNode& n) { EXPECT_EQ(n.get_nvariables(), 1); },
         "{TVDBTestNode\n!TVDBObject+V!Size#1 big\n}\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::unique_ptr<TVDBTestNode> node = read_node(c.text);
        ASSERT_NE(node, nullptr);
        EXPECT_TRUE(node->is_serialised());
        EXPECT_TRUE(node->update_vars_due());
        c.check(*node);
        EXPECT_EQ(write(*node), c.rewritten.empty() ? c.text : c.rewritten);
    }
}

TEST_F(DBObjectTest, MalformedVariableLineFailsTheRead)
{
    for (const char* line : {"Size#x big", "Size#1big", "Size", "Size#1"}) {
        SCOPED_TRACE(line);
        TVDBTestNode node;
        std::istringstream in(std::string("{TVDBTestNode\n!TVDBObject+V!") + line + "\n}\n");
        EXPECT_TRUE(istvwarn(node.read_class(in, C_Version)));
        EXPECT_EQ(take_pending().code, TVErrC_FileLineInvalid);
    }
}

TEST_F(DBObjectTest, StoredChangesStampTheObjectAndNoOpsDoNot)
{
    TVDBTestNode parent;
    parent.set_id(3, TVDateUtils::now(), true);
    struct Case {
        const char* name;
        std::function<void(TVDBTestNode&)> act;
        bool stamps;
    } cases[] = {
        {"set_state to deleted", [](TVDBTestNode& n) { n.set_state('D'); }, true},
        {"set_state to the same", [](TVDBTestNode& n) { n.set_state('N'); }, false},
        {"set_parent", [&](TVDBTestNode& n) { n.set_parent(&parent, "kids", "Leaf", nullptr); }, true},
        {"set_parent_ptr", [&](TVDBTestNode& n) { n.set_parent_ptr(&parent, nullptr); }, false},
        {"remap_id of the spec", [](TVDBTestNode& n) { n.remap_id(8, 9); }, true},
        {"remap_id of nothing held", [](TVDBTestNode& n) { n.remap_id(50, 51); }, false},
        {"add_link", [](TVDBTestNode& n) { n.add_link(20, "REF"); }, true},
        {"remove_link of a missing link", [](TVDBTestNode& n) { (void)n.remove_link(20, "X", false); }, false},
        {"set_id to the same id", [](TVDBTestNode& n) { n.set_id(1, TVDateUtils::now(), false); }, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TVDBTestNode node;
        node.set_id(1, TVDateUtils::now(), true);
        node.set_spec_id(8);
        const long before = TVUpdateCounter::get_counter(false);
        c.act(node);
        EXPECT_EQ(node.has_changed_since(before), c.stamps);
    }
}

TEST_F(DBObjectTest, ChangesNotNowAdvanceTheModifyTimeBySeconds)
{
    TVDBTestNode node;
    node.set_id(1, TVDateUtils::now(), true);
    const TVDate start = node.get_modify_time();
    for (int i = 0; i < 3; ++i)
        node.mark_changed("script", false);
    EXPECT_EQ(node.get_modify_time() - start, TVDuration(3));
    EXPECT_EQ(node.get_modify_loc(), "script");
}

TEST_F(DBObjectTest, NewIdKeepsTheFirstIdUnlessReset)
{
    TVDBTestNode node;
    node.set_id(10, TVDateUtils::now(), true);
    EXPECT_EQ(node.get_create_id(), 10); // no earlier id: the id itself
    node.set_id(11, node.get_create_time(), false);
    node.set_id(12, node.get_create_time(), false);
    EXPECT_EQ(node.get_create_id(), 10);
    node.set_id(13, node.get_create_time(), true);
    EXPECT_EQ(node.get_create_id(), 13);
}

TEST_F(DBObjectTest, RevertRestoresTheBackupButKeepsIdAndStamp)
{
    TVDBTestNode node("before");
    node.set_id(5, TVDateUtils::now(), true);
    node.add_link(7, "REF");
    const std::string original = write(node);

    ASSERT_EQ(node.edit(42, true), TVErrC_ok);
    EXPECT_TRUE(node.is_edited());
    EXPECT_EQ(node.get_lock_id(), 42);
    node.m_name = "after";
    node.add_link(8, "REF");
    node.add_managed_child(new TVDBTestNode("extra"));
    const long stamp = node.get_last_update();

    ASSERT_EQ(node.revert(), TVErrC_ok);
    EXPECT_EQ(write(node), original);
    EXPECT_EQ(node.get_id(), 5);
    EXPECT_EQ(node.get_last_update(), stamp);
    EXPECT_FALSE(node.is_locked());
    EXPECT_FALSE(node.is_edited());
}

TEST_F(DBObjectTest, CommitUnlocksStampsAndClearsTheCreatedFlag)
{
    TVDBTestNode node;
    node.set_id(5, TVDateUtils::now(), true);
    ASSERT_EQ(node.edit(1, true), TVErrC_ok);
    EXPECT_TRUE(node.get_created());
    const long before = TVUpdateCounter::get_counter(false);
    m_clock.advance(30);
    ASSERT_EQ(node.commit(), TVErrC_ok);
    EXPECT_TRUE(node.has_changed_since(before));
    EXPECT_EQ(node.get_modify_time(), TVDateUtils::now());
    EXPECT_FALSE(node.get_created());
    EXPECT_FALSE(node.is_locked());
    EXPECT_FALSE(node.is_edited());
}

TEST_F(DBObjectTest, SecondEditIsRefusedAndTheFirstStaysIntact)
{
    TVDBTestNode node("kept");
    node.set_id(5, TVDateUtils::now(), true);
    ASSERT_EQ(node.edit(1, false), TVErrC_ok);
    node.m_name = "changed";

    const int second = node.edit(2, false);
    const TVRaised raised = take_pending();
    EXPECT_TRUE(istvwarn(second));
    EXPECT_EQ(raised.code, TVLockable::TVErrC_ObjectLocked);
    EXPECT_NE(raised.text.find("Could not lock for ID 2"), std::string::npos);
    EXPECT_EQ(node.get_lock_id(), 1);

    // The backup is still the one of the first edit.
    ASSERT_EQ(node.revert(), TVErrC_ok);
    EXPECT_EQ(node.m_name, "kept");
}

TEST_F(DBObjectTest, CommitOrRevertWithoutAnEditIsRefused)
{
    for (bool commit : {true, false}) {
        SCOPED_TRACE(commit ? "commit" : "revert");
        TVDBTestNode node;
        EXPECT_TRUE(istvwarn(commit ? node.commit() : node.revert()));
        EXPECT_EQ(take_pending().code, TVLockable::TVErrC_ObjectNotLocked);
        // Locked by someone else, but no backup.
        ASSERT_EQ(node.lock(3), TVErrC_ok);
        EXPECT_TRUE(istvwarn(commit ? node.commit() : node.revert()));
        EXPECT_EQ(take_pending().code, TVErrC_NullPointer);
    }
}

TEST_F(DBObjectTest, RemoveLinkWarnsOnlyWhenAsked)
{
    TVDBTestNode node;
    node.add_link(7, "REF");
    EXPECT_EQ(node.remove_link(7, "OTHER", false), TVErrC_ok);
    EXPECT_TRUE(istvwarn(node.remove_link(7, "OTHER", true)));
    const TVRaised raised = take_pending();
    EXPECT_EQ(raised.code, TVErrC_InvalidValue);
    EXPECT_NE(raised.text.find("Could not find ID 7"), std::string::npos);
    EXPECT_EQ(node.remove_link(7, "REF", true), TVErrC_ok);
    EXPECT_TRUE(node.get_links("REF").empty());
}

TEST_F(DBObjectTest, ManagedChildrenComeOutInTheOrderTheyWereStored)
{
    TVDBTestNode node;
    node.add_managed_child(new TVDBTestNode("second"));
    node.add_managed_child(new TVDBTestNode("first"));
    std::unique_ptr<TVDBTestNode> back = read_node(write(node));
    ASSERT_NE(back, nullptr);
    for (const char* name : {"first", "second"}) {
        std::unique_ptr<TVDBObject> child(back->extract_managed_child());
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(dynamic_cast<TVDBTestNode&>(*child).m_name, name);
    }
    EXPECT_EQ(back->extract_managed_child(), nullptr);
}

} // namespace
