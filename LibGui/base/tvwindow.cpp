#include "LibGui/base/tvwindow.h"

#if defined(__APPLE__)
#include <TargetConditionals.h>
#endif

void TVWindow::set_manual(const std::string& page, const std::string& summary)
{
    m_manual = page;
    m_summary = summary;
}

bool TVWindow::is_ios()
{
#if defined(__APPLE__) && TARGET_OS_IPHONE
    return true;
#else
    return false;
#endif
}

bool TVWindow::is_android()
{
#if defined(__ANDROID__)
    return true;
#else
    return false;
#endif
}

bool TVWindow::is_windows()
{
#if defined(_WIN32)
    return true;
#else
    return false;
#endif
}

bool TVWindow::is_osx()
{
#if defined(__APPLE__) && !TARGET_OS_IPHONE
    return true;
#else
    return false;
#endif
}

bool TVWindow::is_linux()
{
#if defined(__linux__) && !defined(__ANDROID__)
    return true;
#else
    return false;
#endif
}

bool TVWindow::is_mobile() { return is_ios() || is_android(); }

// iCloud needs Apple's frameworks; the shared folder and Google Drive go
// through plain files and the network everywhere.
bool TVWindow::has_icloud() { return is_ios() || is_osx(); }
bool TVWindow::has_gdrive() { return true; }
bool TVWindow::has_cloudshare() { return true; }

std::string TVWindow::platform_name()
{
    if (is_ios())
        return "iOS";
    if (is_android())
        return "Android";
    if (is_windows())
        return "Windows";
    if (is_osx())
        return "macOS";
    if (is_linux())
        return "Linux";
    return "Unknown";
}
