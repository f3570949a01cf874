#include "LibDatabase/db/tvspecparser.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvobjectspecchild.h"
#include "LibDatabase/db/tvvarspec.h"
#include "LibObject/object/tvtrail.h"

#include <cctype>

const char* const TVSpecParser::C_VarPromptField = "prompt";
const char* const TVSpecParser::C_VarInit = "init";
const char* const TVSpecParser::C_VarEval = "eval";
const char* const TVSpecParser::C_VarAuto = "auto";
const char* const TVSpecParser::C_ChildStart = "$[";
const char* const TVSpecParser::C_ChildEnd = "]";
const char* const TVSpecParser::C_ChildArray = "[]";
const char* const TVSpecParser::C_ChildMandArray = "[+]";
const char* const TVSpecParser::C_ChildAddCreate = "[^]";
const char* const TVSpecParser::C_ChildDefunct = "[-]";
const char* const TVSpecParser::C_SpecNameStart = "${";
const char* const TVSpecParser::C_SpecNameEnd = "}";
const char* const TVSpecParser::C_SpecDefault = "=";
const char* const TVSpecParser::C_Inherits = "inherits";
const char* const TVSpecParser::C_BaseOnly = "baseOnly";
const char* const TVSpecParser::C_Defunct = "defunct";
const char* const TVSpecParser::C_Private = "private";
const char* const TVSpecParser::C_Constrain = "constrain";
const char* const TVSpecParser::C_ExportSpecStart = "{";
const char* const TVSpecParser::C_ExportSpecEnd = "}";
const char* const TVSpecParser::C_ScriptStart = "@Script";
const char* const TVSpecParser::C_ScriptShortcut = "@Shortcut";

namespace {

#define TV_SPEC_FAIL(...) tvwarnuser(TVErrC_FileLineInvalid, TVLOCATION, __VA_ARGS__)

std::string var_usage()
{
    return tv_sprintf("Variable definitions are of the form \"%sVARIABLE[:ASSOC]%s %c VALUE%c\" "
                      "(where CHILD and ASSOC may contain letters, numbers or \"_\")",
                      TVDBParser::C_VarStart, TVDBParser::C_VarEnd, TVDBParser::C_Equals,
                      TVDBParser::C_EndLine);
}

std::string child_usage()
{
    using P = TVSpecParser;
    return tv_sprintf("Child definitions are of the form \"%sCHILD%s %c %sSPEC%s%c\" or "
                      "\"%sCHILD%s %c %sSPEC%sDEFAULT%s%c\"(where CHILD, SPEC and DEFAULT may "
                      "contain letters, numbers or \"_\")",
                      P::C_ChildStart, P::C_ChildEnd, P::C_Equals, P::C_SpecNameStart,
                      P::C_SpecNameEnd, P::C_EndLine, P::C_ChildStart, P::C_ChildEnd, P::C_Equals,
                      P::C_SpecNameStart, P::C_SpecDefault, P::C_SpecNameEnd, P::C_EndLine);
}

} // namespace

