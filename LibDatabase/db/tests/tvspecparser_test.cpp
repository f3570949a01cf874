// The spec language: texts and the specs they give, each message of the
// parser from a text that provokes it (with its line), the tokeniser's
// strings and blocks, and the export form read back byte for byte.

#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvobjectspecchild.h"
#include "LibDatabase/db/tvspecparser.h"
#include "LibDatabase/db/tvvarspec.h"

#include "TestSupport/tvraise.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

// The parsed spec in one line, so a table row can say what it expects.
std::string describe(const TVObjectSpec& spec)
{
    std::ostringstream out;
    for (const std::string& name : spec.get_inherited())
        out << "inherits " << name << "; ";
    if (spec.is_base_only())
        out << "baseOnly; ";
    if (spec.is_defunct())
        out << "defunct; ";
    for (int i = 0; i < spec.get_nvarspecs(); ++i) {
        const TVVarSpec& var = *spec.get_varspec_by_index(i);
        out << var.get_tag() << " "
            << (var.is_derived() ? "eval"
                                 : var.is_prompt() ? "prompt" : var.is_auto() ? "auto" : "init")
            << "'" << var.get_spec() << "'";
        if (var.is_private())
            out << " private";
        if (var.get_constraint() != TVVarSpec::E_ConstrainNone)
            out << " " << TVVarSpec::constraint_to_str(var.get_constraint()) << "'"
                << var.get_constraintparam() << "'";
        out << "; ";
    }
    for (int i = 0; i < spec.get_nchildren(); ++i) {
        const TVObjectSpecChild& child = *spec.get_child_by_index(i);
        out << "[" << child.get_member_tag() << "] " << child.get_spec_name();
        if (!child.get_defaultspec_name().empty())
            out << "=" << child.get_defaultspec_name();
        out << (child.is_array() ? " array" : "") << (child.is_mandatory() ? " mandatory" : "")
            << (child.is_add_create() ? " addcreate" : "") << "; ";
    }
    for (int i = 0; i < spec.get_nscripts(); ++i) {
        const TVDBScript& script = *spec.get_script_no(i);
        out << "@" << script.get_name();
        if (!script.get_shortcut().empty())
            out << "(" << script.get_shortcut() << ")";
        out << " '" << script.get_script() << "'; ";
    }
    return out.str();
}

class SpecParserTest : public TVQuietErrorTest
{
protected:
    // Parses text as the spec "Book"; message receives the newest user text.
    int parse(const std::string& text, TVObjectSpec& spec, int& line, std::string& message)
    {
        spec.set_name("Book");
        spec.set_text(text);
        const int result = spec.parse(&line);
        const TVErrDetails* details = get_tverror()->error_details();
        message = details != nullptr ? details->get_details(TVAspectUser) : "";
        get_tverror()->clear_all();
        return result;
    }
};

struct ValidCase {
    const char* name;
    const char* text;
    const char* parsed;
};

