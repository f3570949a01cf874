#include "LibCore/log/tvdump.h"

#include <algorithm>
#include <ostream>

#include "LibCore/textstr/tvtextstr.h"

const int TVDump::m_spaces = 4;
const int TVDump::m_lineWidth = 80;
std::vector<std::string> TVDump::m_leader = {"impl", "d", "this"};

namespace {
// A name longer than this doesn't push the value column of its neighbours
// further right; its own value simply starts later.
const size_t C_MaxNameColumn = 24;

const char* const C_Separator = " = ";
} // namespace

TVDump::TVDump(const std::string& className, std::ostream& out, int indent)
    : m_className(className), m_out(out), m_indent(indent), m_headingWritten(false)
{
}

TVDump::~TVDump()
{
    write();
}

std::string TVDump::indent_string(int indent)
{
    return std::string(static_cast<size_t>(indent < 0 ? 0 : indent) * m_spaces, ' ');
}

void TVDump::add_leader(const std::string& leader)
{
    if (!leader.empty() && std::find(m_leader.begin(), m_leader.end(), leader) == m_leader.end())
        m_leader.push_back(leader);
}

std::string TVDump::format_name(const std::string& name, int index)
{
    std::string result = name;
    for (const std::string& leader : m_leader) {
        if (result.compare(0, leader.size(), leader) != 0)
            continue;
        // Only a whole leader followed by member access: "d->m_x", not "data".
        const std::string rest = result.substr(leader.size());
        if (rest.compare(0, 2, "->") == 0 && rest.size() > 2) {
            result = rest.substr(2);
            break;
        }
        if (rest.compare(0, 1, ".") == 0 && rest.size() > 1) {
            result = rest.substr(1);
            break;
        }
    }
    if (index != -1)
        result += "[" + std::to_string(index) + "]";
    return result;
}

void TVDump::add_text(const std::string& name, const std::string& text, int index)
{
    m_entries.push_back(Entry{format_name(name, index), text, false});
}

void TVDump::add_block(const std::string& name, const std::string& text, int index)
{
    m_entries.push_back(Entry{format_name(name, index), text, true});
}

void TVDump::write_heading()
{
    m_out << indent_string(m_indent) << m_className << " Object:\n";
}

void TVDump::write()
{
    if (!m_headingWritten) {
        write_heading();
        m_headingWritten = true;
    }
    size_t nameWidth = 0;
    for (const Entry& entry : m_entries) {
        if (!entry.m_block)
            nameWidth = std::max(nameWidth, std::min(entry.m_name.size(), C_MaxNameColumn));
    }
    for (const Entry& entry : m_entries)
        write_entry(entry, nameWidth);
    m_entries.clear();
    m_out.flush();
}

void TVDump::write_entry(const Entry& entry, size_t nameWidth)
{
    // Fields sit one blank in from the heading.
    const std::string lead = indent_string(m_indent) + " ";
    if (entry.m_block) {
        m_out << lead << entry.m_name << ":\n" << entry.m_text;
        if (!entry.m_text.empty() && entry.m_text.back() != '\n')
            m_out << "\n";
        return;
    }

    std::string head = lead + entry.m_name;
    if (entry.m_name.size() < nameWidth)
        head.append(nameWidth - entry.m_name.size(), ' ');
    head += C_Separator;
    const int column = static_cast<int>(head.size());
    const std::string under(head.size(), ' ');

    // Each line of the value is wrapped on its own; every line after the
    // first starts under the value.
    size_t pos = 0;
    bool first = true;
    for (;;) {
        const size_t end = entry.m_text.find('\n', pos);
        const std::string part =
            entry.m_text.substr(pos, end == std::string::npos ? std::string::npos : end - pos);
        m_out << tv_line_wrap((first ? head : under) + part, m_lineWidth, column, false) << "\n";
        first = false;
        if (end == std::string::npos)
            break;
        pos = end + 1;
    }
}
