#ifndef TVMESSAGEBOX_H
#define TVMESSAGEBOX_H

// The button strings of message boxes, without a toolkit. A button string
// is a list of fields separated by '#': the label first, then options:
// "Default" (the default button), "Escape" (takes the Escape key),
// "Tooltip:<text>" and "Shortcut:<key>". An empty string is no button.

#include <string>

struct TVMessageBox {
    static const char* const C_Ok;     // "Ok#Default"
    static const char* const C_Cancel; // "Cancel#Escape"
    static const char* const C_Yes;    // "Yes#Default#Shortcut:y"
    static const char* const C_No;     // "No#Escape#Shortcut:n"
    static const char* const C_One;    // "One#Shortcut:o"
    static const char* const C_All;    // "All#Shortcut:a"
    static const char* const C_Delete; // "Delete#Shortcut:d"
    static const char* const C_Save;   // "Save#Default#Shortcut:s"
    static const char* const C_Quit;   // "Quit#Shortcut:q"

    static const char C_Separator = '#';
    static const char* const C_KeyDefault;  // "Default"
    static const char* const C_KeyEscape;   // "Escape"
    static const char* const C_KeyTooltip;  // "Tooltip:"
    static const char* const C_KeyShortcut; // "Shortcut:"
    // The label of the button that shows the details instead of closing.
    static const char* const C_Details; // "Details"

    // One button string from its parts; empty tooltip and shortcut are left
    // out. A label with '#' in it can't be expressed.
    static std::string construct_key(const std::string& label, bool isDefault, bool isEscape,
                                     const std::string& tooltip, const std::string& shortcut);

    // A button string taken apart. An empty string gives an empty label.
    struct Button {
        std::string label;
        bool isDefault = false;
        bool isEscape = false;
        std::string tooltip;
        std::string shortcut;
    };
    static Button parse_key(const std::string& key);
};

#endif
