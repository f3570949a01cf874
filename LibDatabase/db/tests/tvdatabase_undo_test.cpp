// Editing, undo and redo: each operation undone and redone by the replay,
// on disk as in memory; a random run against a plain model of the replay;
// and the edit lock.

#include "TestSupport/tvdbfiletest.h"

#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace {

class DatabaseUndoTest : public TVDBFileTest
{
protected:
    // The objects in file order, in the serial form: what a reader sees.
    static std::string objects_text(const TVDatabase& db)
    {
        std::string all;
        for (int i = 0; i < db.get_nobjects(); ++i) {
            std::string one;
            EXPECT_EQ(db.get_object_by_index(i)->object_to_string(one, 0), TVErrC_ok);
            all += one;
        }
        return all;
    }

    // As after a crash: the log of this session is kept and replayed.
    std::unique_ptr<TVDatabase> reload_keeping_log()
    {
        auto db = std::make_unique<TVDatabase>();
        db->set_app_type(C_AppType);
        EXPECT_EQ(db->load(m_file, false, std::string(), true, true, false), TVErrC_ok)
            << take_messages();
        return db;
    }

    static TVDBTestNode* node(const TVDatabase& db, int id)
    {
        return dynamic_cast<TVDBTestNode*>(db.get_object_by_id(id));
    }

    static int add_under(TVDatabase& db, const std::string& name, int parent,
                         const std::string& operation)
    {
        TVDBObject* above = parent < 0 ? nullptr : db.get_object_by_id(parent);
        return db.add_object(new TVDBTestNode(name), above, above ? TVDBTestNode::C_KidsTag : "",
                             "", -1, operation);
    }

    // Ids 1 to 4: a > b > c, and d at the top.
    static void build_tree(TVDatabase& db)
    {
        ASSERT_EQ(add_under(db, "a", -1, "Add a"), TVErrC_ok);
        ASSERT_EQ(add_under(db, "b", 1, "Add b"), TVErrC_ok);
        ASSERT_EQ(add_under(db, "c", 2, "Add c"), TVErrC_ok);
        ASSERT_EQ(add_under(db, "d", -1, "Add d"), TVErrC_ok);
    }

    static int rename(TVDatabase& db, int id, const std::string& name,
                      const std::string& operation)
    {
        TV_PASS_ON(db.edit_object(id, false, 1));
        node(db, id)->m_name = name;
        return db.commit_object(id, operation);
    }
};

struct OperationCase {
    const char* what;
    const char* operation;
    std::function<int(TVDatabase&)> run;
};

TEST_F(DatabaseUndoTest, EachOperationUndoesAndRedoesInMemoryAndOnDisk)
{
    const std::vector<OperationCase> cases = {
        {"add at the top", "Add e",
         [](TVDatabase& db) { return add_under(db, "e", -1, "Add e"); }},
        {"edit and commit", "Rename",
         [](TVDatabase& db) { return rename(db, 2, "renamed", "Rename"); }},
        {"delete a parent", "Delete a",
         [](TVDatabase& db) { return db.delete_object(1, "Delete a"); }},
        {"reparent, completed", "Move",
         [](TVDatabase& db) {
             TV_PASS_ON(db.reparent(db.get_object_by_id(2), db.get_object_by_id(4), "kids"));
             return db.complete_operation("Move");
         }},
        {"replace", "Replace b",
         [](TVDatabase& db) {
             return db.replace_object(2, new TVDBTestNode("new b"), "kids", "", -1, "Replace b");
         }},
        {"extract and add elsewhere", "Move subtree",
         [](TVDatabase& db) {
             TVDBObject* copy = nullptr;
             TV_PASS_ON(db.extract_object(2, copy, true));
             TV_PASS_ON(db.add_object(copy, db.get_object_by_id(4), "kids", "", -1, ""));
             return db.complete_operation("Move subtree");
         }},
        {"merge", "Merged object",
         [](TVDatabase& db) { return db.merge_objects(4, 2); }},
        {"revert of a created object", "Cancel object creation",
         [](TVDatabase& db) {
             TV_PASS_ON(add_under(db, "draft", 1, ""));
             const int id = db.next_id() - 1;
             TV_PASS_ON(db.edit_object(id, true, 1));
             return db.revert_object(id);
         }},
    };
    for (const OperationCase& c : cases) {
        SCOPED_TRACE(c.what);
        use_folder(c.what);
        std::unique_ptr<TVDatabase> db = reopen();
        build_tree(*db);
        const std::string before = objects_text(*db);

        ASSERT_EQ(c.run(*db), TVErrC_ok) << take_messages();
        const std::string after = objects_text(*db);
        ASSERT_NE(after, before);
        EXPECT_EQ(db->get_undo_operation(), c.operation);

        ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
        EXPECT_EQ(objects_text(*db), before);
        EXPECT_EQ(db->get_redo_operation(), c.operation);
        db = reload_keeping_log();
        EXPECT_EQ(objects_text(*db), before);

        ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
        EXPECT_EQ(objects_text(*db), after);
        EXPECT_FALSE(db->can_redo());
        db = reload_keeping_log();
        EXPECT_EQ(objects_text(*db), after);
    }
}

