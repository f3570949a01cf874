#ifndef TVSPECPARSER_H
#define TVSPECPARSER_H

// TVSpecParser: reads the text of one object spec into a TVObjectSpec:
// inherited specs, flags, variables, children and scripts. The language
// is given as a grammar in doc/schema-language.md.
//
// Statements are read in order and each changes the spec at once, so a
// text that fails leaves the spec as far as it came. Every failure is a
// warning for the user (tvwarnuser, TVErrC_FileLineInvalid) whose text
// begins "FILE:LINE: error ", FILE being the file the text came from or,
// when there is none, the spec's name; the first ends the parse.
//
// Usage: tokenise the text, then parse once.

#include "LibDatabase/db/tvdbparser.h"

#include <string>

class TVObjectSpec;

class TVSpecParser : public TVDBParser
{
public:
    static const char* const C_VarPromptField; // "prompt"
    static const char* const C_VarInit;        // "init"
    static const char* const C_VarEval;        // "eval"
    static const char* const C_VarAuto;        // "auto"
    static const char* const C_ChildStart;     // "$["
    static const char* const C_ChildEnd;       // "]"
    static const char* const C_ChildArray;     // "[]"
    static const char* const C_ChildMandArray; // "[+]"
    static const char* const C_ChildAddCreate; // "[^]"
    static const char* const C_ChildDefunct;   // "[-]"
    static const char* const C_SpecNameStart;  // "${"
    static const char* const C_SpecNameEnd;    // "}"
    static const char* const C_SpecDefault;    // "="
    static const char* const C_Inherits;       // "inherits"
    static const char* const C_BaseOnly;       // "baseOnly"
    static const char* const C_Defunct;        // "defunct"
    static const char* const C_Private;        // "private"
    static const char* const C_Constrain;      // "constrain"
    static const char* const C_ExportSpecStart; // "{"
    static const char* const C_ExportSpecEnd;  // "}"
    static const char* const C_ScriptStart;    // "@Script"
    static const char* const C_ScriptShortcut; // "@Shortcut"

    // line receives the line of the statement being read, or -1 when the
    // tokens ran out without a failure. A line in a file is line_base plus
    // the line in the text.
    [[nodiscard]] int parse(int& line, const std::string& file_name, int line_base,
                            TVObjectSpec& spec);

    // One statement each, after its keyword; prefix begins every message.
    [[nodiscard]] int parse_private(const std::string& prefix, TVObjectSpec& spec);
    [[nodiscard]] int parse_constrain(const std::string& prefix, TVObjectSpec& spec);
    [[nodiscard]] int parse_var(const std::string& prefix, TVObjectSpec& spec);
    [[nodiscard]] int parse_child(const std::string& prefix, TVObjectSpec& spec);
    [[nodiscard]] int parse_script(const std::string& prefix, TVObjectSpec& spec);

private:
    // "$<NAME>" of a variable the spec has, as private and constrain name one.
    [[nodiscard]] int parse_var_name(const std::string& prefix, const char* keyword,
                                     TVObjectSpec& spec, std::string& tag);
    // A quoted string (the tokeniser's '"', text, '"') into text; found
    // is false when there is no opening quote.
    [[nodiscard]] int parse_quoted(const std::string& prefix, std::string& text, bool& found);
};

#endif // TVSPECPARSER_H
