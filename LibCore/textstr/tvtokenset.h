#ifndef TVTOKENSET_H
#define TVTOKENSET_H

// TVTokenSet: a queue of tokens, each a byte string with the line it stood
// on, filled at the back by a scanner and read from the front by a parser.
// The parsers derive from it.
//
// A token is a word, a number, a single character or the whitespace marker,
// a single blank. On an empty set the reading calls give "" (or -1 for
// get_line_no) and the popping calls give "" and change nothing.

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <string>

class TVTokenSet
{
public:
    static const std::string C_Whitespace;

    TVTokenSet() = default;
    virtual ~TVTokenSet() = default;

    TVTokenSet(const TVTokenSet&) = default;
    TVTokenSet& operator=(const TVTokenSet&) = default;

    void push_token(const std::string& text, int line);
    void push_token(char ch, int line);

    // Push the run of letters, digits and "_" (no digits for push_alpha)
    // that begins at start, upper-cased if asked; give the position behind
    // it. Nothing is pushed when the run is empty.
    int push_alphanum(const std::string& text, int start, bool upper, int line);
    int push_alpha(const std::string& text, int start, bool upper, int line);
    // Digits, optionally followed by "." and more digits ("12", "3.25");
    // a "." with no digit after it is left for the caller.
    int push_numeric(const std::string& text, int start, int line);
    // Skips blanks, tabs and line feeds (counting each line feed into line)
    // and pushes one whitespace marker if it skipped anything.
    int push_whitespace(const std::string& text, int start, int& line);

    int size() const { return static_cast<int>(m_token.size()); }
    bool empty() const { return m_token.empty(); }
    // Line of the front token, or -1 when empty.
    int get_line_no() const;
    const std::string& first_token() const;
    const std::string& last_token() const;
    // The front token begins with a letter or "_" / with a digit.
    bool is_alphabetic() const;
    bool is_numeric() const;

    std::string pop_token();
    std::string pop_last_token();
    // Remove the run of whitespace markers at the front / back and give
    // them joined ("" if there were none).
    std::string pop_whitespace();
    std::string pop_last_whitespace();
    void remove_all();

    // If the front token is text / ch, remove it and give true.
    bool match(const std::string& text);
    bool match(char ch);

    void dump(std::ostream& out, int indent) const;

protected:
    std::deque<std::string> m_token;
    std::deque<int32_t> m_line;   // parallel to m_token
};

#endif // TVTOKENSET_H
