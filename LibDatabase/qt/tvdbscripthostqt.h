#ifndef TVDBSCRIPTHOSTQT_H
#define TVDBSCRIPTHOSTQT_H

// TVDBScriptHostQt: what a script reaches through a database's window:
// prompts as dialogs over the window, the window's menu actions by their
// object name or text (without "&"), and the desktop's browser. The window
// installs it for as long as it lives.

#include "LibDatabase/db/tvdbscripthost.h"

class QWidget;

class TVDBScriptHostQt : public TVDBScriptHost
{
public:
    explicit TVDBScriptHostQt(QWidget& window);
    ~TVDBScriptHostQt() override;
    TVDBScriptHostQt(const TVDBScriptHostQt&) = delete;
    TVDBScriptHostQt& operator=(const TVDBScriptHostQt&) = delete;

    std::string prompt_text(const std::string& title, const std::string& initial) override;
    std::string prompt_choice(const std::string& title, const std::string& text,
                              const std::vector<std::string>& choices, bool editable) override;
    bool gui_call(const std::string& action, const std::vector<std::string>& arguments,
                  std::string& message) override;
    bool open_url(const std::string& url) override;

private:
    QWidget& m_window;
};

#endif // TVDBSCRIPTHOSTQT_H
