// The child of the crash test: "tvdbcrashchild FILE" loads FILE (the
// application folders come from the environment), finishes a step that a
// kill cut between its undo and redo, prints "start N" with the step it
// resumes at, then runs the script, printing "done N" once step N
// returned, until it is killed or has done C_MaxSteps. A failure prints
// "fail" and the messages, and exits 3.

#include "LibDatabase/db/tests/tvdbcrashscript.h"
#include "LibDatabase/db/tvdatabase.h"
#include "TestSupport/tvdbchild.h"

#include <cstdio>

namespace {

const int C_MaxSteps = 400;

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    return TVDBChild::run(argv[1], {}, [](TVDatabase& db) {
        if (TVDBCrashScript::resume(db) != TVErrC_ok)
            return TVDBChild::fail("resume");
        const int first = TVDBCrashScript::next_step(db);
        std::printf("start %d\n", first);
        std::fflush(stdout);
        for (int step = first; step < first + C_MaxSteps; ++step) {
            if (TVDBCrashScript::apply(db, step) != TVErrC_ok)
                return TVDBChild::fail("step");
            // Only now may the parent count on it.
            std::printf("done %d\n", step);
            std::fflush(stdout);
        }
        return 0;
    });
}
