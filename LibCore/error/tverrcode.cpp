#include "LibCore/error/tverrcode.h"

#include <algorithm>

#include "LibCore/log/tvdump.h"

TVErrCode::TVErrCode() : code(-1) {}

TVErrCode::TVErrCode(int c, const std::string& n, const std::string& d)
    : code(c), name(n), description(d)
{
}

TVErrCode::~TVErrCode() = default;

void TVErrCode::print(FILE* out, int indent) const
{
    const std::string pad = TVDump::indent_string(std::clamp(indent, 0, 100));
    std::fprintf(out, "%sTVErrCode Object:\n", pad.c_str());
    std::fprintf(out, "%s code = %d\n", pad.c_str(), code);
    std::fprintf(out, "%s name = %s\n", pad.c_str(), name.c_str());
    std::fprintf(out, "%s description = %s\n", pad.c_str(), description.c_str());
}

bool TVErrCode::operator==(const TVErrCode& other) const
{
    return code == other.code && name == other.name && description == other.description;
}
