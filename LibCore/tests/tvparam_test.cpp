#include "LibCore/param/tvparam.h"

#include <gtest/gtest.h>

#include <QtGlobal>
#include <sstream>

#include "LibCore/param/tvparamerrhandler.h"
#include "LibCore/param/tvparamset.h"
#include "TestSupport/tvparamtest.h"
#include "TestSupport/tvraise.h"

namespace {

const char* const C_DrillUsage =
    "drill (Drill options) file [more...]\n"
    "    Run a drill\n"
    "    file                 The drill file.\n"
    "    more                 Further files.\n"
    "  Drill options:\n"
    "    --verbose|-V         Say more.\n"
    "    --level|-l ARG       Starting level.\n"
    "    --include|-I ARG     Add a table.\n"
    "    --scale ARG          Time scale.\n"
    "\n"
    "drill -e|--export (Export options) out\n"
    "    Export the results\n"
    "    out                  Where to write.\n"
    "  Export options:\n"
    "    -f|--format ARG      Output format. (required)\n"
    "\n";

class ParamTest : public TVParamTest
{
protected:
    // Parses drill's command line (and the user's file, if asked) into m_vars.
    int parse(const std::vector<std::string>& args, bool withFile = false)
    {
        TVParam* param = make_param(args);
        TVParamCmdLine cmd = drill_cmdline(m_vars);
        param->set_cmdline(cmd);
        if (withFile)
            param->add_config_file(user_file());
        return param->parse(&m_out);
    }

