#ifndef TVDBFLOW_P_H
#define TVDBFLOW_P_H

// What the load, unload and import flows share: the label a button string
// answers with, and the word of the default file. (Their fallible calls go
// through LibGui/qt/tvslotcall.h, as every window's do.)

#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/base/tvmessagebox.h"

#include <string>

namespace tvdbflow {

inline std::string label(const char* key)
{
    return TVMessageBox::parse_key(key).label;
}

// The word of the manager's default file; without a manager, the
// application's name.
inline std::string default_word(const TVDBManagerQt* manager)
{
    return manager != nullptr ? manager->get_ext_word() : std::string();
}

} // namespace tvdbflow

#endif // TVDBFLOW_P_H
