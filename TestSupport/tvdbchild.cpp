#include "TestSupport/tvdbchild.h"

#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"
#include "LibDatabase/db/tvdatabase.h"

#include <cstdio>

int TVDBChild::fail(const char* what)
{
    std::printf("fail %s\n", what);
    TVError* error = get_tverror();
    for (size_t i = 0; i < error->error_count(); ++i)
        std::printf("  %s\n", error->error_at(i)->get_details(TVAspectSystem).c_str());
    std::fflush(stdout);
    return 3;
}

int TVDBChild::run(const std::string& file, const std::function<int()>& setup,
                   const std::function<int(TVDatabase&)>& body)
{
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);
    try {
        if (setup) {
            const int status = setup();
            if (status != 0)
                return status;
        }
        TVDatabase db;
        db.set_app_type("TestApp");
        if (db.load(file, true, std::string(), true, true, true) != TVErrC_ok)
            return fail("load");
        return body(db);
    } catch (const TVErrDetails&) {
        return fail("thrown");
    }
}
