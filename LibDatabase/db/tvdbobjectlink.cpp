#include "LibDatabase/db/tvdbobjectlink.h"
#include "LibCore/log/tvdump.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <istream>
#include <ostream>

void TVDBObjectLink::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDBObjectLink: " << m_tag << " -> " << m_id << '\n';
}

std::ostream& operator<<(std::ostream& out, const TVDBObjectLink& link)
{
    return out << link.m_tag << ':' << link.m_id << ':';
}

std::istream& operator>>(std::istream& in, TVDBObjectLink& link)
{
    std::string line;
    std::getline(in, line);
    const size_t first = line.find(':');
    link.m_tag = line.substr(0, first);
    link.m_id = -1;
    if (first == std::string::npos)
        return in;
    const size_t second = line.find(':', first + 1);
    const std::string digits = line.substr(first + 1, second == std::string::npos
                                                          ? std::string::npos
                                                          : second - first - 1);
    if (digits.empty())
        return in;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(digits.c_str(), &end, 10);
    if (*end == '\0' && errno == 0 && value >= INT_MIN && value <= INT_MAX)
        link.m_id = static_cast<int>(value);
    return in;
}
