// The child of the crash test: "tvdbcrashchild FILE" loads FILE (the
// application folders come from the environment), finishes a step that a
// kill cut between its undo and redo, prints "start N" with the step it
// resumes at, then runs the script, printing "done N" once step N
// returned, until it is killed or has done C_MaxSteps. A failure prints
// "fail" and the messages, and exits 3.

#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tests/tvdbcrashscript.h"
#include "LibDatabase/db/tvdatabase.h"

#include <cstdio>
#include <string>

namespace {

const int C_MaxSteps = 400;

int fail(const char* what)
{
    std::printf("fail %s\n", what);
    TVError* error = get_tverror();
    for (size_t i = 0; i < error->error_count(); ++i)
        std::printf("  %s\n", error->error_at(i)->get_details(TVAspectSystem).c_str());
    std::fflush(stdout);
    return 3;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    try {
        TVDatabase db;
        db.set_app_type("TestApp");
        if (db.load(argv[1], true, std::string(), true, true, true) != TVErrC_ok)
            return fail("load");
        if (TVDBCrashScript::resume(db) != TVErrC_ok)
            return fail("resume");
        const int first = TVDBCrashScript::next_step(db);
        std::printf("start %d\n", first);
        std::fflush(stdout);
        for (int step = first; step < first + C_MaxSteps; ++step) {
            if (TVDBCrashScript::apply(db, step) != TVErrC_ok)
                return fail("step");
            // Only now may the parent count on it.
            std::printf("done %d\n", step);
            std::fflush(stdout);
        }
    } catch (const TVErrDetails&) {
        return fail("thrown");
    }
    return 0;
}