TEST_F(SpecParserTest, ValidTextsGiveTheirSpecs)
{
    const ValidCase cases[] = {
        {"empty text", "", ""},
        {"only blanks and a comment", "  \n# nothing here\n\t", ""},
        {"the book example",
         "# a book on a shelf\n"
         "inherits Item;\n"
         "$<Title> = prompt();\n"
         "$<Pages> = init(\"0\");\n"
         "constrain $<Pages> int;\n"
         "$<Label> = eval(\"$<Title> ($<Pages>)\");\n"
         "$[Chapter] = ${Chapter}[];\n"
         "@Script on_create >\"\n"
         "    TVSet(`Pages`, \"1\");\n"
         "\"<\n;\n",
         "inherits Item; Title prompt''; Pages init'0' int''; Label eval'$<Title> ($<Pages>)'; "
         "[Chapter] Chapter array; @on_create '    TVSet(`Pages`, \"1\");\n'; "},
        {"flags", "baseOnly; defunct;", "baseOnly; defunct; "},
        {"comment after a statement", "$<A> = init(\"1\"); # one\n$<B> = auto(\"007\");",
         "A init'1'; B auto'007'; "},
        {"associative variable without its plain one", "$<A:B> = init(\"x\");", "A:B init'x'; "},
        {"definitions add up on one tag", "$<A> = init(\"1\");\n$<A> = eval(\"$<B>\");",
         "A eval'$<B>'; "},
        {"prompt after eval is a prompt", "$<A> = eval(\"1\");\n$<A> = prompt();", "A prompt'1'; "},
        {"private list", "$<A> = init(); $<B> = init(); private $<A>, $<B>;",
         "A init'' private; B init'' private; "},
        {"constraint parameter kept unparsed", "$<X> = init(); constrain $<X> choice `a, b`;",
         "X init'' choice'a, b'; "},
        {"constraint by a quoted parameter", "$<X> = init(); constrain $<X> REFERENCE \"${S}\";",
         "X init'' reference'${S}'; "},
        {"adjacent strings join", "$<A> = init(\"ab\"\"cd\");", "A init'abcd'; "},
        {"escapes in a string", "$<A> = init(\"q\\\"\\n\\\\z\");", "A init'q\"\n\\z'; "},
        {"child modifiers",
         "$[A] = ${S}; $[B] = ${S}[]; $[C] = ${S}[+]; $[D] = ${S=T}[^]; $[E] = ${S}[-];",
         "[A] S mandatory; [B] S array; [C] S array mandatory; [D] S=T array addcreate; [E] S; "},
        {"script with a shortcut", "@Script go @Shortcut F5 \"run()\";", "@go(F5) 'run()'; "},
        {"block keeps quotes and an escaped end", "@Script s >\"a \"b\" \\\"< c\"<;",
         "@s 'a \"b\" \\\"< c'; "},
    };
    for (const ValidCase& c : cases) {
        TVObjectSpec spec;
        int line = 0;
        std::string message;
        EXPECT_EQ(parse(c.text, spec, line, message), TVErrC_ok) << c.name << ": " << message;
        EXPECT_EQ(line, -1) << c.name;
        EXPECT_EQ(describe(spec), c.parsed) << c.name;
    }
}

struct MessageCase {
    const char* text;
    int line;
    std::string message; // after "Book:LINE: error "
};

TEST_F(SpecParserTest, EachFailureNamesItsLine)
{
    const std::string varUsage =
        "\nVariable definitions are of the form \"$<VARIABLE[:ASSOC]> = VALUE;\" (where CHILD "
        "and ASSOC may contain letters, numbers or \"_\")";
    const std::string childUsage =
        "\nChild definitions are of the form \"$[CHILD] = ${SPEC};\" or "
        "\"$[CHILD] = ${SPEC=DEFAULT};\"(where CHILD, SPEC and DEFAULT may contain letters, "
        "numbers or \"_\")";
    const MessageCase cases[] = {
        {"baseOnly", 1, " Unterminated line (must end with \";\")."},
        {"\n\n  what;", 3, " Unknown symbol \"what\""},
        {"inherits ;", 1, " The inherits keyword should be followed by the name of an object spec."},
        {"private A;", 1, " private should be followed by a variable name."},
        {"private $<->;", 1, " Invalid variable name."},
        {"private $<A;", 1, " Unterminated variable name."},
        {"private $<A>;", 1, " Could not find the variable A."},
        {"$<A> = init(); private $<A> $<A>;", 1, " missing end of line."},
        {"constrain $<A> int;", 1, " Could not find the variable A."},
        {"$<A> = init();\nconstrain $<A> colour;", 2, " Unknown constrain type colour"},
        {"$<A> = init(); constrain $<A> choice \"a,b;", 1, " invalid assignment - Missing \"\"\""},
        {"$<-> = init();", 1, " Invalid variable name." + varUsage},
        {"$<A:> = init();", 1, " Invalid associative name." + varUsage},
        {"$<A = init();", 1, " Unterminated variable name." + varUsage},
        {"$<A> init();", 1, " missing variable assignment." + varUsage},
        {"$<A> = guess();", 1, " invalid value \"guess\" after assignment."},
        {"$<A> = init\"1\");", 1, " invalid assignment - Missing \"(\""},
        {"$<A> = init(\"1\";", 1, " invalid assignment - Missing \")\""},
        {"$<A> = init(\"1);", 1, " invalid assignment - Missing \"\"\""},
        {"$[-] = ${S};", 1, " Invalid child name." + childUsage},
        {"$[A = ${S};", 1, " Unterminated child name." + childUsage},
        {"$[A] : ${S};", 1, " Unknown symbol \":\"." + childUsage},
        {"$[A] = S;", 1, " Missing spec name for child (\"S\" instead)." + childUsage},
        {"$[A] = ${-};", 1, " Invalid spec name." + childUsage},
        {"$[A] = ${S=};", 1, " Invalid default spec name." + childUsage},
        {"$[A] = ${S;", 1, " Unterminated spec name." + childUsage},
        {"@Script 9 \"x\";", 1, " @Script should be followed by the script name."},
        {"@Script s x;", 1, " @Script should be followed by NAME >\" SCRIPT \"<"},
        {"\n@Script s >\"never ends", 2, " @Script should be followed by >\" SCRIPT \"<"},
        {"@Script s >\"two\nlines\"<;\noops;", 3, " Unknown symbol \"oops\""},
    };
    for (const MessageCase& c : cases) {
        TVObjectSpec spec;
        int line = 0;
        std::string message;
        EXPECT_TRUE(istvwarn(parse(c.text, spec, line, message))) << c.text;
        EXPECT_EQ(line, c.line) << c.text;
        EXPECT_EQ(message, "Book:" + std::to_string(c.line) + ": error " + c.message) << c.text;
    }
}

