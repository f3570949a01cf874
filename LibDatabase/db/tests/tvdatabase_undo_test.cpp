// Editing, undo and redo: each operation undone and redone by the replay,
// on disk as in memory; a random run against a plain model of the replay;
// and the edit lock.

#include "LibDatabase/db/tests/tvdbfiletest.h"

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
        {"add a child", "Add e",
         [](TVDatabase& db) { return add_under(db, "e", 2, "Add e"); }},
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

TEST_F(DatabaseUndoTest, RedoAfterANewOperationReplaysInItsOldPlace)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(rename(*db, 1, "x", "Rename x"), TVErrC_ok);
    ASSERT_EQ(db->undo(), TVErrC_ok);
    ASSERT_EQ(rename(*db, 1, "y", "Rename y"), TVErrC_ok);
    EXPECT_EQ(db->get_redo_operation(), "Rename x");
    ASSERT_EQ(db->redo(), TVErrC_ok);
    // "Rename x" replays before the later "Rename y", which wins.
    EXPECT_EQ(node(*db, 1)->m_name, "y");
    EXPECT_EQ(db->get_undo_operation(), "Rename y");
    ASSERT_EQ(db->undo(), TVErrC_ok);
    EXPECT_EQ(node(*db, 1)->m_name, "x");
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

// ---- The random run against a model -----------------------------------------------------
//
// The model holds what the replay means: a base state, the blocks of the
// partial file (each the whole records of what an operation touched, under
// its transaction), and the statuses. Undo and redo rebuild the live state
// from those, so every odd consequence of the replay shows here too.

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

std::ostream& operator<<(std::ostream& out, const Rec& r)
{
    return out << r.name << "<" << r.parent << (r.dead ? " D" : "") << ">";
}

class Model
{
public:
    State live;

    void add(int id, const std::string& name, int parent, const std::string& operation)
    {
        live[id] = {name, parent, false};
        touch(id);
        touch(parent);
        m_dbDirty = true; // the next id moved
        finish(operation);
    }
    void rename(int id, const std::string& name, const std::string& operation)
    {
        live[id].name = name;
        touch(id);
        finish(operation);
    }
    void remove(int id, const std::string& operation)
    {
        extract(id);
        for (auto& [other, rec] : live)
            if (rec.parent == id) {
                rec.parent = -1;
                touch(other);
            }
        finish(operation);
    }
    void move(int id, int parent)
    {
        if (live[id].parent != parent) {
            live[id].parent = parent;
            touch(id);
        }
    }
    void complete(const std::string& operation)
    {
        if (m_pending.empty() && !m_dbDirty)
            return;
        m_undone.push_back(false);
        m_ops.push_back(operation);
        write_block(static_cast<int>(m_ops.size()) - 1);
    }
    // The last active one goes; the first undone one comes back.
    void undo() { flip(false, true); }
    void redo() { flip(true, false); }
    void save()
    {
        if (!m_baseNamed) {
            m_baseNamed = true;
            if (m_ops.empty())
                m_base = live;
        }
        m_pending.clear();
        m_dbDirty = false;
    }
    // A clean close and a new session: the history starts empty.
    void reload()
    {
        save();
        m_base = live;
        m_blocks.clear();
        m_ops.clear();
        m_undone.clear();
        m_baseNamed = false;
        m_dbDirty = true;
    }
    std::string undo_operation() const
    {
        for (size_t i = m_ops.size(); i-- > 0;)
            if (!m_undone[i])
                return m_ops[i];
        return std::string();
    }
    std::string redo_operation() const
    {
        for (size_t i = 0; i < m_ops.size(); ++i)
            if (m_undone[i])
                return m_ops[i];
        return std::string();
    }
    // The transaction redo would bring back is older than one still active.
    bool redo_after_newer() const
    {
        for (size_t i = 0; i < m_ops.size(); ++i)
            if (m_undone[i])
                return std::find(m_undone.begin() + static_cast<long>(i), m_undone.end(),
                                 false) != m_undone.end();
        return false;
    }

private:
    struct Block {
        int transaction; // -1: before any
        State recs;
    };