TEST_F(DatabaseUndoTest, MergeKeepsTheChildrenOfTheMergedObjectUnderTheSurvivor)
{
    std::unique_ptr<TVDatabase> db = reopen();
    build_tree(*db);
    ASSERT_EQ(db->merge_objects(4, 2), TVErrC_ok) << take_messages();
    EXPECT_TRUE(db->get_object_by_id(2)->is_deleted());
    EXPECT_FALSE(db->get_object_by_id(3)->is_deleted());
    EXPECT_EQ(db->get_object_by_id(3)->get_parent_id(), 4);
}

TEST_F(DatabaseUndoTest, ASecondEditIsRefusedAndRevertRestoresTheObject)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_FALSE(db->needs_save());
    ASSERT_EQ(db->edit_object(1, false, 1), TVErrC_ok);
    EXPECT_TRUE(db->object_edited());
    EXPECT_TRUE(istvwarn(db->edit_object(1, false, 2)));
    EXPECT_EQ(get_tverror()->error_details()->get_code(), TVLockable::TVErrC_ObjectLocked);
    EXPECT_NE(take_messages().find("Could not lock for ID 2"), std::string::npos);
    EXPECT_EQ(db->get_object_by_id(1)->get_lock_id(), 1);

    node(*db, 1)->m_name = "changed";
    ASSERT_EQ(db->revert_object(1), TVErrC_ok) << take_messages();
    EXPECT_EQ(node(*db, 1)->m_name, "a");
    EXPECT_FALSE(db->object_edited());
    EXPECT_FALSE(db->get_object_by_id(1)->is_locked());
    // Nothing changed, so nothing is written.
    EXPECT_FALSE(db->needs_save());
    EXPECT_TRUE(istvwarn(db->commit_object(1, "Again")));
    EXPECT_NE(take_messages().find("The object 1 was not locked."), std::string::npos);
}

// An edit of a new object holds its lock: another edit, or a delete,
// that is refused can't make the first forget that cancelling it removes
// the draft.
TEST_F(DatabaseUndoTest, RefusedEditLeavesTheDraftThatCancelRemoves)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(db->add_object(new TVDBTestNode("draft"), nullptr, "", "", -1, ""), TVErrC_ok);
    ASSERT_EQ(db->edit_object(1, true, 1), TVErrC_ok);
    EXPECT_TRUE(istvwarn(db->edit_object(1, false, 2)));
    EXPECT_TRUE(istvwarn(db->delete_object(1, "Delete draft")));
    take_messages();
    ASSERT_EQ(db->revert_object(1), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), std::set<std::string>{});
    EXPECT_EQ(db->get_undo_operation(), "Cancel object creation");
}

