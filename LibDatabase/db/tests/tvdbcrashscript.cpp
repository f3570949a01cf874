#include "LibDatabase/db/tests/tvdbcrashscript.h"

#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"
#include "TestSupport/tvdbtestnode.h"

#include <cstdlib>
#include <iterator>

namespace {

const char* const C_StepPrefix = "step ";
// A full save after every C_SaveEvery-th step, a snapshot after every
// C_SnapshotEvery-th, so kills land inside them as well.
const int C_SaveEvery = 7;
const int C_SnapshotEvery = 23;
// After every C_RestartEvery-th step the file is saved, closed and opened
// again, as a restart of the program does: the close folds the log, which
// undo replays whole, so the log stays short over a long run.
const int C_RestartEvery = 29;
// Every C_ReplaceEvery-th add goes in through a replace of the whole file
// (as an import or a sync does): the file exported, the node added to a
// copy in memory, and the copy's text put in place of the file.
const int C_ReplaceEvery = 11;
// Every C_UndoEvery-th step is taken back and put again. Prime to the
// cycle of five that picks each step's kind, so adds, changes and deletes
// all get undone.
const int C_UndoEvery = 6;
// Deletes stop below this many live nodes, so there is always a target;
// adds turn into deletes from the upper bound on, so that a long run
// (make crash) keeps its file small.
const size_t C_MinLive = 3;
const size_t C_MaxLive = 40;

enum class Kind { Add, Change, Delete };

Kind kind_of(int step, size_t live)
{
    switch (step % 5) {
    case 2:
        return Kind::Change;
    case 4:
        return Kind::Delete;
    default:
        return live >= C_MaxLive ? Kind::Delete : Kind::Add;
    }
}

TVDBTestNode* live_node(const TVDatabase& db, const std::string& name)
{
    for (int i = 0; i < db.get_nobjects(); ++i) {
        auto* node = dynamic_cast<TVDBTestNode*>(db.get_object_by_index(i));
        if (node != nullptr && !node->is_deleted() && node->m_name == name)
            return node;
    }
    return nullptr;
}

} // namespace

int TVDBCrashScript::next_step(const TVDatabase& db)
{
    const std::string& comment = db.get_comment();
    if (comment.compare(0, std::string(C_StepPrefix).size(), C_StepPrefix) != 0)
        return 0;
    return std::atoi(comment.c_str() + std::string(C_StepPrefix).size());
}

void TVDBCrashScript::model(int step, std::set<std::string>& names)
{
    const std::string tag = std::to_string(step);
    switch (kind_of(step, names.size())) {
    case Kind::Add:
        names.insert("n" + tag);
        break;
    case Kind::Change:
        // The first name in order becomes "c" + step.
        if (!names.empty()) {
            names.erase(names.begin());
            names.insert("c" + tag);
        }
        break;
    case Kind::Delete:
        if (names.size() >= C_MinLive)
            names.erase(std::prev(names.end()));
        break;
    }
}

int TVDBCrashScript::apply(TVDatabase& db, int step)
{
    const std::string tag = std::to_string(step);
    std::set<std::string> live = names(db);
    const std::string operation = "Step " + tag;
    switch (kind_of(step, live.size())) {
    case Kind::Add:
        if (step % C_ReplaceEvery == C_ReplaceEvery - 1) {
            std::string text;
            TV_PASS_ON(db.export_db("", &text, false, ""));
            TVDatabase copy;
            copy.set_app_type(db.get_app_type());
            TV_PASS_ON(copy.load("", false, std::string(), false, false, false));
            TV_PASS_ON(copy.replace_file(text));
            TV_PASS_ON(copy.add_object(new TVDBTestNode("n" + tag), nullptr, "", "", -1, ""));
            copy.set_comment(C_StepPrefix + std::to_string(step + 1));
            TV_PASS_ON(copy.export_db("", &text, false, ""));
            TV_PASS_ON(db.replace_file(text));
            break;
        }
        TV_PASS_ON(db.add_object(new TVDBTestNode("n" + tag), nullptr, "", "", -1, ""));
        break;
    case Kind::Change:
        if (!live.empty()) {
            TVDBTestNode* node = live_node(db, *live.begin());
            node->m_name = "c" + tag;
            node->mark_changed(TVLOCATION, true);
        }
        break;
    case Kind::Delete:
        if (live.size() >= C_MinLive)
            TV_PASS_ON(db.delete_object(live_node(db, *live.rbegin())->get_id(), ""));
        break;
    }
    db.set_comment(C_StepPrefix + std::to_string(step + 1));
    TV_PASS_ON(db.complete_operation(operation));
    if (step % C_UndoEvery == C_UndoEvery - 1) {
        // The step is undone and redone, so kills land in the rebuild from
        // the base and the replay. Undo and redo go as a pair: an undo alone
        // would take the step counter back with the step, and a kill between
        // the two leaves the step absent, which resume finishes.
        TV_PASS_ON(db.undo());
        TV_PASS_ON(db.redo());
    }
    if (step % C_SnapshotEvery == C_SnapshotEvery - 1)
        TV_PASS_ON(db.save_snapshot(false));
    else if (step % C_SaveEvery == C_SaveEvery - 1)
        TV_PASS_ON(db.save(true, false, false));
    if (step % C_RestartEvery == C_RestartEvery - 1) {
        const std::string file = db.get_filename();
        TV_PASS_ON(db.save(true, false, false));
        TV_PASS_ON(db.unload());
        TV_PASS_ON(db.load(file, true, std::string(), true, true, true));
    }
    return TVErrC_ok;
}

int TVDBCrashScript::resume(TVDatabase& db)
{
    while (db.can_redo())
        TV_PASS_ON(db.redo());
    return TVErrC_ok;
}

std::set<std::string> TVDBCrashScript::names(const TVDatabase& db)
{
    std::set<std::string> found;
    for (int i = 0; i < db.get_nobjects(); ++i)
        if (const auto* node = dynamic_cast<const TVDBTestNode*>(db.get_object_by_index(i)))
            if (!node->is_deleted())
                found.insert(node->m_name);
    return found;
}
