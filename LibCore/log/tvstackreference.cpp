#include "LibCore/log/tvstackreference.h"

#include <ostream>

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"

TVStackReference::TVStackReference()
{
    set_defaults(true);
}

TVStackReference::TVStackReference(const std::string& name)
{
    set_defaults(true);
    m_name = name;
}

void TVStackReference::set_defaults(bool)
{
    m_name.clear();
    m_calls = 0;
    m_spent = 0.0;
}

void TVStackReference::add(int calls, double seconds)
{
    m_calls += calls;
    m_spent += seconds;
}

double TVStackReference::get_average() const
{
    return m_calls > 0 ? m_spent / m_calls : 0.0;
}

bool TVStackReference::operator==(const TVStackReference& other) const
{
    return m_name == other.m_name && m_calls == other.m_calls && m_spent == other.m_spent;
}

void TVStackReference::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVStackReference Object:\n";
    out << pad << " Name:  " << m_name << "\n";
    out << pad << " Calls: " << m_calls << "\n";
    out << pad << " Spent: " << tv_sprintf("%.5f", m_spent) << "\n";
}

std::ostream& operator<<(std::ostream& out, const TVStackReference& reference)
{
    reference.dump(out, 0);
    return out;
}