    void touch(int id)
    {
        if (id < 0)
            m_dbDirty = true;
        else
            m_pending.insert(id);
    }
    void extract(int id)
    {
        for (auto& [child, rec] : live)
            if (rec.parent == id && !rec.dead)
                extract(child);
        touch(live[id].parent);
        live[id].dead = true;
        touch(id);
    }
    void finish(const std::string& operation)
    {
        if (!operation.empty())
            complete(operation);
    }
    void write_block(int transaction)
    {
        Block block{transaction, {}};
        for (int id : m_pending)
            block.recs[id] = live[id];
        m_blocks.push_back(block);
        m_pending.clear();
        m_dbDirty = false;
    }
    void flip(bool from, bool to)
    {
        const bool undoing = !from;
        for (size_t n = 0; n < m_undone.size(); ++n) {
            const size_t i = undoing ? m_undone.size() - 1 - n : n;
            if (m_undone[i] != from)
                continue;
            m_undone[i] = to;
            // What was left open joins the block before it in the file.
            if (!m_pending.empty())
                write_block(m_blocks.empty() ? -1 : m_blocks.back().transaction);
            live = m_base;
            for (const Block& block : m_blocks)
                if (block.transaction < 0 || !m_undone[static_cast<size_t>(block.transaction)])
                    for (const auto& [id, rec] : block.recs)
                        live[id] = rec;
            m_pending.clear();
            m_dbDirty = true;
            return;
        }
    }

    State m_base;
    std::vector<Block> m_blocks;
    std::vector<std::string> m_ops;
    std::vector<bool> m_undone;
    std::set<int> m_pending;
    bool m_dbDirty = false;
    bool m_baseNamed = true; // create saved once
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
    const auto pick = [&random](int n) {
        return static_cast<int>(random() % static_cast<unsigned>(n));
    };

    std::unique_ptr<TVDatabase> db = reopen();
    Model model;
    int counter = 0;
    int redoneAfterNewer = 0;
    int reloads = 0;
    const auto live_ids = [&model]() {
        std::vector<int> ids;
        for (const auto& [id, rec] : model.live)
            if (!rec.dead)
                ids.push_back(id);
        return ids;
    };
    for (int step = 0; step < C_Steps; ++step) {
        const std::vector<int> ids = live_ids();
        const int any = ids.empty() ? -1 : ids[static_cast<size_t>(pick(static_cast<int>(ids.size())))];
        const std::string name = "n" + std::to_string(++counter);
        // A third of the operations stay open for complete_operation.
        const std::string operation = pick(3) == 0 ? std::string() : "Op " + name;
        const int kind = ids.empty() ? 0 : pick(10);
        std::string what;
        int result = TVErrC_ok;
        if (kind <= 1) {
            what = "add";
            const int parent = pick(2) == 0 ? -1 : any;
            const int id = db->next_id();
            result = add_under(*db, name, parent, operation);
            model.add(id, name, parent, operation);
        } else if (kind == 2) {
            what = "rename";
            result = rename(*db, any, name, operation);
            model.rename(any, name, operation);
        } else if (kind == 3) {
            what = "delete";
            result = db->delete_object(any, operation);
            model.remove(any, operation);
        } else if (kind == 4) {
            what = "reparent";
            int parent = pick(3) == 0 ? -1 : ids[static_cast<size_t>(pick(static_cast<int>(ids.size())))];
            // Not under itself.
            for (int up = parent; up >= 0; up = model.live[up].parent)
                if (up == any)
                    parent = -1;
            TVDBObject* above = parent < 0 ? nullptr : db->get_object_by_id(parent);
            result = db->reparent(db->get_object_by_id(any), above, above ? "kids" : "");
            model.move(any, parent);
        } else if (kind == 5) {
            what = "complete";
            result = db->complete_operation("Op " + name);
            model.complete("Op " + name);
        } else if (kind == 6) {
            what = "undo";
            result = db->undo();
            model.undo();
        } else if (kind == 7) {
            what = "redo";
            redoneAfterNewer += model.redo_after_newer() ? 1 : 0;
            result = db->redo();
            model.redo();
        } else if (kind == 8) {
            what = "save";
            result = db->save(true, false, false);
            model.save();
        } else {
            what = "reload";
            ++reloads;
            result = db->save(true, false, false);
            if (result == TVErrC_ok)
                result = db->unload();
            db = reopen();
            model.reload();
        }
        SCOPED_TRACE("step " + std::to_string(step) + ": " + what + " " + std::to_string(any));
        ASSERT_EQ(result, TVErrC_ok) << take_messages();
        ASSERT_EQ(state_of(*db), model.live);
        ASSERT_EQ(db->get_undo_operation(), model.undo_operation());
        ASSERT_EQ(db->get_redo_operation(), model.redo_operation());
    }
    EXPECT_GT(redoneAfterNewer, 0);
    EXPECT_GT(reloads, 0);
}

} // namespace
