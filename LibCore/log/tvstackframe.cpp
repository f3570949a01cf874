#include "LibCore/log/tvstackframe.h"

#include <ostream>

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"

TVStackFrame::TVStackFrame()
{
    set_defaults(true);
}

TVStackFrame::TVStackFrame(const std::string& name, const TVDate& start, bool quiet)
{
    set_defaults(true);
    m_name = name;
    m_start = start;
    m_quiet = quiet;
}

void TVStackFrame::set_defaults(bool)
{
    m_name.clear();
    m_start.set_invalid();
    m_end.set_invalid();
    m_quiet = false;
    m_count = 0;
    m_total = 0.0;
    m_self = 0.0;
    m_calls.clear();
    m_callers.clear();
}

void TVStackFrame::stop(const TVDate& end)
{
    m_end = end;
    m_count = 1;
    m_total = (m_end - m_start).get_as_dseconds();
    double inCalls = 0.0;
    for (const TVStackReference& call : m_calls)
        inCalls += call.get_spent();
    m_self = m_total - inCalls;
}

void TVStackFrame::add_call(const TVStackFrame& callee)
{
    add_edge(m_calls, callee.m_name, 1, callee.m_total);
}

void TVStackFrame::add_caller(const std::string& caller)
{
    add_edge(m_callers, caller, 1, m_total);
}

void TVStackFrame::merge(const TVStackFrame& other)
{
    m_count += other.m_count;
    m_total += other.m_total;
    m_self += other.m_self;
    // The sum spans many calls; the last one's end is the one worth keeping.
    if (other.m_end.is_ok())
        m_end = other.m_end;
    for (const TVStackReference& call : other.m_calls)
        add_edge(m_calls, call.get_name(), call.get_calls(), call.get_spent());
    for (const TVStackReference& caller : other.m_callers)
        add_edge(m_callers, caller.get_name(), caller.get_calls(), caller.get_spent());
}

void TVStackFrame::add_edge(std::vector<TVStackReference>& edges, const std::string& name, int calls,
                            double seconds)
{
    // A function calls few distinct others, so a scan beats a map here.
    for (TVStackReference& edge : edges) {
        if (edge.get_name() == name) {
            edge.add(calls, seconds);
            return;
        }
    }
    edges.emplace_back(name);
    edges.back().add(calls, seconds);
}

bool TVStackFrame::operator==(const TVStackFrame& other) const
{
    return m_name == other.m_name && m_start == other.m_start && m_end == other.m_end &&
           m_quiet == other.m_quiet && m_count == other.m_count && m_total == other.m_total &&
           m_self == other.m_self && m_calls == other.m_calls && m_callers == other.m_callers;
}

void TVStackFrame::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVStackFrame Object:\n";
    out << pad << " Name:  " << m_name << "\n";
    out << pad << " Calls: " << m_count << "\n";
    out << pad << " Spent: " << tv_sprintf("%.5f", m_total) << "\n";
    if (!m_callers.empty()) {
        out << pad << " Callers:\n";
        for (const TVStackReference& caller : m_callers)
            caller.dump(out, indent + 1);
    }
    if (!m_calls.empty()) {
        out << pad << " Own calls:\n";
        for (const TVStackReference& call : m_calls)
            call.dump(out, indent + 1);
    }
}

std::ostream& operator<<(std::ostream& out, const TVStackFrame& frame)
{
    frame.dump(out, 0);
    return out;
}
