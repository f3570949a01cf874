#ifndef TVDBSCRIPTHOST_H
#define TVDBSCRIPTHOST_H

// TVDBScriptHost: what a script reaches outside the database: the user's
// answers, the window's actions and the desktop's browser. The engine
// knows no toolkit; the program's windows install a host of their own
// (set_instance). Without one, or for a run that may not prompt, a prompt
// answers its default and the window and browser calls fail, so that a
// script run by a command or a trigger never waits on a person.

#include <string>
#include <vector>

class TVDBScriptHost
{
public:
    virtual ~TVDBScriptHost() = default;

    // The answer; empty when the user cancels.
    virtual std::string prompt_text(const std::string& title, const std::string& initial);
    virtual std::string prompt_choice(const std::string& title, const std::string& text,
                                      const std::vector<std::string>& choices, bool editable);
    // Runs a window action with its arguments; false with message set when
    // there is no such action.
    virtual bool gui_call(const std::string& action, const std::vector<std::string>& arguments,
                          std::string& message);
    virtual bool open_url(const std::string& url);

    // The host scripts use; never null (a default host when none is set).
    // The caller keeps ownership of what it installs; null puts the default
    // back.
    static TVDBScriptHost& instance();
    static void set_instance(TVDBScriptHost* host);
};

#endif // TVDBSCRIPTHOST_H
