#include "LibObject/object/tvsignal.h"

#include <algorithm>
#include <ostream>
#include <string>

void TVSignal::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    out << pad << "TVSignal " << static_cast<const void*>(this) << '\n';
}
