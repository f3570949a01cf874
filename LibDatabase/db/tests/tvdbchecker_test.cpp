// The services over a database of books: the checker's items as a user
// meets them (what a run lists, what it leaves out: an object under edit,
// a tombstone; how a fix drops out), notes (the first active one an object
// takes, once or kept), and the clipboard (cut moves, copy clones).

#include "TestSupport/tvdbfiletest.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibDatabase/db/tvdbchecker.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/db/tvdbclipboard.h"
#include "LibDatabase/db/tvdbnote.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvvariable.h"

#include <map>

namespace {

using Items = std::multimap<std::string, int>; // short message -> id

// Takes a note whose text starts with "take".
class NoteTaker : public TVDBTestNode
{
public:
    bool apply_note(const TVDBNote& note) override
    {
        if (note.get_text().rfind("take", 0) != 0)
            return false;
        m_name = note.get_text();
        return true;
    }
};

class CheckerTest : public TVDBFileTest
{
protected:
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        m_db = reopen();
        ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec("Book", "$<Title> = prompt();\n$<Note> = init();"), ""),
                  TVErrC_ok);
        ASSERT_EQ(m_db->parse_objectspecs(true), TVErrC_ok) << take_messages();
        ASSERT_EQ(m_db->apply_objectspecs(), TVErrC_ok) << take_messages();
        m_book = m_db->get_objectspec_id_for_name("Book");
    }
    TVDBTestNode* book(const std::string& name, const std::string& title)
    {
        auto* made = new TVDBTestNode(name);
        EXPECT_EQ(m_db->add_object(made, nullptr, "", "", m_book, "Add " + name), TVErrC_ok);
        if (!title.empty()) {
            EXPECT_EQ(made->set_var_value("Title", title, false), TVErrC_ok);
        }
        return made;
    }
    Items check(bool force = true)
    {
        m_clock.advance(60);
        std::vector<TVDatabase::TVCheckIssue> issues;
        EXPECT_EQ(m_db->periodic_check(1, force, issues), TVErrC_ok);
        Items items;
        for (const auto& issue : issues)
            items.emplace(issue.short_message, issue.id);
        return items;
    }

    std::unique_ptr<TVDatabase> m_db;
    int m_book = -1;
};

TEST_F(CheckerTest, ListsWhatIsWrongAndDropsWhatWasFixed)
{
    TVDBTestNode* dune = book("dune", "");
    TVDBTestNode* emma = book("emma", "Emma");
    TVDBTestNode* gone = book("gone", "");
    ASSERT_EQ(emma->set_var_value("Stray", "kept", false), TVErrC_ok);
    auto* odd = new TVDBTestNode("odd");
    ASSERT_EQ(m_db->add_object(odd, emma, TVDBTestNode::C_KidsTag, "Odd", m_book, "Odd"), TVErrC_ok);
    ASSERT_EQ(odd->set_var_value("Title", "x", false), TVErrC_ok);
    ASSERT_EQ(m_db->delete_object(gone->get_id(), "Gone"), TVErrC_ok);

    EXPECT_EQ(check(), (Items{{"Unfilled variables", dune->get_id()},
                              {"Extra variables", emma->get_id()},
                              {"Not valid child", odd->get_id()}}));
    const TVDBChecker& checker = m_db->get_checker();
    EXPECT_EQ(checker.object_results(emma->get_id()),
              "This entry has the following additional variables: Stray.   You will need to "
              "edit the object and remove them.\n");

    // Under edit the user is filling it in: not unfilled.
    ASSERT_EQ(m_db->edit_object(dune->get_id(), false, 7), TVErrC_ok);
    EXPECT_EQ(check().count("Unfilled variables"), 0u);
    ASSERT_EQ(dune->set_var_value("Title", "Dune", false), TVErrC_ok);
    ASSERT_EQ(m_db->commit_object(dune->get_id(), "Title"), TVErrC_ok);
    ASSERT_TRUE(m_db->get_checker().remove_extra_vars(emma->get_id()));
    EXPECT_EQ(check(), (Items{{"Not valid child", odd->get_id()}}));

    m_db->get_checker().clear_error(-1);
    EXPECT_EQ(m_db->get_checker().get_nitems(), 0);
}