// A window may hold the object a replace takes out of the file: it stays
// alive until the objects are next dropped, while the file and the id
// hold the new one.
TEST_F(DatabaseUndoTest, ReplacedObjectOutlivesTheReplaceForWhoeverHoldsIt)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "old"), TVErrC_ok);
    const TVDBTestNode* held = node(*db, 1);
    ASSERT_EQ(db->replace_object(1, new TVDBTestNode("new"), "", "", -1, "Replace"), TVErrC_ok);
    EXPECT_EQ(held->m_name, "old");
    EXPECT_EQ(held->get_id(), 1);
    EXPECT_EQ(node(*db, 1)->m_name, "new");
    EXPECT_EQ(db->get_nobjects(), 1);
    db = reopen();
    EXPECT_EQ(names(*db), std::set<std::string>{"new"});
}

// A restart keeps the partial file; its log must come along, or the blocks
// lose their meaning.
TEST_F(DatabaseUndoTest, ReopenKeepingThePartialFileKeepsUndoneBlocksOut)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    db = reopen();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a"}));
    ASSERT_EQ(add(*db, "c"), TVErrC_ok);
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a"}));
    ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
}

TEST_F(DatabaseUndoTest, NewTransactionsTakeNoTagOfTheBlocksALostLogLeft)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    const std::string index = db->get_index_filename();
    db.reset();
    // The cache folder was emptied: every block replays, none can be undone.
    ASSERT_EQ(tv_delete_file(index, false), TVErrC_ok);
    db = reopen();
    EXPECT_FALSE(db->can_undo());
    ASSERT_EQ(add(*db, "c"), TVErrC_ok);
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
    db = reload_keeping_log();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
    EXPECT_EQ(db->get_redo_operation(), "Add c");
}

// The block is the operation's one flushed write; a crash that cut the
// unflushed log records behind it loses neither the operation nor its undo.
TEST_F(DatabaseUndoTest, AnOperationIsOneFlushAndALostLogRecordComesBackFromItsBlock)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    const std::string index = db->get_index_filename();
    const size_t logged = slurp(index).size();
    int flushes = 0;
    {
        TVFileFaults count([&](TVFileFaults::E_FileOp op, const std::string&, const std::string&) {
            flushes += op == TVFileFaults::E_OpSync;
            return false;
        });
        ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    }
    EXPECT_EQ(flushes, 1);
    db.reset();
    spill(index, slurp(index).substr(0, logged));
    db = reload_keeping_log();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
    EXPECT_EQ(db->get_undo_operation(), "Add b");
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a"}));
    ASSERT_EQ(add(*db, "c"), TVErrC_ok);
    db = reload_keeping_log();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "c"}));
    EXPECT_EQ(db->get_redo_operation(), "Add b");
}

TEST_F(DatabaseUndoTest, UndoAfterAReloadReachesOperationsFromBeforeAnEarlierSave)
{
    for (bool clean : {false, true}) {
        SCOPED_TRACE(clean ? "reopened, side files cleared" : "reloaded keeping the log");
        use_folder(clean ? "clean" : "kept");
        std::unique_ptr<TVDatabase> db = reopen();
        ASSERT_EQ(add(*db, "a"), TVErrC_ok);
        ASSERT_EQ(add(*db, "b"), TVErrC_ok);
        ASSERT_EQ(db->save(true, true, false), TVErrC_ok) << take_messages();
        ASSERT_EQ(add(*db, "c"), TVErrC_ok);
        db = clean ? reopen() : reload_keeping_log();
        // A second session's save must not move the start of the log.
        ASSERT_EQ(db->save(true, true, false), TVErrC_ok) << take_messages();
        ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
        ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
        EXPECT_EQ(names(*db), (std::set<std::string>{"a"}));
        ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
        EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
    }
}

