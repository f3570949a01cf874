#include "LibCore/param/tvparamfile.h"

#include <gtest/gtest.h>

#include <sstream>

#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/param/tvparamset.h"
#include "TestSupport/tvparamtest.h"
#include "TestSupport/tvraise.h"

namespace {

const std::vector<std::string> C_Settings = {
    "# Tarvello settings",
    "1st line starts with a digit",
    "LastFile = /home/a.tvmaths;",
    "include=a",
    "Colour=blue",
    "",
    "include=b",
    "garbage",
    "   # indented comment",
    "Window=Main=10,20",
    "Window=Dialog=1,2",
    "NumLastFiles=2",
};

class ParamFileTest : public TVParamTest
{
protected:
    // Starts drill with the user's file, as the program does.
    TVParam* start(const std::vector<std::string>& args = {"x"})
    {
        TVParam* param = make_param(args);
        param->set_cmdline(drill_cmdline(m_vars));
        param->add_config_file(user_file());
        m_out.str("");
        EXPECT_EQ(param->parse(&m_out), TVErrC_ok);
        return param;
    }

    DrillVars m_vars;
    std::ostringstream m_out;
};

TEST_F(ParamFileTest, RewriteAfterOneChangeKeepsEverythingElse)
{
    write_file(cfg(), C_Settings);
    TVParam* param = start();
    EXPECT_EQ(m_out.str().substr(0, m_out.str().find('\n')), "Error: Invalid line garbage in " + cfg() + ":8");
    EXPECT_EQ(param->get_system_value("Colour"), "blue");
    EXPECT_EQ(m_vars.include, (std::vector<std::string>{"a", "b"}));

    EXPECT_EQ(param->set_system_value("NumLastFiles", "3"), TVErrC_ok);
    EXPECT_FALSE(get_tverror()->is_error());
    const std::vector<std::string> expected = {
        "# Tarvello settings",
        "1st line starts with a digit",
        "LastFile=/home/a.tvmaths;", // a known line is written in its plain form
        "include=a",                 // all values at the place of the first line
        "include=b",
        "Colour=blue",
        "",
        "garbage",
        "   # indented comment",
        "Window=Main=10,20",
        "Window=Dialog=1,2",
        "NumLastFiles=3",
    };
    EXPECT_EQ(tv_read_lines(cfg()), expected);
    EXPECT_FALSE(tv_file_exists(cfg() + ".tmp"));
}

TEST_F(ParamFileTest, RewriteIsStableAndReadsBackTheSame)
{
    write_file(cfg(), C_Settings);
    TVParam* param = start();
    ASSERT_EQ(param->set_system_value("LastFile", "/home/b.tvmaths;"), TVErrC_ok);
    const std::string once = read_all(cfg());
    ASSERT_EQ(param->get_user_config()->rewrite_file(), TVErrC_ok);
    EXPECT_EQ(read_all(cfg()), once);

    TVParam* again = start();
    EXPECT_EQ(again->get_system_value("LastFile"), "/home/b.tvmaths;");
    EXPECT_EQ(again->get_system_value("Window", "Dialog"), "1,2");
    ASSERT_EQ(again->get_user_config()->rewrite_file(), TVErrC_ok);
    EXPECT_EQ(read_all(cfg()), once);
}

TEST_F(ParamFileTest, TaggedSystemValuesReplaceTheirOwnEntry)
{
    write_file(cfg(), C_Settings);
    TVParam* param = start();
    ASSERT_EQ(param->set_system_value("Window", "Main", "5,6"), TVErrC_ok);
    ASSERT_EQ(param->set_system_value("Window", "Prefs", "7,8"), TVErrC_ok);
    EXPECT_EQ(param->get_system_value("Window", "Main"), "5,6");
    EXPECT_EQ(param->get_system_value("Window", "Dialog"), "1,2");
    const std::vector<std::string> lines = tv_read_lines(cfg());
    ASSERT_EQ(lines.size(), C_Settings.size() + 1);
    EXPECT_EQ(lines[9], "Window=Main=5,6");
    EXPECT_EQ(lines[10], "Window=Dialog=1,2");
    EXPECT_EQ(lines[11], "Window=Prefs=7,8");
}

TEST_F(ParamFileTest, MissingFileIsNotAFailure)
{
    TVParam* param = start();
    EXPECT_FALSE(get_tverror()->is_error());
    TVParamSet merged;
    EXPECT_EQ(param->get_user_config()->read_file(merged), TVErrC_okEndOfFile);
    EXPECT_EQ(param->get_system_value("LastFile"), "");

    ASSERT_EQ(param->set_system_value("LastFile", "a"), TVErrC_ok);
    EXPECT_EQ(tv_read_lines(cfg()), std::vector<std::string>{"LastFile=a"});
}

TEST_F(ParamFileTest, FileInTheDataDirectoryIsMovedIn)
{
    ASSERT_EQ(tv_create_dir(path("data"), true), TVErrC_ok);
    write_file(path("data/drill.cfg"), {"LastFile=old"});
    TVParam* param = start();
    EXPECT_EQ(param->get_system_value("LastFile"), "old");
    EXPECT_TRUE(tv_file_exists(cfg()));
    EXPECT_FALSE(tv_file_exists(path("data/drill.cfg")));
}

TEST_F(ParamFileTest, BlanksAroundNameAndValueAreDropped)
{
    const struct {
        const char* line;
        const char* name;
        const char* value;
    } rows[] = {
        {"  Name \t=  value with = inside  ", "Name", "value with = inside"},
        {"\tTabbed=x", "Tabbed", "x"},
        {"Empty=", "Empty", ""},
        {"Crlf=y\r", "Crlf", "y"},
    };
    for (const auto& row : rows) {
        write_file(cfg(), {row.line});
        TVParam* param = start();
        EXPECT_EQ(param->get_nvalues(row.name), 1) << row.line;
        EXPECT_EQ(param->get_system_value(row.name), row.value) << row.line;
    }
}

TEST_F(ParamFileTest, InvalidLineOutsideParseIsAUserWarningAndTheRestIsRead)
{
    write_file(cfg(), {"A=1", "oops", "B=2"});
    TVParamFile file = user_file();
    TVParamSet merged;
    const int result = file.read_file(merged);
    EXPECT_EQ(result, TVErrDetails::compute_combination(TVParam::TVErrC_ParamInvalid, TVSevUser));
    EXPECT_EQ(tvuserinfo_get(), "Invalid line oops in " + cfg() + ":2");
    EXPECT_EQ(merged.get_value("A"), "1");
    EXPECT_EQ(merged.get_value("B"), "2");
}

TEST_F(ParamFileTest, SettingTheSameValueDoesNotRewrite)
{
    TVParam* param = start();
    int writes = 0;
    TVFileFaults counter([&](TVFileFaults::E_FileOp op, const std::string&, const std::string&) {
        writes += op == TVFileFaults::E_OpWrite;
        return false;
    });
    const struct {
        const char* value;
        int writes;
    } steps[] = {{"1", 1}, {"1", 1}, {"2", 2}, {"2", 2}};
    for (const auto& step : steps) {
        ASSERT_EQ(param->set_system_value("NumLastFiles", step.value), TVErrC_ok);
        EXPECT_EQ(writes, step.writes) << step.value;
    }
}

TEST_F(ParamFileTest, FailedTmpFileOrUnreadableFileLeavesTheFile)
{
    const struct {
        TVFileFaults::E_FileOp op;
        int code;
    } rows[] = {{TVFileFaults::E_OpWrite, TVErrC_FileCreate}, {TVFileFaults::E_OpRead, TVErrC_FileOpen}};
    for (const auto& row : rows) {
        write_file(cfg(), C_Settings);
        TVParam* param = start();
        const std::string before = read_all(cfg());
        TVFileFaults fail([&](TVFileFaults::E_FileOp op, const std::string&, const std::string&) { return op == row.op; });
        const int result = param->set_system_value("NumLastFiles", "9");
        EXPECT_EQ(result, TVErrDetails::compute_combination(row.code, TVSevWarning));
        if (row.code == TVErrC_FileCreate) {
            EXPECT_EQ(tvsysinfo_get(), "Could not create the file " + cfg() + ".tmp");
        }
        EXPECT_EQ(read_all(cfg()), before);
        get_tverror()->clear_all();
    }
}

// The save is cut at every step in turn (that step and all after it fail);
// afterwards a fresh start must find either the old or the new value, and
// the comments with it.
TEST_F(ParamFileTest, CutAtEveryStepTheNextStartFindsOneWholeFile)
{
    // First count the steps of a save that nothing cuts.
    int steps = 0;
    write_file(cfg(), C_Settings);
    {
        TVParam* param = start();
        TVFileFaults count([&](TVFileFaults::E_FileOp, const std::string&, const std::string&) {
            ++steps;
            return false;
        });
        ASSERT_EQ(param->set_system_value("NumLastFiles", "9"), TVErrC_ok);
    }
    ASSERT_GE(steps, 3); // read, write the ".tmp", move it into place

    for (int cut = 0; cut <= steps; ++cut) {
        write_file(cfg(), C_Settings);
        (void)tv_delete_file(cfg() + ".tmp", false);
        TVParam* param = start();
        int step = 0;
        {
            TVFileFaults crash([&](TVFileFaults::E_FileOp, const std::string&, const std::string&) {
                return step++ >= cut;
            });
            tv_catch_raise([&] { (void)param->set_system_value("NumLastFiles", "9"); });
        }
        TVParam* next = start();
        const std::string value = next->get_system_value("NumLastFiles");
        EXPECT_TRUE(value == "2" || value == "9") << "cut at " << cut << ": " << value;
        EXPECT_EQ(tv_read_lines(cfg()).front(), "# Tarvello settings") << "cut at " << cut;
        if (cut == steps) {
            EXPECT_EQ(value, "9") << "nothing cut";
        }
        if (cut == 0) {
            EXPECT_EQ(value, "2") << "nothing done";
        }
    }
}

} // namespace