TEST_F(CheckerTest, ACleanDatabaseIsCheckedAgainOnlyAfterAChange)
{
    book("dune", "Dune");
    EXPECT_TRUE(check(false).empty());
    TVDBTestNode* emma = book("emma", "");
    EXPECT_EQ(check(false), (Items{{"Unfilled variables", emma->get_id()}}));
    // Unchanged but not clean: looked at again at each period.
    EXPECT_EQ(check(false).size(), 1u);

    // A link that met data of a newer release pauses, and the database says so.
    TVExternalDB* link = nullptr;
    ASSERT_EQ(m_db->add_external(TVCloudInstance::E_LocalShare, "maths", 2, link), TVErrC_ok);
    link->set_dbwarning(true);
    EXPECT_EQ(check(false).count(TVDBChecker::C_NewerVersionMessage), 1u);
    link->set_dbwarning(false);
    EXPECT_EQ(check(false).count(TVDBChecker::C_NewerVersionMessage), 0u);
}

TEST_F(CheckerTest, TheFirstActiveNoteANewObjectTakesIsUsedOnceOrKept)
{
    TVDBNote* once = nullptr;
    TVDBNote* kept = nullptr;
    ASSERT_EQ(m_db->add_note("ignored by the taker"), TVErrC_ok);
    ASSERT_EQ(m_db->add_note("take me once", &once), TVErrC_ok);
    ASSERT_EQ(m_db->add_note("take me again\nsecond line", &kept), TVErrC_ok);
    EXPECT_EQ(kept->get_note_line(), "take me again");
    const int onceId = once->get_id();
    const int keptId = kept->get_id();

    const auto take = [&] {
        auto* made = new NoteTaker;
        EXPECT_EQ(m_db->add_object(made, nullptr, "", "", -1, "Add"), TVErrC_ok);
        return made->m_name;
    };
    EXPECT_EQ(take(), "") << "no note active";
    ASSERT_EQ(m_db->set_active_note(onceId, TVDBNote::E_ActiveOnce, 3), TVErrC_ok);
    EXPECT_EQ(take(), "take me once");
    EXPECT_EQ(m_db->get_note_id(onceId), nullptr) << "a note used once goes";
    ASSERT_EQ(m_db->set_active_note(keptId, TVDBNote::E_ActiveKeep, 3), TVErrC_ok);
    EXPECT_TRUE(m_db->is_active_note(keptId));
    EXPECT_EQ(take(), "take me again\nsecond line");
    EXPECT_FALSE(m_db->is_active_note(keptId)) << "a kept note waits again";
    EXPECT_EQ(take(), "");
    // Activity is not stored: a reload starts with every note inactive.
    ASSERT_EQ(m_db->set_active_note(keptId, TVDBNote::E_ActiveKeep, 3), TVErrC_ok);
    ASSERT_EQ(m_db->complete_operation("Active"), TVErrC_ok);
    m_db.reset();
    m_db = reopen();
    ASSERT_EQ(m_db->get_nnotes(), 2);
    EXPECT_FALSE(m_db->is_active_note(keptId));
    EXPECT_TRUE(istvwarn(m_db->set_active_note(keptId + 1000, 0, 0))) << "no such note";
    get_tverror()->clear_all();
}

TEST_F(CheckerTest, MergedBooksKeepTheSurvivorsValuesAndTakeTheOnesItLacks)
{
    TVDBTestNode* dune = book("dune", "Dune");
    TVDBTestNode* copy = book("copy", "Dune, 2nd ed.");
    ASSERT_EQ(copy->set_var_value("Note", "signed", false), TVErrC_ok);
    const int duneId = dune->get_id();
    ASSERT_EQ(m_db->merge_objects(duneId, copy->get_id()), TVErrC_ok) << take_messages();
    const TVDBObject* merged = m_db->get_object_by_id(duneId);
    EXPECT_EQ(merged->get_var_by_tag("Title", false)->get_value(), "Dune");
    EXPECT_EQ(merged->get_var_by_tag("Note", false)->get_value(), "signed");
}

// The same database of books serves the clipboard.
using ClipboardTest = CheckerTest;

