#ifndef TVDBPARSER_H
#define TVDBPARSER_H

// TVDBParser: the tokeniser that the spec language (TVSpecParser) and the
// query language share. tokenise fills the token set (TVTokenSet) from a
// text, each token with the line it began on, lines counted from 1:
//
//   blanks, tabs, newlines  one whitespace marker (" ") per run
//   # comment               "#", then the rest of the line as one token;
//                           the newline goes with it
//   "string"                '"', the content, '"'; \" \n \\ are escapes, a
//                           backslash before anything else is dropped. A
//                           string right behind a closing '"' continues it:
//                           "ab""cd" reads as the one string abcd
//   >" block "<             '"', the raw text up to the first "< that no
//                           backslash precedes, '"'; a newline right after
//                           >" is dropped
//   `param`                 '"', the raw text up to the next '`', '"'
//   letters, digits, "_"    one word
//   anything else           a token of that one character
//
// An unterminated string or block gives its content and no closing '"',
// which the parser reports. Trailing whitespace is dropped.

#include "LibCore/textstr/tvtokenset.h"

#include <cstddef>
#include <string>

class TVDBParser : public TVTokenSet
{
public:
    static constexpr char C_Quotes = '"';
    static constexpr char C_Escape = '\\';
    static constexpr char C_Newline = 'n';
    static constexpr char C_Comment = '#';
    static constexpr char C_Equals = '=';
    static constexpr char C_OpenBracket = '(';
    static constexpr char C_CloseBracket = ')';
    static constexpr char C_EndLine = ';';
    static const char* const C_VarStart;      // "$<"
    static const char* const C_VarAssoc;      // ":"
    static const char* const C_VarEnd;        // ">"
    static const char* const C_VarModifier;   // "%"
    static const char* const C_VarParent;     // "^"
    static const char* const C_ExprStart;     // "$=("
    static const char* const C_ExprEnd;       // ")"
    static const char* const C_BlockStart;    // >"
    static const char* const C_BlockEnd;      // "<
    static const std::string C_ExportSpecSep; // 72 "#"

    // Replaces the tokens by those of text. Always TVErrC_ok.
    int tokenise(const std::string& text);

    // Every character a letter, a digit or "_" (an empty name is not valid).
    static bool is_valid_name(const std::string& name);
    // Pops leading whitespace and tests the next token; false when none.
    bool is_valid_name();

    // Symbols such as "$<" or "[+]" stand in the set as one token per
    // character ("@Script" as "@" and the word): when the front tokens
    // spell symbol exactly, they are removed and the answer is true; else
    // nothing changes.
    bool match_symbol(const std::string& symbol);
    bool peek_symbol(const std::string& symbol) const;
    // As match (a whole token), then pops the whitespace behind it.
    bool match_keyword(const std::string& word);

private:
    int read_string(const std::string& text, int pos, int& line);
    int read_block(const std::string& text, int pos, int& line);
    int read_raw(const std::string& text, int pos, int& line);
    // The raw text from pos to end (npos: to the end of text) as one token,
    // then the closing '"' when end was found; gives the position behind
    // its mark of mark characters.
    int push_raw(const std::string& text, int pos, size_t end, size_t mark, int& line);
    // The position just behind the closing '"' of the last string, or -1:
    // a string that opens there is joined on.
    int m_stringEnd = -1;
};

#endif // TVDBPARSER_H
