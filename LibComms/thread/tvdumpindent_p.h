#ifndef TVDUMPINDENT_P_H
#define TVDUMPINDENT_P_H

// Leading blanks of a dump line at that level, four to a level; shared by
// the dumps of this folder until the common dump helper takes over.

#include <string>

inline std::string tv_dump_indent(int indent)
{
    return std::string(static_cast<size_t>(indent < 0 ? 0 : indent) * 4, ' ');
}

#endif