TEST_F(DatabaseUndoTest, RedoneOperationOutlastsAReload)
{
    std::unique_ptr<TVDatabase> db = reopen();
    for (const char* comment : {"one", "two"}) {
        db->set_comment(comment);
        ASSERT_EQ(db->complete_operation(comment), TVErrC_ok) << take_messages();
    }
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
    EXPECT_FALSE(db->needs_save());
    db = reload_keeping_log();
    EXPECT_EQ(db->get_comment(), "two");
}

TEST_F(DatabaseUndoTest, RedoAfterAReloadPutsBackTheUndoneValues)
{
    std::unique_ptr<TVDatabase> db = reopen();
    for (const char* comment : {"one", "two"}) {
        db->set_comment(comment);
        ASSERT_EQ(db->complete_operation(comment), TVErrC_ok) << take_messages();
    }
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    db = reload_keeping_log();
    EXPECT_FALSE(db->needs_save());
    ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(db->get_comment(), "two");
    db = reload_keeping_log();
    EXPECT_EQ(db->get_comment(), "two");
}

// ---- The random run against a model -----------------------------------------------------
//
// The model holds what the replay means: a base state, the blocks of the
// partial file (whole records of what each write touched, under its
// transaction), and the statuses. Undo and redo rebuild the live state from
// those, so every consequence of the replay shows here too.

struct Rec {
    std::string name;
    int parent = -1;
    bool dead = false;
    bool operator==(const Rec& o) const
    {
        return name == o.name && parent == o.parent && dead == o.dead;
    }
};
using State = std::map<int, Rec>;

struct Model {
    struct Block {
        int transaction; // -1: before any
        State recs;
    };
    State live;
    State base;
    std::vector<Block> blocks;
    std::vector<std::string> ops;
    std::vector<bool> undone;
    std::set<int> pending;
    bool dbDirty = false;
    bool baseNamed = true; // create saved once

    // Parents are marked changed too; the top's parent is the database.
    void touch(int id) { id < 0 ? void(dbDirty = true) : void(pending.insert(id)); }
    void extract(int id)
    {
        for (auto& [child, rec] : live)
            if (rec.parent == id && !rec.dead)
                extract(child);
        touch(live[id].parent);
        live[id].dead = true;
        touch(id);
    }
    void remove(int id)
    {
        extract(id);
        for (auto& [other, rec] : live)
            if (rec.parent == id) {
                rec.parent = -1;
                touch(other);
            }
    }
    void write_block(int transaction)
    {
        blocks.push_back({transaction, {}});
        for (int id : pending)
            blocks.back().recs[id] = live[id];
        pending.clear();
        dbDirty = false;
    }
    void complete(const std::string& operation)
    {
        if (operation.empty() || (pending.empty() && !dbDirty))
            return;
        ops.push_back(operation);
        undone.push_back(false);
        write_block(static_cast<int>(ops.size()) - 1);
    }
    // Undo takes the last active transaction, redo the first undone one.
    int find(bool status, bool from_end) const
    {
        for (size_t n = 0; n < undone.size(); ++n) {
            const size_t i = from_end ? undone.size() - 1 - n : n;
            if (undone[i] == status)
                return static_cast<int>(i);
        }
        return -1;
    }
    void flip(bool status, bool from_end)
    {
        const int at = find(status, from_end);
        if (at < 0)
            return;
        undone[static_cast<size_t>(at)] = !status;
        // What was left open joins the block before it in the file.
        if (!pending.empty())
            write_block(blocks.empty() ? -1 : blocks.back().transaction);
        live = base;
        for (const Block& block : blocks)
            if (block.transaction < 0 || !undone[static_cast<size_t>(block.transaction)])
                for (const auto& [id, rec] : block.recs)
                    live[id] = rec;
        // The rebuilt state is what the files hold: an operation with no
        // change after it writes nothing.
        dbDirty = false;
    }
    void save()
    {
        // The first save of a session with no transaction yet starts the base.
        if (!baseNamed && ops.empty())
            base = live;
        baseNamed = true;
        pending.clear();
        dbDirty = false;
    }
    // A clean close and a new session: the history starts empty, and
    // nothing loaded is due to the partial file.
    void reload()
    {
        save();
        *this = Model{live, live, {}, {}, {}, {}, false, false};
    }
    std::string operation(bool status, bool from_end) const
    {
        const int at = find(status, from_end);
        return at < 0 ? std::string() : ops[static_cast<size_t>(at)];
    }
};

