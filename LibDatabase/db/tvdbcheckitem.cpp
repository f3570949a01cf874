#include "LibDatabase/db/tvdbcheckitem.h"

#include <ostream>

void TVDBCheckItem::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent), ' ') << "TVDBCheckItem " << m_id << " code "
        << m_errorCode << " \"" << m_shortMessage << "\": " << m_message << "\n";
}
