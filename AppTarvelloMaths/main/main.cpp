#include <cstdlib>

#include "AppTarvelloMaths/main/appmaths.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdebug.h"
#include "LibGui/qt/tvqtapp.h"

namespace {
// Without a display the toolkit would abort before --help or --version
// could answer; draw off screen instead.
void choose_platform()
{
    if (std::getenv("QT_QPA_PLATFORM") == nullptr && std::getenv("DISPLAY") == nullptr &&
        std::getenv("WAYLAND_DISPLAY") == nullptr)
        setenv("QT_QPA_PLATFORM", "minimal", 0);
}
} // namespace

int main(int argc, char** argv)
{
    choose_platform();
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