TEST_F(ClipboardTest, CutMovesAndCopyClonesAcrossUndoAndRedo)
{
    TVDBTestNode* shelf = book("shelf", "Shelf");
    TVDBTestNode* dune = book("dune", "Dune");
    const int duneId = dune->get_id();
    TVDBClipboard clipboard(*m_db);
    TVIdList ids;
    ids.add(duneId, -1, -1);
    TVPtrArray<TVDBObject> added;

    clipboard.cut(ids);
    EXPECT_TRUE(TVDBClipboard::is_cut(duneId));
    EXPECT_FALSE(clipboard.get_was_copied());
    ASSERT_EQ(clipboard.do_paste(*shelf, added, TVDBTestNode::C_KidsTag), TVErrC_ok) << take_messages();
    EXPECT_FALSE(TVDBClipboard::is_cut(duneId));
    ASSERT_EQ(added.size(), 1);
    EXPECT_EQ(added[0]->get_id(), duneId);
    EXPECT_EQ(m_db->get_object_by_id(duneId)->get_parent(), shelf);
    EXPECT_EQ(m_db->get_undo_operation(), "Paste objects");

    clipboard.copy(ids);
    ASSERT_EQ(clipboard.do_paste(*shelf, added, TVDBTestNode::C_KidsTag), TVErrC_ok) << take_messages();
    ASSERT_EQ(added.size(), 1);
    const int cloneId = added[0]->get_id();
    EXPECT_NE(cloneId, duneId);
    EXPECT_EQ(m_db->get_object_by_id(cloneId)->get_var_value("Title", false, false), "Dune");

    ASSERT_EQ(m_db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_db->get_object_by_id(cloneId), nullptr);
    ASSERT_EQ(m_db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_db->get_object_by_id(duneId)->get_parent_id(), -1);
    ASSERT_EQ(m_db->redo(), TVErrC_ok) << take_messages();
    ASSERT_EQ(m_db->redo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_db->get_object_by_id(duneId)->get_parent_id(), m_db->get_object_by_id(duneId)->get_parent()->get_id());
    EXPECT_NE(m_db->get_object_by_id(cloneId), nullptr);

    // An object without a spec can't be pasted, and says so.
    ASSERT_EQ(add(*m_db, "plain"), TVErrC_ok);
    TVIdList plain;
    plain.add(m_db->get_object_by_index(m_db->get_nobjects() - 1)->get_id(), -1, -1);
    m_db->get_object_by_index(m_db->get_nobjects() - 1)->set_spec_id(-1);
    clipboard.copy(plain);
    EXPECT_TRUE(istvwarn(clipboard.do_paste(*shelf, added, TVDBTestNode::C_KidsTag)));
    EXPECT_NE(take_messages().find("Missing spec or member tag."), std::string::npos);
}

TEST_F(ClipboardTest, TheChildrenATargetsSpecOffersAreThePlacesToPaste)
{
    ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec("Shelf", "$[Volume] = ${Book}[];"), ""), TVErrC_ok);
    ASSERT_EQ(m_db->parse_objectspecs(true), TVErrC_ok) << take_messages();
    auto* shelf = new TVDBTestNode("shelf");
    ASSERT_EQ(m_db->add_object(shelf, nullptr, "", "", m_db->get_objectspec_id_for_name("Shelf"), "Shelf"),
              TVErrC_ok);
    const auto offered = TVDBClipboard::get_possible_children(*m_db, *shelf);
    ASSERT_EQ(offered.size(), 1u);
    EXPECT_EQ(offered[0].m_tag + " " + offered[0].m_specName, "Volume Book");

    TVDBClipboard clipboard(*m_db);
    TVIdList ids;
    ids.add(book("dune", "Dune")->get_id(), -1, -1);
    EXPECT_TRUE(clipboard.get_matching_children(*shelf).empty()) << "nothing on the clipboard";
    TVPtrArray<TVDBObject> added;
    EXPECT_TRUE(istvwarn(clipboard.do_paste_as(*shelf, added, "Volume", "Book")));
    EXPECT_NE(take_messages().find("No object on the clipboard."), std::string::npos);
    clipboard.copy(ids);
    EXPECT_EQ(clipboard.get_matching_children(*shelf), std::vector<std::string>{"Volume"});
    ids.add(shelf->get_id(), -1, -1);
    clipboard.copy(ids);
    EXPECT_TRUE(clipboard.get_matching_children(*shelf).empty()) << "a shelf is no book";
}

} // namespace
