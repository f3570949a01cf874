#include <cerrno>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "AppTarvelloMaths/main/appmaths.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdebug.h"
#include "LibGui/qt/tvqtapp.h"

namespace {
// Without a display the toolkit would abort before --help or --version
// could answer; draw off screen instead. Without a runtime folder (a
// session with no login manager, as root) the toolkit makes its own and
// says so on every start; make the same folder quietly.
void prepare_environment()
{
    if (std::getenv("QT_QPA_PLATFORM") == nullptr && std::getenv("DISPLAY") == nullptr &&
        std::getenv("WAYLAND_DISPLAY") == nullptr)
        setenv("QT_QPA_PLATFORM", "minimal", 0);
    if (std::getenv("XDG_RUNTIME_DIR") == nullptr) {
        const std::string dir = "/tmp/runtime-" + std::to_string(::getuid());
        struct stat st;
        if ((::mkdir(dir.c_str(), 0700) == 0 || errno == EEXIST) && ::lstat(dir.c_str(), &st) == 0 &&
            S_ISDIR(st.st_mode) && st.st_uid == ::getuid() && (st.st_mode & 077) == 0)
            setenv("XDG_RUNTIME_DIR", dir.c_str(), 0);
    }
}
} // namespace

int main(int argc, char** argv)
{
    prepare_environment();
    int handled = 0;
    {
        TVQtApp app(argc, argv);
        AppMaths maths(argc, argv, app);
        int result = TVErrC_ok;
        try {
            result = maths.TVApplicationQt::start();
            if (istvwarn(result))
                tvsysinfo_append(TVLOCATION, "");
        } catch (TVErrDetails&) {
            result = get_tverror()->get_value();
            tvsysinfo_append(TVLOCATION, "");
        }
        handled = tvhandle_error(result, TVSevError);
    }
    // The user learns of failures from the dialog and the log; the exit
    // code stays 0 on every path that isn't an uncaught exception.
    if (handled < 2)
        TVDebug::release();
    return TVErrC_ok;
}
