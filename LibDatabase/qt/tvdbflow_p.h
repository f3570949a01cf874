#ifndef TVDBFLOW_P_H
#define TVDBFLOW_P_H

// What the load, unload and import flows share: a fallible engine call
// turned into a value whatever the error action (an error may throw), and
// the label a button string answers with.

#include "LibCore/error/tverror.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibGui/base/tvmessagebox.h"

#include <string>

namespace tvdbflow {

template <class F>
int call(F&& f)
{
    try {
        return f();
    } catch (const TVErrDetails&) {
        return tverrorvalue();
    }
}

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
