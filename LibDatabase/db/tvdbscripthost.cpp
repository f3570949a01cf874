#include "LibDatabase/db/tvdbscripthost.h"

namespace {
TVDBScriptHost s_default;
TVDBScriptHost* s_host = nullptr;
} // namespace

std::string TVDBScriptHost::prompt_text(const std::string&, const std::string& initial)
{
    return initial;
}

std::string TVDBScriptHost::prompt_choice(const std::string&, const std::string&,
                                          const std::vector<std::string>& choices, bool)
{
    return choices.empty() ? std::string() : choices.front();
}

bool TVDBScriptHost::gui_call(const std::string& action, const std::vector<std::string>&,
                              std::string& message)
{
    message = "There is no window to run " + action + ".";
    return false;
}

bool TVDBScriptHost::open_url(const std::string&)
{
    return false;
}

TVDBScriptHost& TVDBScriptHost::instance()
{
    return s_host != nullptr ? *s_host : s_default;
}

void TVDBScriptHost::set_instance(TVDBScriptHost* host)
{
    s_host = host;
}
