#include "LibDatabase/db/tvqueryparser.h"

#include "LibCore/error/tverror.h"
#include "LibCore/textstr/tvtextstr.h"

const char* const TVQueryParser::C_ExportQueryStart = "<";
const char* const TVQueryParser::C_ExportQueryEnd = ">";
const char* const TVQueryParser::C_FieldToken = "Field";
const char* const TVQueryParser::C_CondToken = "Condition";
const char* const TVQueryParser::C_PromptToken = "Prompt";
const char* const TVQueryParser::C_TitleTag = "Title";
const char* const TVQueryParser::C_FromTag = "From";
const char* const TVQueryParser::C_ValueTag = "Value";
const char* const TVQueryParser::C_RangeTypeTag = "RangeType";
const char* const TVQueryParser::C_RangeStartTag = "RangeStart";
const char* const TVQueryParser::C_RangeEndTag = "RangeEnd";
const char* const TVQueryParser::C_RangeDivTag = "RangeDiv";
const char* const TVQueryParser::C_LessThanTag = "LessThan";
const char* const TVQueryParser::C_GreaterThanTag = "GreaterThan";
const char* const TVQueryParser::C_EqualTag = "Equal";
const char* const TVQueryParser::C_NotEqualTag = "NotEqual";
const char* const TVQueryParser::C_RegexTag = "Regex";
const char* const TVQueryParser::C_MinDate = "MinDate";
const char* const TVQueryParser::C_MaxDate = "MaxDate";
const char* const TVQueryParser::C_IDTag = "ID";
const char* const TVQueryParser::C_SpecTag = "Spec";
const char* const TVQueryParser::C_TextTag = "Text";
const char* const TVQueryParser::C_EpsilonTag = "Epsilon";

#define TV_QUERY_FAIL(...) tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION, __VA_ARGS__)

int TVQueryParser::extract_cond(TagList& tags, const std::string& prefix,
                                const std::string& keyword)
{
    tags.clear();
    const std::string usage =
        tv_sprintf("%s should be defined as %s: Tag=Value,Tag=\"Value\";", keyword.c_str(),
                   keyword.c_str());
    const char* const p = prefix.c_str();
    const char* const u = usage.c_str();
    pop_whitespace();
    if (!match(':'))
        return TV_QUERY_FAIL("%s Missing ':' - %s", p, u);
    pop_whitespace();
    while (is_alphabetic()) {
        const std::string tag = pop_token();
        pop_whitespace();
        if (!match(C_Equals))
            return TV_QUERY_FAIL("%s Unknown '%s' - Should be '=' sign - %s", p,
                                 first_token().c_str(), u);
        pop_whitespace();
        std::string value;
        if (match(C_Quotes)) {
            // An empty string gives no content token, only its two quotes.
            if (!match(C_Quotes)) {
                value = pop_token();
                if (!match(C_Quotes))
                    return TV_QUERY_FAIL("%s Missing quote after '%s' - %s", p, value.c_str(), u);
            }
        } else {
            // Plain text keeps its inner blanks; the blanks at its ends go.
            while (!empty() && first_token() != "," && first_token() != ";")
                value += pop_token();
            value = tv_clean_string(value, false, false, true, true);
        }
        tags.emplace_back(tag, value);
        pop_whitespace();
        if (match(C_EndLine))
            return TVErrC_ok;
        if (!match(','))
            return TV_QUERY_FAIL("%s Unknown '%s' - Should be ';' or ',' - %s", p,
                                 first_token().c_str(), u);
        pop_whitespace();
        if (!is_alphabetic())
            return TV_QUERY_FAIL("%s Unknown '%s' - Should be a new tag - %s", p,
                                 first_token().c_str(), u);
    }
    pop_whitespace();
    if (match(C_EndLine))
        return TVErrC_ok;
    return TV_QUERY_FAIL("%s Unknown '%s' - Should be ';' or ',' - %s", p, first_token().c_str(),
                         u);
}

std::string TVQueryParser::get_val(const std::string& tag, const TagList& tags)
{
    for (const auto& [name, value] : tags)
        if (name == tag)
            return value;
    return std::string();
}

std::string TVQueryParser::join(const TagList& tags)
{
    std::string text;
    for (const auto& [name, value] : tags) {
        if (!text.empty())
            text += ',';
        text += name + "=" + value;
    }
    return text;
}
