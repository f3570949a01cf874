#ifndef TVDBCRASHSCRIPT_H
#define TVDBCRASHSCRIPT_H

// The script of the crash test: operation number step, done on a database
// of TVDBTestNode objects (apply) and on a plain set of names (model), the
// two kept in step by choosing every target by name. Each operation also
// writes "step N+1" into the database's comment in the same block, so a
// database on disk says how far the script got. Some steps are undone and
// redone as soon as they are done.

#include <set>
#include <string>

class TVDatabase;

class TVDBCrashScript
{
public:
    // The step a database's comment says comes next; 0 for a fresh one.
    static int next_step(const TVDatabase& db);
    // Does step on db, ending in complete_operation (then an undo and a
    // redo, for some steps), and sometimes a full save, a snapshot, or a
    // save, close and reopen after it. TVErrC_ok once all of it is on the
    // disk.
    [[nodiscard]] static int apply(TVDatabase& db, int step);
    // Redoes what a kill left undone: the second half of an undone and
    // redone step. The step then stands whole.
    [[nodiscard]] static int resume(TVDatabase& db);
    // The live names after step, from the names before it.
    static void model(int step, std::set<std::string>& names);
    // The live names of the script's nodes in db.
    static std::set<std::string> names(const TVDatabase& db);
};

#endif // TVDBCRASHSCRIPT_H
