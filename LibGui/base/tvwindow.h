#ifndef TVWINDOW_H
#define TVWINDOW_H

// TVWindow: what every window knows without a toolkit: its help page and
// hint, and which platform the program was built for. The platform answers
// are fixed when the program is compiled.

#include <string>

class TVWindow
{
public:
    TVWindow() = default;
    TVWindow(const TVWindow&) = default;
    TVWindow& operator=(const TVWindow&) = default;
    virtual ~TVWindow() = default;

    // The page of the user manual for this window, and a one-line hint.
    void set_manual(const std::string& page, const std::string& summary);
    const std::string& get_manual() const { return m_manual; }
    const std::string& get_summary() const { return m_summary; }

    static bool is_mobile();
    static bool is_ios();
    static bool is_android();
    static bool is_windows();
    static bool is_osx();
    static bool is_linux();
    // Which cloud services this build can use.
    static bool has_icloud();
    static bool has_gdrive();
    static bool has_cloudshare();
    // "iOS", "Android", "Windows", "macOS", "Linux" or "Unknown".
    static std::string platform_name();

protected:
    std::string m_manual;
    std::string m_summary;
};

#endif
