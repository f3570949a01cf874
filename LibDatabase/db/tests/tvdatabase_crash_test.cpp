// Nothing that returned is lost: a child process runs the crash script on
// a database and is killed (SIGKILL) at a random moment, again and again.
// After each kill the normal load must open the file, every operation the
// child reported as returned must be there, the one in flight either whole
// or absent, and nothing else changed. The delays come from a fixed seed,
// printed; TV_CRASH_KILLS and TV_CRASH_SEED change the count and the seed
// (make crash KILLS=5000).

#include "LibDatabase/db/tests/tvdbcrashscript.h"
#include "TestSupport/tvdbfiletest.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

namespace {

const int C_DefaultKills = 30;
const unsigned C_DefaultSeed = 20240602;
// Long enough to land anywhere from the child's start to deep into its
// script, short enough to keep make check quick.
const int C_MaxDelayMs = 250;
const int C_WaitMs = 30000;

long env_number(const char* name, long fallback)
{
    const char* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::strtol(text, nullptr, 10) : fallback;
}

class DatabaseCrashTest : public TVDBFileTest
{
protected:
    // Runs the child for delay_ms, kills it, and returns its output.
    static std::string run_child(const std::string& file, int delay_ms)
    {
        QProcess child;
        child.start(QString::fromUtf8(TV_CRASH_CHILD_PATH), {QString::fromStdString(file)});
        EXPECT_TRUE(child.waitForStarted(C_WaitMs));
        if (!child.waitForFinished(delay_ms)) {
            child.kill();
            EXPECT_TRUE(child.waitForFinished(C_WaitMs));
        } else {
            EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardOutput().toStdString();
        }
        return child.readAllStandardOutput().toStdString();
    }
};

TEST_F(DatabaseCrashTest, KilledAtRandomLosesNothingThatReturned)
{
    const long kills = env_number("TV_CRASH_KILLS", C_DefaultKills);
    const auto seed = static_cast<unsigned>(env_number("TV_CRASH_SEED", C_DefaultSeed));
    std::cout << "crash test: " << kills << " kills, seed " << seed << std::endl;
    RecordProperty("seed", std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> delay(0, C_MaxDelayMs);

    reopen(); // makes the file
    int step = 0; // the next step of the script, as the file says
    std::set<std::string> model;
    long totalDone = 0;
    for (long kill = 0; kill < kills; ++kill) {
        const int delayMs = delay(random);
        SCOPED_TRACE("kill " + std::to_string(kill) + " after " + std::to_string(delayMs) +
                     " ms, seed " + std::to_string(seed));
        std::istringstream out(run_child(m_file, delayMs));
        std::string word;
        int number = 0;
        while (out >> word) {
            ASSERT_NE(word, "fail") << out.rdbuf();
            ASSERT_TRUE(out >> number);
            if (word == "start") {
                // One ahead when the child redid the step a kill cut between
                // its undo and redo, which the last check found absent.
                if (number == step + 1)
                    TVDBCrashScript::model(step++, model);
                ASSERT_EQ(number, step);
                continue;
            }
            // Returned: it must survive whatever comes next.
            ASSERT_EQ(number, step);
            TVDBCrashScript::model(step++, model);
            ++totalDone;
        }

        std::unique_ptr<TVDatabase> db = reopen();
        take_messages(); // a cut partial block is reported and is no fault
        const int found = TVDBCrashScript::next_step(*db);
        // The operation in flight when the kill came is whole or absent.
        ASSERT_TRUE(found == step || found == step + 1) << "file at " << found << ", " << step
                                                        << " returned";
        if (found == step + 1)
            TVDBCrashScript::model(step++, model);
        ASSERT_EQ(TVDBCrashScript::names(*db), model);
    }
    std::cout << "crash test: " << totalDone << " operations returned, file at step " << step
              << std::endl;
    EXPECT_GT(totalDone, 0);
}

} // namespace
