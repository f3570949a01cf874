// tvdb spec end to end: a spec file checked and printed back by the built
// tool, and files it must refuse with the file and line.

#include "TestSupport/tvdbrun.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <string>

namespace {

class TVDBSpecCommandTest : public ::testing::Test
{
protected:
    std::string write(const std::string& text)
    {
        const std::string path = m_dir.path().toStdString() + "/kinds.tvo";
        std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
        return path;
    }

    QTemporaryDir m_dir;
};

TEST_F(TVDBSpecCommandTest, PrintsEachSpecOfTheFileInItsExportForm)
{
    const std::string sep(72, '#');
    const std::string exported = sep + "\n{Sum\n$<Left> = prompt();\n$<Right> = init(\"7\");\n}\n" +
                                 sep + "\n{Hard\ninherits Sum;\n$[Step] = ${Default}[];\n}\n";
    // Comments, blank lines and a missing separator don't matter to the reader.
    const std::string path = write("# my kinds\n\n{Sum\n$<Left> = prompt();\n$<Right> = init(\"7\");"
                                   "\n}\n\n{Hard\ninherits Sum;\n$[Step] = ${Default}[];\n}\n");
    const TVDBRun run = run_tvdb({"spec", path});
    EXPECT_EQ(run.m_exitCode, 0) << run.m_err;
    EXPECT_EQ(run.m_out, exported);
    // Printed back, it reads back as itself.
    const TVDBRun again = run_tvdb({"spec", write(run.m_out)});
    EXPECT_EQ(again.m_out, exported);
}

TEST_F(TVDBSpecCommandTest, FailuresNameTheFileAndLine)
{
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"{Sum\n$<Left> = prompt();\n$<Right> = guess();\n}\n",
         ":3: error  invalid value \"guess\" after assignment.\n"},
        {"{Sum\n$<Left> = prompt();\n", "(FILE:2): error: Unterminated spec \"Sum\"\n"},
        {"{Hard\ninherits Easy;\n}\n",
         "Spec Inheritance Error: Hard Could not find inherited spec name Easy.\n"},
    };
    for (const auto& c : cases) {
        const std::string path = write(c.text);
        std::string message = c.message;
        if (message.find("FILE") != std::string::npos)
            message.replace(message.find("FILE"), 4, path);
        else if (message[0] == ':')
            message = path + message;
        const TVDBRun run = run_tvdb({"spec", path});
        EXPECT_EQ(run.m_exitCode, 1) << c.text;
        EXPECT_EQ(run.m_out, "") << c.text;
        EXPECT_EQ(run.m_err, "tvdb spec: " + message) << c.text;
    }
    EXPECT_EQ(run_tvdb({"spec", m_dir.path().toStdString() + "/none.tvo"}).m_exitCode, 1);
    EXPECT_EQ(run_tvdb({"spec"}).m_exitCode, 2);
    const TVDBRun help = run_tvdb({"spec", "--help"});
    EXPECT_EQ(help.m_exitCode, 0);
    EXPECT_NE(help.m_out.find("Usage: tvdb spec FILE.tvo"), std::string::npos);
}

} // namespace
