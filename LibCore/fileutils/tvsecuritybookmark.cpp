#include "LibCore/fileutils/tvsecuritybookmark.h"

void tv_store_security_bookmark(const std::string&, const std::string&)
{
}

std::string tv_access_security_bookmark(const std::string&)
{
    return std::string();
}
