#include "LibCore/textstr/tvtokenset.h"
#include "LibCore/log/tvdump.h"

#include <cctype>
#include <ostream>

const std::string TVTokenSet::C_Whitespace(" ");

namespace {

const std::string C_NoToken;

bool is_digit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool is_alpha(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool in_range(const std::string& text, int pos)
{
    return pos >= 0 && static_cast<size_t>(pos) < text.size();
}

} // namespace

void TVTokenSet::push_token(const std::string& text, int line)
{
    m_token.push_back(text);
    m_line.push_back(line);
}

void TVTokenSet::push_token(char ch, int line)
{
    push_token(std::string(1, ch), line);
}

namespace {

template <class Accept>
int scan_run(const std::string& text, int start, Accept accept)
{
    int pos = start;
    while (in_range(text, pos) && accept(text[static_cast<size_t>(pos)]))
        ++pos;
    return pos;
}

} // namespace

int TVTokenSet::push_alphanum(const std::string& text, int start, bool upper, int line)
{
    int end = scan_run(text, start, [](char c) { return is_alpha(c) || is_digit(c) || c == '_'; });
    if (end == start)
        return end;
    std::string word = text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start));
    if (upper)
        for (char& c : word)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    push_token(word, line);
    return end;
}

int TVTokenSet::push_alpha(const std::string& text, int start, bool upper, int line)
{
    int end = scan_run(text, start, [](char c) { return is_alpha(c) || c == '_'; });
    if (end == start)
        return end;
    std::string word = text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start));
    if (upper)
        for (char& c : word)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    push_token(word, line);
    return end;
}

int TVTokenSet::push_numeric(const std::string& text, int start, int line)
{
    int end = scan_run(text, start, is_digit);
    if (end == start)
        return end;
    // A fraction only counts if a digit follows the point: "3." leaves the
    // point for the caller (it may end a sentence or be a range "3..5").
    if (in_range(text, end + 1) && text[static_cast<size_t>(end)] == '.' &&
        is_digit(text[static_cast<size_t>(end + 1)]))
        end = scan_run(text, end + 1, is_digit);
    push_token(text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start)), line);
    return end;
}

int TVTokenSet::push_whitespace(const std::string& text, int start, int& line)
{
    const int firstLine = line;
    int pos = start;
    while (in_range(text, pos)) {
        char c = text[static_cast<size_t>(pos)];
        if (c == '\n')
            ++line;
        else if (c != ' ' && c != '\t')
            break;
        ++pos;
    }
    // The marker belongs to the line on which the run began.
    if (pos > start)
        push_token(C_Whitespace, firstLine);
    return pos;
}

int TVTokenSet::get_line_no() const
{
    return m_line.empty() ? -1 : m_line.front();
}

const std::string& TVTokenSet::first_token() const
{
    return m_token.empty() ? C_NoToken : m_token.front();
}

const std::string& TVTokenSet::last_token() const
{
    return m_token.empty() ? C_NoToken : m_token.back();
}

bool TVTokenSet::is_alphabetic() const
{
    const std::string& t = first_token();
    return !t.empty() && (is_alpha(t[0]) || t[0] == '_');
}

bool TVTokenSet::is_numeric() const
{
    const std::string& t = first_token();
    return !t.empty() && is_digit(t[0]);
}

std::string TVTokenSet::pop_token()
{
    if (m_token.empty())
        return std::string();
    std::string out = std::move(m_token.front());
    m_token.pop_front();
    m_line.pop_front();
    return out;
}

std::string TVTokenSet::pop_last_token()
{
    if (m_token.empty())
        return std::string();
    std::string out = std::move(m_token.back());
    m_token.pop_back();
    m_line.pop_back();
    return out;
}

std::string TVTokenSet::pop_whitespace()
{
    std::string out;
    while (!m_token.empty() && m_token.front() == C_Whitespace)
        out += pop_token();
    return out;
}

std::string TVTokenSet::pop_last_whitespace()
{
    std::string out;
    while (!m_token.empty() && m_token.back() == C_Whitespace)
        out += pop_last_token();
    return out;
}

void TVTokenSet::remove_all()
{
    m_token.clear();
    m_line.clear();
}

bool TVTokenSet::match(const std::string& text)
{
    if (m_token.empty() || m_token.front() != text)
        return false;
    pop_token();
    return true;
}

bool TVTokenSet::match(char ch)
{
    if (m_token.empty() || m_token.front().size() != 1 || m_token.front()[0] != ch)
        return false;
    pop_token();
    return true;
}

void TVTokenSet::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVTokenSet\n";
    for (size_t i = 0; i < m_token.size(); ++i)
        out << pad << "    m_token[" << i << "] = \"" << m_token[i] << "\" line " << m_line[i]
            << '\n';
}