TEST_F(SpecParserTest, FailureInAFileNamesTheFileAndItsLine)
{
    TVObjectSpec spec("Book", "$<A> = init();\n\n$<B> = nothing();\n");
    spec.set_file_info("/tmp/books.tvo", 10);
    int line = 0;
    EXPECT_TRUE(istvwarn(spec.parse(&line)));
    EXPECT_EQ(line, 13);
    EXPECT_EQ(get_tverror()->error_details()->get_details(TVAspectUser),
              "/tmp/books.tvo:13: error  invalid value \"nothing\" after assignment.");
    // What came before the failure stays parsed.
    EXPECT_EQ(describe(spec), "A init''; B init''; ");
}

TEST_F(SpecParserTest, InvalidSpecNameIsRefusedBeforeTheText)
{
    TVObjectSpec spec("My Book", "$<A> = init();");
    int line = 0;
    EXPECT_TRUE(istvwarn(spec.parse(&line)));
    EXPECT_EQ(get_tverror()->error_details()->get_details(TVAspectUser),
              "The \"My Book\" spec name is invalid - It should only contain letters, numbers or "
              "the \"_\" character");
    EXPECT_EQ(spec.get_nvarspecs(), 0);
}

TEST_F(SpecParserTest, ExportParsedAndExportedAgainIsByteIdentical)
{
    const std::string text = "# odd but kept: \"quotes\", blocks, blank lines\n\n"
                             "$<A> = init(\"x\");   # trailing comment\n"
                             "@Script s >\"\n  line\n\"<;";
    TVObjectSpec spec("Kept", text);
    std::ostringstream first;
    spec.export_spec(first);
    EXPECT_EQ(first.str(), std::string(72, '#') + "\n{Kept\n" + text + "\n}\n");
    int line = 0;
    ASSERT_EQ(spec.parse(&line), TVErrC_ok);
    std::ostringstream second;
    spec.export_spec(second);
    EXPECT_EQ(second.str(), first.str());
}

TEST_F(SpecParserTest, UnknownStatementsAndTagsSurviveAWriteAndARead)
{
    const std::string text = "$<A> = init();\nsomeday maybe;\n";
    TVObjectSpec spec("Odd", text);
    int line = 0;
    EXPECT_TRUE(istvwarn(spec.parse(&line)));
    get_tverror()->clear_all();
    std::ostringstream exported;
    spec.export_spec(exported);
    EXPECT_EQ(exported.str(), std::string(72, '#') + "\n{Odd\n" + text + "}\n");

    // A tag that a later version writes comes back out.
    std::string record;
    ASSERT_EQ(spec.object_to_string(record, 0), TVErrC_ok);
    record.insert(record.find('\n') + 1, "!future!kept\n");
    TVObjectSpec read;
    ASSERT_EQ(read.object_from_string(record, 0), TVErrC_ok);
    EXPECT_EQ(read.get_text(), text);
    std::string again;
    ASSERT_EQ(read.object_to_string(again, 0), TVErrC_ok);
    EXPECT_NE(again.find("!future!kept\n"), std::string::npos);
}

TEST_F(SpecParserTest, TokenLinesFollowNewlinesInStringsAndBlocks)
{
    TVDBParser parser;
    ASSERT_EQ(parser.tokenise("a \"x\ny\" b\n>\"\n1\n2\n\"< c"), TVErrC_ok);
    std::ostringstream seen;
    while (!parser.empty()) {
        seen << parser.get_line_no() << ":" << parser.first_token() << "|";
        parser.pop_token();
    }
    EXPECT_EQ(seen.str(), "1:a|1: |1:\"|1:x\ny|2:\"|2: |2:b|2: |3:\"|4:1\n2\n|6:\"|6: |6:c|");
}

} // namespace
