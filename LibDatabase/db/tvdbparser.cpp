#include "LibDatabase/db/tvdbparser.h"

#include "LibCore/error/tverror.h"

#include <cctype>

const char* const TVDBParser::C_VarStart = "$<";
const char* const TVDBParser::C_VarAssoc = ":";
const char* const TVDBParser::C_VarEnd = ">";
const char* const TVDBParser::C_VarModifier = "%";
const char* const TVDBParser::C_VarParent = "^";
const char* const TVDBParser::C_ExprStart = "$=(";
const char* const TVDBParser::C_ExprEnd = ")";
const char* const TVDBParser::C_BlockStart = ">\"";
const char* const TVDBParser::C_BlockEnd = "\"<";
const std::string TVDBParser::C_ExportSpecSep(72, '#');

namespace {
constexpr char C_RawQuote = '`';

bool is_word_char(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}
} // namespace

int TVDBParser::tokenise(const std::string& text)
{
    remove_all();
    m_stringEnd = -1;
    int line = 1;
    const int size = static_cast<int>(text.size());
    int pos = 0;
    while (pos < size) {
        const char c = text[static_cast<size_t>(pos)];
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            // push_whitespace knows no carriage return: Windows files end lines in one.
            if (c == '\r') {
                if (last_token() != C_Whitespace)
                    push_token(C_Whitespace, line);
                ++pos;
            } else {
                pos = push_whitespace(text, pos, line);
            }
        } else if (c == C_Comment) {
            push_token(C_Comment, line);
            size_t end = text.find('\n', static_cast<size_t>(pos));
            if (end == std::string::npos)
                end = text.size();
            push_token(text.substr(static_cast<size_t>(pos) + 1, end - static_cast<size_t>(pos) - 1),
                       line);
            pos = static_cast<int>(end);
            if (pos < size) {
                ++pos;
                ++line;
            }
        } else if (c == C_Quotes) {
            pos = read_string(text, pos + 1, line);
        } else if (c == '>' && pos + 1 < size && text[static_cast<size_t>(pos) + 1] == C_Quotes) {
            pos = read_block(text, pos + 2, line);
        } else if (c == C_RawQuote) {
            pos = read_raw(text, pos + 1, line);
        } else if (is_word_char(c)) {
            pos = push_alphanum(text, pos, false, line);
        } else {
            push_token(c, line);
            ++pos;
        }
    }
    pop_last_whitespace();
    return TVErrC_ok;
}

int TVDBParser::read_string(const std::string& text, int pos, int& line)
{
    std::string content;
    int firstLine = line;
    // A string right behind the last one's closing quote goes on with it.
    if (m_stringEnd == pos - 1 && size() >= 3 && last_token() == std::string(1, C_Quotes)) {
        pop_last_token();
        firstLine = m_line.back();
        content = pop_last_token();
    } else {
        push_token(C_Quotes, line);
    }
    const int size = static_cast<int>(text.size());
    bool closed = false;
    while (pos < size) {
        const char c = text[static_cast<size_t>(pos++)];
        if (c == C_Quotes) {
            closed = true;
            break;
        }
        if (c == '\n')
            ++line;
        if (c == C_Escape && pos < size) {
            const char next = text[static_cast<size_t>(pos++)];
            if (next == '\n')
                ++line;
            content += next == C_Newline ? '\n' : next;
        } else {
            content += c;
        }
    }
    push_token(content, firstLine);
    if (closed) {
        push_token(C_Quotes, line);
        m_stringEnd = pos;
    }
    return pos;
}

int TVDBParser::read_block(const std::string& text, int pos, int& line)
{
    push_token(C_Quotes, line);
    if (pos < static_cast<int>(text.size()) && text[static_cast<size_t>(pos)] == '\n') {
        ++pos;
        ++line;
    }
    size_t end = static_cast<size_t>(pos);
    for (;;) {
        end = text.find(C_BlockEnd, end);
        if (end == std::string::npos || end == 0 || text[end - 1] != C_Escape)
            break;
        ++end;
    }
    return push_raw(text, pos, end, std::string(C_BlockEnd).size(), line);
}

int TVDBParser::read_raw(const std::string& text, int pos, int& line)
{
    push_token(C_Quotes, line);
    return push_raw(text, pos, text.find(C_RawQuote, static_cast<size_t>(pos)), 1, line);
}

int TVDBParser::push_raw(const std::string& text, int pos, size_t end, size_t mark, int& line)
{
    const int firstLine = line;
    const size_t stop = end == std::string::npos ? text.size() : end;
    const std::string content = text.substr(static_cast<size_t>(pos), stop - static_cast<size_t>(pos));
    for (char c : content)
        if (c == '\n')
            ++line;
    push_token(content, firstLine);
    if (end == std::string::npos)
        return static_cast<int>(text.size());
    push_token(C_Quotes, line);
    return static_cast<int>(end + mark);
}

bool TVDBParser::is_valid_name(const std::string& name)
{
    if (name.empty())
        return false;
    for (char c : name)
        if (!is_word_char(c))
            return false;
    return true;
}

bool TVDBParser::is_valid_name()
{
    pop_whitespace();
    return !empty() && is_valid_name(first_token());
}

bool TVDBParser::peek_symbol(const std::string& symbol) const
{
    std::string spelled;
    for (size_t i = 0; i < m_token.size() && spelled.size() < symbol.size(); ++i)
        spelled += m_token[i];
    return !symbol.empty() && spelled == symbol;
}

bool TVDBParser::match_symbol(const std::string& symbol)
{
    if (!peek_symbol(symbol))
        return false;
    size_t taken = 0;
    while (taken < symbol.size())
        taken += pop_token().size();
    return true;
}

bool TVDBParser::match_keyword(const std::string& word)
{
    if (!match(word))
        return false;
    pop_whitespace();
    return true;
}