State state_of(const TVDatabase& db)
{
    State state;
    for (int i = 0; i < db.get_nobjects(); ++i) {
        const auto* n = dynamic_cast<const TVDBTestNode*>(db.get_object_by_index(i));
        state[n->get_id()] = {n->m_name, n->get_parent_id(), n->is_deleted()};
    }
    return state;
}

TEST_F(DatabaseUndoTest, RandomOperationsAgreeWithTheModelAcrossUndoRedoAndReloads)
{
    constexpr unsigned C_Seed = 20240602;
    constexpr int C_Steps = 400;
    std::cout << "seed " << C_Seed << std::endl;
    std::mt19937 random(C_Seed);
    const auto pick = [&random](size_t n) { return random() % n; };

    std::unique_ptr<TVDatabase> db = reopen();
    Model model;
    int redoneUnderNewer = 0;
    for (int step = 0; step < C_Steps; ++step) {
        std::vector<int> ids;
        for (const auto& [id, rec] : model.live)
            if (!rec.dead)
                ids.push_back(id);
        const int any = ids.empty() ? -1 : ids[pick(ids.size())];
        const int other = pick(3) == 0 || ids.empty() ? -1 : ids[pick(ids.size())];
        const std::string name = "n" + std::to_string(step);
        // A third of the operations stay open for complete_operation.
        const std::string operation = pick(3) == 0 ? std::string() : "Op " + name;
        const int kind = ids.empty() ? 0 : static_cast<int>(pick(10));
        SCOPED_TRACE("step " + std::to_string(step) + " kind " + std::to_string(kind));
        int result = TVErrC_ok;
        switch (kind) {
        case 0:
        case 1:
            model.live[db->next_id()] = {name, other, false};
            model.touch(db->next_id());
            model.touch(other);
            model.dbDirty = true; // the next id moved
            result = add_under(*db, name, other, operation);
            break;
        case 2:
            model.live[any].name = name;
            model.touch(any);
            result = rename(*db, any, name, operation);
            break;
        case 3:
            model.remove(any);
            result = db->delete_object(any, operation);
            break;
        case 4: {
            int parent = other;
            for (int up = parent; up >= 0; up = model.live[up].parent)
                if (up == any)
                    parent = -1; // not under itself
            if (model.live[any].parent != parent) {
                model.live[any].parent = parent;
                model.touch(any);
            }
            TVDBObject* above = parent < 0 ? nullptr : db->get_object_by_id(parent);
            result = db->reparent(db->get_object_by_id(any), above, above ? "kids" : "");
            break;
        }
        case 5:
            model.complete("Op " + name);
            result = db->complete_operation("Op " + name);
            break;
        case 6:
            model.flip(false, true);
            result = db->undo();
            break;
        case 7: {
            const int redone = model.find(true, false);
            redoneUnderNewer += redone >= 0 && model.find(false, true) > redone;
            model.flip(true, false);
            result = db->redo();
            break;
        }
        case 8:
            model.save();
            result = db->save(true, false, false);
            break;
        default:
            model.reload();
            result = db->save(true, false, false);
            if (result == TVErrC_ok)
                result = db->unload();
            db = reopen();
        }
        if (kind <= 3)
            model.complete(operation);
        ASSERT_EQ(result, TVErrC_ok) << take_messages();
        ASSERT_EQ(state_of(*db), model.live);
        ASSERT_EQ(db->get_undo_operation(), model.operation(false, true));
        ASSERT_EQ(db->get_redo_operation(), model.operation(true, false));
    }
    // Redo after a newer operation: the transaction replays in its old place.
    EXPECT_GT(redoneUnderNewer, 0);
}

} // namespace
