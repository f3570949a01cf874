// Sync between real processes: three devices, each a home and a file of
// its own, take turns on a shared folder, each run a process that adds
// nodes, pulls and pushes, and is killed at a random moment now and then
// (mid-operation, mid-pull, mid-save). In one variant the devices share a
// folder; in the other each has its own and rsync carries the files between
// them, as a family's sync client would. Afterwards every file opens, no
// operation that returned is lost, and after quiet rounds all devices hold
// the same nodes. TV_SOAK_RUNS and TV_SOAK_SEED run it longer or otherwise
// (make sync-soak).

#include "LibDatabase/db/tvdatabase.h"
#include "TestSupport/tvdbtestnode.h"
#include "TestSupport/tvraise.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdlib>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const int C_DefaultRuns = 18;
const unsigned C_DefaultSeed = 20261125;
const int C_MaxDelayMs = 200;
const int C_WaitMs = 60000;

long env_number(const char* name, long fallback)
{
    const char* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::strtol(text, nullptr, 10) : fallback;
}

class SyncSoakTest : public TVQuietErrorTest, public ::testing::WithParamInterface<bool>
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        get_tverror()->set_action(TVActContinue, TVSevError);
        ASSERT_TRUE(m_dir.isValid());
    }
    std::string home(const std::string& host) const
    {
        return m_dir.path().toStdString() + "/" + host;
    }
    std::string share(const std::string& host) const
    {
        return m_dir.path().toStdString() + (GetParam() ? "/share-" + host : "/share");
    }
    QProcessEnvironment environment(const std::string& host) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
            env.insert(name, QString::fromStdString(home(host) + "/" + name));
        return env;
    }
    // One run of a device, killed after delay_ms when it is not done by
    // then (-1: never); the names whose operation returned go to done.
    void run(const std::string& host, int first, int count, int delay_ms,
             std::set<std::string>& done)
    {
        QDir().mkpath(QString::fromStdString(share(host)));
        QProcess child;
        child.setProcessEnvironment(environment(host));
        child.start(QString::fromUtf8(TV_SYNC_CHILD_PATH),
                    {QString::fromStdString(home(host) + "/maths.tvmaths"),
                     QString::fromStdString(share(host)), QString::fromStdString(host),
                     QString::number(first), QString::number(count)});
        ASSERT_TRUE(child.waitForStarted(C_WaitMs));
        if (!child.waitForFinished(delay_ms < 0 ? C_WaitMs : delay_ms)) {
            child.kill();
            ASSERT_TRUE(child.waitForFinished(C_WaitMs));
        }
        std::istringstream out(child.readAllStandardOutput().toStdString());
        std::string word;
        while (out >> word) {
            ASSERT_NE(word, "fail") << word << " " << out.rdbuf();
            if (word == "done") {
                ASSERT_TRUE(out >> word);
                done.insert(word);
            }
        }
        if (GetParam())
            carry(host);
    }
    // What the device wrote goes to every other device's folder, newer files
    // only, as a sync client does.
    void carry(const std::string& from)
    {
        for (const std::string& to : m_hosts) {
            if (to == from)
                continue;
            QProcess rsync;
            rsync.start("rsync", {"-a", "--update", QString::fromStdString(share(from) + "/"),
                                  QString::fromStdString(share(to) + "/")});
            ASSERT_TRUE(rsync.waitForFinished(C_WaitMs));
            ASSERT_EQ(rsync.exitCode(), 0) << rsync.readAllStandardError().toStdString();
        }
    }
    // The live names of a device's file, through the normal load.
    std::set<std::string> names(const std::string& host)
    {
        for (const char* name : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
            qputenv(name, QByteArray::fromStdString(home(host) + "/" + name));
        TVDatabase db;
        db.set_app_type("TestApp");
        std::set<std::string> found;
        EXPECT_EQ(db.read(home(host) + "/maths.tvmaths", true, true), TVErrC_ok) << host;
        for (int i = 0; i < db.get_nobjects(); ++i)
            if (const auto* node = dynamic_cast<const TVDBTestNode*>(db.get_object_by_index(i)))
                if (!node->is_deleted())
                    found.insert(node->m_name);
        get_tverror()->clear_all();
        return found;
    }

    QTemporaryDir m_dir;
    const std::vector<std::string> m_hosts{"kitchen", "study", "garage"};
};

TEST_P(SyncSoakTest, KilledDevicesLoseNothingAndConverge)
{
    const long runs = env_number("TV_SOAK_RUNS", C_DefaultRuns);
    const auto seed = static_cast<unsigned>(env_number("TV_SOAK_SEED", C_DefaultSeed));
    std::cout << "sync soak: " << runs << " runs, seed " << seed
              << (GetParam() ? ", rsync between folders" : ", one shared folder") << std::endl;
    std::mt19937 random(seed);
    std::set<std::string> done;
    int next = 0;
    for (long i = 0; i < runs; ++i) {
        const std::string& host = m_hosts[random() % m_hosts.size()];
        const int count = 1 + static_cast<int>(random() % 3);
        // One run in three is killed somewhere along the way.
        const int delay = random() % 3 == 0 ? static_cast<int>(random() % C_MaxDelayMs) : -1;
        SCOPED_TRACE("run " + std::to_string(i) + " of " + host);
        run(host, next, count, delay, done);
        next += count;
        // What returned is in the device's file, whatever came after.
        const std::set<std::string> own = names(host);
        for (const std::string& name : done)
            if (name.compare(0, host.size() + 1, host + "-") == 0) {
                EXPECT_EQ(own.count(name), 1u) << name;
            }
    }
    for (int round = 0; round < 4; ++round)
        for (const std::string& host : m_hosts)
            run(host, next, 0, -1, done);
    const std::set<std::string> first = names(m_hosts[0]);
    for (const std::string& host : m_hosts) {
        SCOPED_TRACE(host);
        const std::set<std::string> found = names(host);
        EXPECT_EQ(found, first);
        for (const std::string& name : done)
            EXPECT_EQ(found.count(name), 1u) << name;
    }
    std::cout << "sync soak: " << done.size() << " operations returned, " << first.size()
              << " nodes on every device" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(Folders, SyncSoakTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? std::string("CarriedByRsync")
                                               : std::string("OneSharedFolder");
                         });

} // namespace
