#include "LibGui/base/tvmessagebox.h"

#include <vector>

#include "LibCore/textstr/tvtextstr.h"

const char* const TVMessageBox::C_Ok = "Ok#Default";
const char* const TVMessageBox::C_Cancel = "Cancel#Escape";
const char* const TVMessageBox::C_Yes = "Yes#Default#Shortcut:y";
const char* const TVMessageBox::C_No = "No#Escape#Shortcut:n";
const char* const TVMessageBox::C_One = "One#Shortcut:o";
const char* const TVMessageBox::C_All = "All#Shortcut:a";
const char* const TVMessageBox::C_Delete = "Delete#Shortcut:d";
const char* const TVMessageBox::C_Save = "Save#Default#Shortcut:s";
const char* const TVMessageBox::C_Quit = "Quit#Shortcut:q";
const char* const TVMessageBox::C_KeyDefault = "Default";
const char* const TVMessageBox::C_KeyEscape = "Escape";
const char* const TVMessageBox::C_KeyTooltip = "Tooltip:";
const char* const TVMessageBox::C_KeyShortcut = "Shortcut:";
const char* const TVMessageBox::C_Details = "Details";

std::string TVMessageBox::construct_key(const std::string& label, bool isDefault, bool isEscape,
                                        const std::string& tooltip, const std::string& shortcut)
{
    std::string key = label;
    if (isDefault)
        key += C_Separator + std::string(C_KeyDefault);
    if (isEscape)
        key += C_Separator + std::string(C_KeyEscape);
    if (!tooltip.empty())
        key += C_Separator + std::string(C_KeyTooltip) + tooltip;
    if (!shortcut.empty())
        key += C_Separator + std::string(C_KeyShortcut) + shortcut;
    return key;
}

TVMessageBox::Button TVMessageBox::parse_key(const std::string& key)
{
    Button button;
    const std::vector<std::string> fields = tv_tokenise(key, C_Separator);
    if (fields.empty())
        return button;
    button.label = fields[0];
    const std::string tooltip = C_KeyTooltip;
    const std::string shortcut = C_KeyShortcut;
    for (size_t i = 1; i < fields.size(); ++i) {
        const std::string& field = fields[i];
        if (field == C_KeyDefault)
            button.isDefault = true;
        else if (field == C_KeyEscape)
            button.isEscape = true;
        else if (field.compare(0, tooltip.size(), tooltip) == 0)
            button.tooltip = field.substr(tooltip.size());
        else if (field.compare(0, shortcut.size(), shortcut) == 0)
            button.shortcut = field.substr(shortcut.size());
        // Unknown options are ignored, so older builds read newer strings.
    }
    return button;
}
