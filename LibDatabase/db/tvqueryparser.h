#ifndef TVQUERYPARSER_H
#define TVQUERYPARSER_H

// TVQueryParser: the tokens of a query's text (the tokeniser is
// TVDBParser's) and the reading of one statement's tags. The statements
// themselves are TVQuery's to build (TVQuery::parse); the language is
// given as a grammar in doc/query-language.md.
//
//   statement  KEYWORD ":" pair { "," pair } ";"
//   pair       TAG "=" ( "string" | `string` | text up to "," or ";" )
//
// A tag the statement doesn't know is no error: it becomes a qualifier.

#include "LibDatabase/db/tvdbparser.h"

#include <string>
#include <utility>
#include <vector>

class TVQueryParser : public TVDBParser
{
public:
    using TagList = std::vector<std::pair<std::string, std::string>>;

    static const char* const C_ExportQueryStart; // "<"
    static const char* const C_ExportQueryEnd;   // ">"
    static const char* const C_FieldToken;       // "Field"
    static const char* const C_CondToken;        // "Condition"
    static const char* const C_PromptToken;      // "Prompt"
    static const char* const C_TitleTag;         // "Title"
    static const char* const C_FromTag;          // "From"
    static const char* const C_ValueTag;         // "Value"
    static const char* const C_RangeTypeTag;     // "RangeType"
    static const char* const C_RangeStartTag;    // "RangeStart"
    static const char* const C_RangeEndTag;      // "RangeEnd"
    static const char* const C_RangeDivTag;      // "RangeDiv"
    static const char* const C_LessThanTag;      // "LessThan"
    static const char* const C_GreaterThanTag;   // "GreaterThan"
    static const char* const C_EqualTag;         // "Equal"
    static const char* const C_NotEqualTag;      // "NotEqual"
    static const char* const C_RegexTag;         // "Regex"
    static const char* const C_MinDate;          // "MinDate"
    static const char* const C_MaxDate;          // "MaxDate"
    static const char* const C_IDTag;            // "ID"
    static const char* const C_SpecTag;          // "Spec"
    static const char* const C_TextTag;          // "Text"
    static const char* const C_EpsilonTag;       // "Epsilon"

    // Reads the rest of a statement after its keyword, up to and with its
    // ";", into tags. A fault is a warning for the user
    // (TVErrC_FileLineInvalid) led by prefix that ends the statement.
    [[nodiscard]] int extract_cond(TagList& tags, const std::string& prefix,
                                   const std::string& keyword);

    // The value of tag in tags; "" when absent.
    static std::string get_val(const std::string& tag, const TagList& tags);
    // The pairs as "tag=value" joined by ",": the qualifier list.
    static std::string join(const TagList& tags);
};

#endif // TVQUERYPARSER_H
