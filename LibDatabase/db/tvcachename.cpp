#include "LibDatabase/db/tvcachename.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"

#include <QStandardPaths>
#include <QtGlobal>

namespace {
std::string cache_dir()
{
    if (const TVApplication* app = tvapplication())
        return app->get_cache_dir();
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation).toStdString();
}

#if defined(Q_OS_MACOS) || defined(Q_OS_IOS)
constexpr bool C_CacheSideFiles = true;
#else
constexpr bool C_CacheSideFiles = false;
#endif

#if defined(Q_OS_IOS)
constexpr bool C_Desktop = false;
#else
constexpr bool C_Desktop = true;
#endif
} // namespace

std::string get_cache_name(const std::string& path, bool force)
{
    if (!C_CacheSideFiles && !force)
        return path;
    std::string name = cache_dir() + "/";
    if (C_Desktop) {
        std::string separators;
        for (size_t i = 0; i + 1 < path.size(); ++i)
            if (path[i] == '/' || path[i] == '\\')
                separators += path[i];
        if (!separators.empty())
            name += separators + "/";
    }
    return name + tv_basename(path);
}
