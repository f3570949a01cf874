// Runs the built program as a user would, in a home of its own.

#include <gtest/gtest.h>


#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

class ProgramTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        QDir(home.path()).mkpath("run");
        QFile::setPermissions(home.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home.path());
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        env.insert("XDG_CACHE_HOME", home.filePath("cache"));
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        env.insert("XDG_RUNTIME_DIR", home.filePath("run"));
        env.insert("QT_QPA_PLATFORM", "minimal");
        env.insert("ASAN_OPTIONS", "detect_leaks=0");
        return env;
    }

    Outcome run(const QStringList& args)
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.start(TV_PROGRAM, args);
        EXPECT_TRUE(process.waitForFinished(60000)) << "the program did not end";
        Outcome outcome;
        outcome.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        outcome.out = process.readAllStandardOutput().toStdString();
        outcome.err = process.readAllStandardError().toStdString();
        return outcome;
    }

    // Every file below the home, relative to it.
    QStringList files() const
    {
        QStringList found;
        QDirIterator it(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            found << QDir(home.path()).relativeFilePath(it.next());
        return found;
    }

    QTemporaryDir home;
};

const char* const C_Usage = "TarvelloMaths -h|--help\n"
                            "    Display this help page.\n";
const char* const C_MathsValue = "TarvelloMaths (DB options) [maths]\n"
                                 "    Specify the maths DB to load\n"
                                 "    maths                Name of the maths DB file.\n";

} // namespace

TEST_F(ProgramTest, StandardSwitchesAnswerAndLeaveNoFiles)
{
    const struct {
        const char* arg;
        const char* expected; // at the start of standard output
    } rows[] = {
        {"--help", C_Usage},
        {"-h", C_Usage},
        {"--version", "TarvelloMaths 2.0.0\n  Build Tag:  TarvelloMaths-2-0-0-8\n  Build Date: 02-Nov-2022\n"},
        {"-v", "TarvelloMaths 2.0.0\n"},
        {"--tag", "TarvelloMaths-2-0-0-8\n"},
        {"--release", "TarvelloMaths-2.0.0\n"},
        {"--man", "NAME\n        TarvelloMaths - Maths Tutorials and Exercises\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arg);
        const Outcome outcome = run({row.arg});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.out.rfind(row.expected, 0), 0u) << outcome.out;
        EXPECT_EQ(outcome.err, "");
    }
    EXPECT_NE(run({"--help"}).out.find(C_MathsValue), std::string::npos);
    EXPECT_EQ(files(), QStringList());
}

// What a newcomer meets: both programs answer the standard switches on a
// plain shell, on the platform that draws off screen and with no runtime
// folder, with no sanitizer options set and nothing on standard error.
TEST_F(ProgramTest, ProgramsAnswerHelpAndVersionOnAPlainShell)
{
    QProcessEnvironment env = environment();
    env.remove("ASAN_OPTIONS");
    env.remove("LSAN_OPTIONS");
    env.remove("XDG_RUNTIME_DIR");
    env.insert("QT_QPA_PLATFORM", "offscreen");
    for (const char* program : {TV_PROGRAM, TV_TVDB}) {
        for (const char* arg : {"--help", "--version"}) {
            SCOPED_TRACE(std::string(program) + " " + arg);
            QProcess process;
            process.setProcessEnvironment(env);
            process.start(program, {arg});
            ASSERT_TRUE(process.waitForFinished(60000));
            EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
            EXPECT_EQ(process.exitCode(), 0);
            EXPECT_FALSE(process.readAllStandardOutput().isEmpty());
            EXPECT_EQ(process.readAllStandardError().toStdString(), "");
        }
    }
}

// The parser tells the user and goes on to the start, which in a fresh
// home asks its first-use question: the test reads the reason and ends it.
TEST_F(ProgramTest, WrongArgumentsGiveTheReasonAndTheUsage)
{
    const struct {
        QStringList args;
        const char* reason;
    } rows[] = {
        {{"--bogus"}, "Error: Invalid option --bogus\n\nTarvelloMaths -h|--help\n"},
        {{"-x"}, "Error: Invalid option -x\n\n"},
        {{"a.tvmaths", "b.tvmaths"}, "Error: Too many parameters (starting from b.tvmaths).\n\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setWorkingDirectory(home.path());
        process.start(TV_PROGRAM, row.args);
        std::string out;
        for (int i = 0; i < 600 && out.find("TarvelloMaths -h|--help") == std::string::npos &&
                        process.state() != QProcess::NotRunning;
             ++i) {
            process.waitForReadyRead(100);
            out += process.readAllStandardOutput().toStdString();
        }
        process.kill();
        process.waitForFinished(10000);
        out += process.readAllStandardOutput().toStdString();
        EXPECT_EQ(out.rfind(row.reason, 0), 0u) << out;
    }
}

// With no screen nobody can answer the welcome of a first start: it gives
// Quit at once, says so, and the program ends by itself without a file.
TEST_F(ProgramTest, FirstStartWithNobodyToAnswerEndsByItself)
{
    const Outcome outcome = run({});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.err.find("Unattended \"Welcome\" answered \"Quit\": Welcome to Tarvello Maths!"),
              std::string::npos)
        << outcome.err;
    EXPECT_TRUE(files().filter(".tvmaths").isEmpty()) << files().join(" ").toStdString();
}