int TVSpecParser::parse(int& line, const std::string& file_name, int line_base,
                        TVObjectSpec& spec)
{
    try {
        line = -1;
        for (;;) {
            pop_whitespace();
            if (empty())
                break;
            line = file_name.empty() ? get_line_no() : line_base + get_line_no();
            const std::string prefix =
                tv_sprintf("%s:%d: error ", file_name.empty() ? spec.get_name().c_str()
                                                              : file_name.c_str(),
                           line);
            if (match(C_Comment)) {
                pop_token();
                pop_whitespace();
                (void)match(C_EndLine);
                continue;
            }
            if (match_keyword(C_Inherits)) {
                if (!is_valid_name())
                    return TV_SPEC_FAIL("%s The %s keyword should be followed by the name of an "
                                        "object spec.",
                                        prefix.c_str(), C_Inherits);
                spec.add_inherited(pop_token());
            } else if (match_keyword(C_BaseOnly)) {
                spec.set_baseonly(true);
            } else if (match_keyword(C_Defunct)) {
                spec.set_defunct(true);
            } else if (match_keyword(C_Private)) {
                TV_PASS_ON(parse_private(prefix, spec));
            } else if (match_keyword(C_Constrain)) {
                TV_PASS_ON(parse_constrain(prefix, spec));
            } else if (match_symbol(C_VarStart)) {
                TV_PASS_ON(parse_var(prefix, spec));
            } else if (match_symbol(C_ChildStart)) {
                TV_PASS_ON(parse_child(prefix, spec));
            } else if (match_symbol(C_ScriptStart)) {
                TV_PASS_ON(parse_script(prefix, spec));
            } else {
                return TV_SPEC_FAIL("%s Unknown symbol \"%s\"", prefix.c_str(),
                                    first_token().c_str());
            }
            pop_whitespace();
            if (!match(C_EndLine))
                return TV_SPEC_FAIL("%s Unterminated line (must end with \"%c\").", prefix.c_str(),
                                    C_EndLine);
        }
        line = -1;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVSpecParser::parse_var_name(const std::string& prefix, const char* keyword,
                                 TVObjectSpec& spec, std::string& tag)
{
    pop_whitespace();
    if (!match_symbol(C_VarStart))
        return TV_SPEC_FAIL("%s %s should be followed by a variable name.", prefix.c_str(),
                            keyword);
    if (!is_valid_name())
        return TV_SPEC_FAIL("%s Invalid variable name.", prefix.c_str());
    tag = pop_token();
    pop_whitespace();
    if (!match_symbol(C_VarEnd))
        return TV_SPEC_FAIL("%s Unterminated variable name.", prefix.c_str());
    if (spec.get_varspec_by_name(tag) == nullptr)
        return TV_SPEC_FAIL("%s Could not find the variable %s.", prefix.c_str(), tag.c_str());
    return TVErrC_ok;
}

int TVSpecParser::parse_private(const std::string& prefix, TVObjectSpec& spec)
{
    for (;;) {
        std::string tag;
        const int result = parse_var_name(prefix, C_Private, spec, tag);
        if (istvwarn(result))
            return result;
        spec.get_varspec_by_name(tag)->set_private(true);
        pop_whitespace();
        // The end of the statement is parse's to take.
        if (empty() || first_token() == std::string(1, C_EndLine))
            return TVErrC_ok;
        if (!match(','))
            return TV_SPEC_FAIL("%s missing end of line.", prefix.c_str());
    }
}

int TVSpecParser::parse_quoted(const std::string& prefix, std::string& text, bool& found)
{
    pop_whitespace();
    found = match(C_Quotes);
    if (!found)
        return TVErrC_ok;
    text = pop_token();
    if (!match(C_Quotes))
        return TV_SPEC_FAIL("%s invalid assignment - Missing \"%c\"", prefix.c_str(), C_Quotes);
    return TVErrC_ok;
}

int TVSpecParser::parse_constrain(const std::string& prefix, TVObjectSpec& spec)
{
    std::string tag;
    int result = parse_var_name(prefix, C_Constrain, spec, tag);
    if (istvwarn(result))
        return result;
    TVVarSpec* var = spec.get_varspec_by_name(tag);
    if (var->is_sysvalue())
        return TV_SPEC_FAIL("%s The variable %s is a system value and cannot have constraints.",
                            prefix.c_str(), tag.c_str());
    pop_whitespace();
    const std::string type = first_token();
    const int constraint = TVVarSpec::str_to_constraint(type);
    if (constraint < 0)
        return TV_SPEC_FAIL("%s Unknown constrain type %s", prefix.c_str(), type.c_str());
    pop_token();
    pop_whitespace();
    std::string param;
    if (!empty() && first_token() != std::string(1, C_EndLine)) {
        bool found = false;
        result = parse_quoted(prefix, param, found);
        if (istvwarn(result))
            return result;
        if (!found)
            return TV_SPEC_FAIL("%s invalid assignment - Missing \"%c\"", prefix.c_str(),
                                C_Quotes);
    }
    var->set_constraint(constraint);
    var->set_constraintparam(param);
    return TVErrC_ok;
}

int TVSpecParser::parse_var(const std::string& prefix, TVObjectSpec& spec)
{
    const std::string usage = "\n" + var_usage();
    if (!is_valid_name())
        return TV_SPEC_FAIL("%s Invalid variable name.%s", prefix.c_str(), usage.c_str());
    const std::string name = pop_token();
    std::string tag = name;
    if (match_symbol(C_VarAssoc)) {
        if (!is_valid_name())
            return TV_SPEC_FAIL("%s Invalid associative name.%s", prefix.c_str(), usage.c_str());
        tag += C_VarAssoc + pop_token();
    }
    pop_whitespace();
    if (!match_symbol(C_VarEnd))
        return TV_SPEC_FAIL("%s Unterminated variable name.%s", prefix.c_str(), usage.c_str());

    TVVarSpec* var = spec.get_varspec_by_name(tag);
    if (var == nullptr) {
        var = new TVVarSpec(tag);
        if (tag != name)
            if (const TVVarSpec* plain = spec.get_varspec_by_name(name))
                var->set_sysvalue(plain->is_sysvalue());
        spec.add_varspec(var);
    }

    pop_whitespace();
    if (!match(C_Equals))
        return TV_SPEC_FAIL("%s missing variable assignment.%s", prefix.c_str(), usage.c_str());
    pop_whitespace();
    const std::string kind = first_token();
    if (kind != C_VarPromptField && kind != C_VarInit && kind != C_VarEval && kind != C_VarAuto)
        return TV_SPEC_FAIL("%s invalid value \"%s\" after assignment.", prefix.c_str(),
                            kind.c_str());
    pop_token();
    pop_whitespace();
    if (!match(C_OpenBracket))
        return TV_SPEC_FAIL("%s invalid assignment - Missing \"%c\"", prefix.c_str(),
                            C_OpenBracket);
    std::string value;
    bool found = false;
    const int result = parse_quoted(prefix, value, found);
    if (istvwarn(result))
        return result;
    pop_whitespace();
    if (!match(C_CloseBracket))
        return TV_SPEC_FAIL("%s invalid assignment - Missing \"%c\"", prefix.c_str(),
                            C_CloseBracket);

    if (kind == C_VarPromptField) {
        var->set_derived(false);
        var->set_prompt(true);
    } else if (kind == C_VarEval) {
        var->set_derived(true);
        var->set_spec(value);
    } else if (kind == C_VarAuto) {
        var->set_auto(true);
        var->set_spec(value);
    } else {
        var->set_derived(false);
        var->set_spec(value);
    }
    return TVErrC_ok;
}

int TVSpecParser::parse_child(const std::string& prefix, TVObjectSpec& spec)
{
    const std::string usage = "\n" + child_usage();
    const int lineNo = get_line_no();
    if (!is_valid_name())
        return TV_SPEC_FAIL("%s Invalid child name.%s", prefix.c_str(), usage.c_str());
    const std::string memberTag = pop_token();
    pop_whitespace();
    if (!match_symbol(C_ChildEnd))
        return TV_SPEC_FAIL("%s Unterminated child name.%s", prefix.c_str(), usage.c_str());
    pop_whitespace();
    if (!match(C_Equals))
        return TV_SPEC_FAIL("%s Unknown symbol \"%s\".%s", prefix.c_str(), first_token().c_str(),
                            usage.c_str());
    pop_whitespace();
    if (!match_symbol(C_SpecNameStart))
        return TV_SPEC_FAIL("%s Missing spec name for child (\"%s\" instead).%s", prefix.c_str(),
                            first_token().c_str(), usage.c_str());
    if (!is_valid_name())
        return TV_SPEC_FAIL("%s Invalid spec name.%s", prefix.c_str(), usage.c_str());
    const std::string specName = pop_token();
    std::string defaultName;
    pop_whitespace();
    if (match_symbol(C_SpecDefault)) {
        if (!is_valid_name())
            return TV_SPEC_FAIL("%s Invalid default spec name.%s", prefix.c_str(), usage.c_str());
        defaultName = pop_token();
        pop_whitespace();
    }
    if (!match_symbol(C_SpecNameEnd))
        return TV_SPEC_FAIL("%s Unterminated spec name.%s", prefix.c_str(), usage.c_str());
    pop_whitespace();
    bool array = false;
    bool mandatory = true;
    bool addCreate = false;
    if (match_symbol(C_ChildMandArray)) {
        array = true;
    } else if (match_symbol(C_ChildAddCreate)) {
        array = true;
        mandatory = false;
        addCreate = true;
    } else if (match_symbol(C_ChildDefunct)) {
        mandatory = false;
    } else if (match_symbol(C_ChildArray)) {
        array = true;
        mandatory = false;
    }
    spec.add_child(new TVObjectSpecChild(specName, defaultName, memberTag, mandatory, array,
                                         addCreate, lineNo));
    return TVErrC_ok;
}

int TVSpecParser::parse_script(const std::string& prefix, TVObjectSpec& spec)
{
    pop_whitespace();
    if (empty() || !std::isalpha(static_cast<unsigned char>(first_token()[0])))
        return TV_SPEC_FAIL("%s %s should be followed by the script name.", prefix.c_str(),
                            C_ScriptStart);
    const std::string name = pop_token();
    std::string shortcut;
    pop_whitespace();
    if (match_symbol(C_ScriptShortcut)) {
        pop_whitespace();
        shortcut = pop_token();
        pop_whitespace();
    }
    if (!match(C_Quotes))
        return TV_SPEC_FAIL("%s %s should be followed by NAME %s SCRIPT %s", prefix.c_str(),
                            C_ScriptStart, C_BlockStart, C_BlockEnd);
    const std::string text = pop_token();
    if (!match(C_Quotes))
        return TV_SPEC_FAIL("%s %s should be followed by %s SCRIPT %s", prefix.c_str(),
                            C_ScriptStart, C_BlockStart, C_BlockEnd);
    if (TVDBScript* existing = spec.get_own_script(name)) {
        existing->set_script(text);
        existing->set_shortcut(shortcut);
    } else {
        spec.add_script(new TVDBScript(name, text, shortcut));
    }
    return TVErrC_ok;
}