    DrillVars m_vars;
    std::ostringstream m_out;
};

TEST(ParamSyntax, ExtractOptionTellsOptionsFromValues)
{
    const struct {
        const char* arg;
        const char* name;
    } rows[] = {
        {"-x", "x"},       {"--name", "name"}, {"--x", "--x"}, // three long: can't be an option's name
        {"-xy", "-xy"},    {"-5", ""},         {"-0.5", ""},   {"-.5", "-.5"},
        {"file", ""},      {"-", ""},          {"--", ""},     {"", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TVParamCmdLine::extract_option(row.arg), row.name) << "argument \"" << row.arg << "\"";
}

TEST(ParamSyntax, SwitchFormsDependOnNameLength)
{
    const TVParamOption option("x", "extra", "", true);
    const struct {
        const char* arg;
        bool matches;
    } rows[] = {{"-x", true}, {"--extra", true}, {"--x", false}, {"-extra", false}, {"-e", false}, {"x", false}};
    for (const auto& row : rows)
        EXPECT_EQ(option.match_cmdline(row.arg), row.matches) << row.arg;
    EXPECT_EQ(option.get_switch(true), "-x|--extra ARG");
    EXPECT_EQ(option.get_switch(false), "-x|--extra");
    EXPECT_EQ(TVParamOption("verbose", "", "", false).get_switch(true), "--verbose");
}

TEST_F(ParamTest, ArgumentsFillTheDeclaredVariables)
{
    const struct {
        std::vector<std::string> args;
        std::string file;
        std::vector<std::string> more;
        bool verbose;
        int level;
        std::vector<std::string> include;
    } rows[] = {
        {{"a.drill"}, "a.drill", {}, false, 0, {}},
        {{"-5"}, "-5", {}, false, 0, {}}, // a negative number is a value
        {{"a", "b", "c"}, "a", {"b", "c"}, false, 0, {}},
        {{"-l", "-5", "a"}, "a", {}, false, -5, {}},
        {{"a", "--level", "7", "-l", "8"}, "a", {}, false, 8, {}}, // the last one wins
        {{"a", "-V", "b"}, "a", {"b"}, true, 0, {}},
        {{"a", "--include", "x", "-I", "y"}, "a", {}, false, 0, {"x", "y"}},
        {{"a", "-extra-args", "--bogus", "b"}, "a", {}, false, 0, {}},
    };
    for (const auto& row : rows) {
        m_vars = DrillVars();
        m_out.str("");
        EXPECT_EQ(parse(row.args), TVErrC_ok) << m_out.str();
        EXPECT_EQ(m_out.str(), "");
        EXPECT_EQ(m_vars.file, row.file);
        EXPECT_EQ(m_vars.more, row.more);
        EXPECT_EQ(m_vars.verbose, row.verbose);
        EXPECT_EQ(m_vars.level, row.level);
        EXPECT_EQ(m_vars.include, row.include);
        EXPECT_EQ(m_vars.out, "");
    }
}

TEST_F(ParamTest, OtherNumberTypesAreConverted)
{
    ASSERT_EQ(parse({"--scale", "2.5", "--seed", "-42", "a"}), TVErrC_ok);
    EXPECT_DOUBLE_EQ(m_vars.scale, 2.5);
    EXPECT_EQ(m_vars.seed, -42);
}

TEST_F(ParamTest, SwitchAnywherePicksItsGroup)
{
    for (const auto& args : std::vector<std::vector<std::string>>{{"-e", "-f", "csv", "o.csv"},
                                                                   {"o.csv", "--export", "--format", "csv"}}) {
        m_vars = DrillVars();
        ASSERT_EQ(parse(args), TVErrC_ok) << m_out.str();
        EXPECT_EQ(m_vars.out, "o.csv");
        EXPECT_EQ(m_vars.format, "csv");
        EXPECT_EQ(m_vars.file, "");
        EXPECT_EQ(tvparam()->get_nvalues("e"), 1);
    }
}

// The usage of drill's two value groups comes with every fault.
TEST_F(ParamTest, WrongInputIsToldWithTheUsageAndConsumed)
{
    const struct {
        std::vector<std::string> args;
        std::string text;
    } rows[] = {
        {{"-q", "a"}, "Invalid option -q"},
        {{"--x", "a"}, "Invalid option --x"},
        {{"a", "-verbose"}, "Invalid option -verbose"},
        {{"a", "-l"}, "Option -l requires a value"},
        {{}, "Too few parameters (missing file)."},
        {{"-V"}, "Too few parameters (missing file)."},
        {{"-e", "-f", "csv"}, "Too few parameters (missing out)."},
        {{"-e", "o"}, "The -f|--format option must have a value supplied"},
        {{"-e", "o", "p", "-f", "x"}, "Too many parameters (starting from p)."},
    };
    for (const auto& row : rows) {
        m_out.str("");
        // Consumed: the parse goes on and nothing is left pending.
        EXPECT_EQ(parse(row.args), TVErrC_ok) << row.text;
        EXPECT_EQ(m_out.str(), "Error: " + row.text + "\n\n" + C_DrillUsage);
        EXPECT_FALSE(get_tverror()->is_error()) << row.text;
    }
}

TEST_F(ParamTest, NoGroupForTheArgumentsListsTheSwitches)
{
    TVParam* param = make_param({"x"});
    TVParamCmdLine cmd;
    cmd.add_value_group("e", "export", "Export");
    cmd.add_help_options();
    param->set_cmdline(cmd);
    std::ostringstream out;
    EXPECT_EQ(param->parse(&out), TVErrC_ok);
    const std::string text = "Invalid commandline - Please specify one of:\n"
                             "    -e|--export\n"
                             "    -h|--help\n"
                             "    --man\n";
    EXPECT_EQ(out.str().substr(0, 7 + text.size()), "Error: " + text);
}

TEST_F(ParamTest, WithoutTheParseHandlerWrongInputIsAPendingUserWarning)
{
    TVParamCmdLine cmd = drill_cmdline(m_vars);
    TVParamSet merged;
    ASSERT_EQ(cmd.get_all_options(merged), TVErrC_ok);
    std::vector<std::string> args{"a", "--nope"};
    const int result = cmd.parse_cmdline(args, merged);
    EXPECT_EQ(result, TVErrDetails::compute_combination(TVParam::TVErrC_ParamInvalid, TVSevUser));
    ASSERT_TRUE(get_tverror()->is_error());
    EXPECT_EQ(get_tverror()->get_details(TVAspectUser), "Invalid option --nope");
    // The values given before the fault are kept.
    EXPECT_EQ(merged.get_value("file"), "a");
}

TEST_F(ParamTest, TheHandlerPassesOtherErrors)
{
    std::ostringstream out;
    TVParamErrHandler handler("usage\n", &out, true, false, true, false);
    TVErrDetails details;
    details.set_code(TVParam::TVErrC_ParamInvalid);
    details.set_severity(TVSevWarning);
    details.set_details("not the user's", TVAspectBoth);
    EXPECT_EQ(handler.handle(details), details.get_value());
    details.set_severity(TVSevUser);
    details.set_code(TVErrC_FileOpen);
    EXPECT_EQ(handler.handle(details), details.get_value());
    EXPECT_EQ(out.str(), "");
    details.set_code(TVParam::TVErrC_ParamInvalid);
    EXPECT_EQ(handler.handle(details), TVErrC_okHandled);
    EXPECT_EQ(out.str(), "Error: not the user's\n\nusage\n");
}

TEST_F(ParamTest, DeclarationFaultsAreErrors)
{
    bool flagA = false, flagB = false;
    const struct {
        const char* text;
        void (*declare)(TVParamCmdLine&, bool*, bool*);
    } rows[] = {
        {"Greater than 1 un-flagged value group",
         [](TVParamCmdLine& cmd, bool*, bool*) {
             cmd.add_value_group("", "", "one");
             cmd.add_value_group("", "", "two");
         }},
        {"Greater than 1 optional values.",
         [](TVParamCmdLine& cmd, bool*, bool*) {
             TVParamValueGroup& group = cmd.add_value_group("", "", "one");
             group.add_value(std::make_unique<TVParamValue>("a", "", false));
             group.add_value(std::make_unique<TVParamValue>("b", "", false));
         }},
        {"Parameter quiet is bound to two different variables.",
         [](TVParamCmdLine& cmd, bool* a, bool* b) {
             cmd.add_value_group("", "", "one").add_option_group("A", "").add_option(
                 std::make_unique<TVParamOption>("quiet", "", "", a));
             cmd.add_value_group("x", "", "two").add_option_group("B", "").add_option(
                 std::make_unique<TVParamOption>("quiet", "", "", b));
         }},
    };
    for (const auto& row : rows) {
        TVParam* param = make_param({});
        TVParamCmdLine cmd;
        row.declare(cmd, &flagA, &flagB);
        param->set_cmdline(cmd);
        const TVRaised raised = tv_catch_raise([&] { (void)param->parse(nullptr); });
        EXPECT_TRUE(raised.thrown) << row.text;
        EXPECT_EQ(raised.code, TVParam::TVErrC_ParamAmbiguous) << row.text;
        EXPECT_EQ(raised.text.substr(0, std::string(row.text).size()), row.text);
    }
}

TEST_F(ParamTest, StandardSwitchesWriteTheirTextAndAskToStop)
{
    const std::string version = "drill 1.2.3\n"
                                "  Build Tag:  drill-1-2-3-4\n"
                                "  Build Date: 02-Nov-2022\n"
                                "Copyright (c) 2022 Tarvello\n"
                                "Written by A. Author\n";
    const std::string help = std::string(C_DrillUsage) +
                             "drill -h|--help\n"
                             "    Display this help page.\n\n"
                             "drill --man\n"
                             "    Output the program options in man-page format.\n\n"
                             "drill -v|--version\n"
                             "    Output the program version information.\n\n"
                             "drill --tag\n"
                             "    Show the executable tag version.\n\n"
                             "drill --release\n"
                             "    Show the executable release version.\n\n";
    const std::string man = "NAME\n        drill - Arithmetic drill\n\n"
                            "SYNOPSIS\n" + help +
                            "DESCRIPTION\n        Arithmetic drill\n\n"
                            "FILES\n    " + cfg() + "\n\n"
                            "AUTHORS\n        A. Author\n\n"
                            "COPYRIGHT\n        Copyright (c) 2022 Tarvello\n";
    const struct {
        const char* arg;
        std::string text;
    } rows[] = {
        {"--help", help},
        {"--man", man},
        {"-v", version},
        {"--tag", "drill-1-2-3-4\n"},
        {"--release", "drill-1.2.3\n"},
    };
    for (const auto& row : rows) {
        TVParam* param = make_param({row.arg});
        TVParamCmdLine cmd = drill_cmdline(m_vars);
        cmd.add_help_options();
        cmd.add_version_options();
        param->set_cmdline(cmd);
        param->add_config_file(user_file());
        std::ostringstream out;
        EXPECT_EQ(param->parse(&out), TVErrC_okShutdown) << row.arg;
        EXPECT_EQ(out.str(), row.text) << row.arg;
    }
}

// Files first, then the environment, then the command line; the last source
// to name a parameter replaces what came before, even for a multi-value one.
TEST_F(ParamTest, LaterSourcesReplaceEarlierOnes)
{
    const struct {
        const char* name;
        std::vector<std::string> fileLines;
        const char* env; // null: not set
        std::vector<std::string> args;
        int level;
        std::vector<std::string> include;
        std::string source;
    } rows[] = {
        {"file alone", {"level=3", "include=a", "include=b"}, nullptr, {"x"}, 3, {"a", "b"}, "file"},
        {"environment over file", {"level=3"}, "4", {"x"}, 4, {}, "Environment"},
        {"command line over both", {"level=3"}, "4", {"x", "-l", "5"}, 5, {}, ""},
        {"command line over file", {"level = 3", "include=a", "include=b"}, nullptr, {"x", "-I", "c", "-l", "6"}, 6,
         {"c"}, ""},
    };
    for (const auto& row : rows) {
        write_file(cfg(), row.fileLines);
        if (row.env != nullptr)
            qputenv("DRILL_LEVEL", row.env);
        else
            qunsetenv("DRILL_LEVEL");
        m_vars = DrillVars();
        EXPECT_EQ(parse(row.args, true), TVErrC_ok) << row.name << ": " << m_out.str();
        qunsetenv("DRILL_LEVEL");
        EXPECT_EQ(m_vars.level, row.level) << row.name;
        EXPECT_EQ(m_vars.include, row.include) << row.name;
        const TVParamBase* level = tvparam()->get_params().find("level");
        ASSERT_NE(level, nullptr);
        EXPECT_EQ(level->get_latest_source(), row.source == "file" ? cfg() : row.source) << row.name;
    }
}

TEST_F(ParamTest, StandardSwitchInTheFileDoesNotStopTheProgram)
{
    write_file(cfg(), {"h=", "v=1"});
    TVParam* param = make_param({"a"});
    TVParamCmdLine cmd = drill_cmdline(m_vars);
    cmd.add_help_options();
    cmd.add_version_options();
    param->set_cmdline(cmd);
    param->add_config_file(user_file());
    EXPECT_EQ(param->parse(&m_out), TVErrC_ok);
    EXPECT_EQ(m_out.str(), "");
}

TEST_F(ParamTest, SystemValuesNeedTheUsersFile)
{
    TVParam* param = make_param({});
    EXPECT_EQ(param->parse(nullptr), TVErrC_ok);
    const int result = param->set_system_value("LastFile", "a");
    EXPECT_EQ(result, TVErrDetails::compute_combination(TVParam::TVErrC_ParamMissing, TVSevWarning));
    EXPECT_EQ(tvsysinfo_get(), "No user config file set.");
    EXPECT_EQ(param->get_system_value("LastFile"), "");
}

TEST_F(ParamTest, TagsLiveOnlyOnMultiValueParameters)
{
    TVParamBase single("mode", "", false, false);
    const TVRaised raised = tv_catch_raise([&] { (void)single.set_tag_value("a", "1"); });
    EXPECT_TRUE(raised.thrown);
    EXPECT_EQ(raised.code, TVParam::TVErrC_ParamInvalid);
    EXPECT_EQ(raised.text, "Attempting to set tag a, value 1 on single value param mode.");

    TVParamBase multi("Window", "", false, true);
    ASSERT_EQ(multi.set_tag_value("Main", "1,2"), TVErrC_ok);
    ASSERT_EQ(multi.set_tag_value("Dialog", "3,4"), TVErrC_ok);
    ASSERT_EQ(multi.set_tag_value("Main", "5,6"), TVErrC_ok);
    EXPECT_EQ(multi.get_values(), (std::vector<std::string>{"Main=5,6", "Dialog=3,4"}));
    EXPECT_EQ(multi.get_tag_value("Main"), "5,6");
    EXPECT_EQ(multi.get_tag_value("Mai"), "");
    EXPECT_EQ(multi.get_tag_value(""), "");
}

TEST(ParamBase, SetValueAppendsOnlyForOneSourceOfAMultiValueParameter)
{
    TVParamBase multi("include", "", false, true);
    TVParamBase single("level", "", false, false);
    const struct {
        const char* value;
        const char* source;
        std::vector<std::string> multiValues;
        std::vector<std::string> singleValues;
    } steps[] = {
        {"a", "one.cfg", {"a"}, {"a"}},
        {"b", "one.cfg", {"a", "b"}, {"b"}},
        {"c", "Environment", {"c"}, {"c"}},
        {"d", "", {"d"}, {"d"}},
        {"e", "", {"d", "e"}, {"e"}},
    };
    for (const auto& step : steps) {
        multi.set_value(step.value, step.source);
        single.set_value(step.value, step.source);
        EXPECT_EQ(multi.get_values(), step.multiValues) << step.value;
        EXPECT_EQ(single.get_values(), step.singleValues) << step.value;
        EXPECT_EQ(multi.get_latest_source(), step.source);
    }
}

TEST(ParamBase, OnlyRealChangesMoveTheUpdateCount)
{
    TVParamBase param("level", "", false, false);
    param.set_value("1", "User");
    const long seen = TVParamBase::current_update_count();
    param.set_value("1", "User");
    param.set_single_value("1", "");
    EXPECT_FALSE(param.modified_since(seen));
    param.set_value("2", "User");
    EXPECT_TRUE(param.modified_since(seen));
}

} // namespace
