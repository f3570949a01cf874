// Sync through a shared folder, with devices played in one process: each
// a real database in a folder of its own, with its own host name and its
// own view of the shared place. What one device pushes another pulls and
// ignores, replaces or merges by the times the files carry; a random run
// of three devices ends with all three holding the same objects, the ones
// a plain model of "the latest version wins" says.

#include "TestSupport/tvdbfiletest.h"

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvlog.h"
#include "LibDatabase/db/tvexternaldb.h"

#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <tuple>

namespace {

constexpr int C_Share = TVCloudInstance::E_LocalShare;

struct Device {
    std::string host;
    std::string folder;
    TVLocalService service;
    std::unique_ptr<TVDatabase> db;
};

class SyncTest : public TVDBFileTest
{
protected:
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        m_share = m_dir.path().toStdString() + "/share";
        ASSERT_EQ(tv_create_dir(m_share, true), TVErrC_ok);
        ASSERT_EQ(TVLocalService::set_syncdir(m_share), TVErrC_ok);
    }
    void TearDown() override
    {
        for (auto& device : m_devices) {
            be(*device);
            device->db.reset();
        }
        TVLocalService::swap_instance(nullptr);
        TVCloudService::override_host("");
        TVDBFileTest::TearDown();
    }

    // A device with a new database of the same file name as the others',
    // linked to the shared folder.
    Device& device(const std::string& host)
    {
        m_devices.push_back(std::make_unique<Device>());
        Device& device = *m_devices.back();
        device.host = host;
        device.folder = host;
        be(device);
        device.db = reopen();
        TVExternalDB* link = nullptr;
        EXPECT_EQ(device.db->add_external(C_Share, "maths", 2, link), TVErrC_ok) << take_messages();
        // The link is part of the file; saved without a stamp, nothing is pushed.
        EXPECT_EQ(device.db->save(false, false, false), TVErrC_ok) << take_messages();
        return device;
    }
    // Time moves a second at every step: objects and files are stamped to
    // the second, and no two stamps may be equal.
    void be(Device& device)
    {
        use_folder(device.folder);
        TVLocalService::swap_instance(&device.service);
        TVCloudService::override_host(device.host);
        m_clock.advance(1);
    }
    // A stamped save, as the autosave does: it pushes.
    void push(Device& device)
    {
        be(device);
        ASSERT_EQ(device.db->save(true, false, false), TVErrC_ok) << take_messages();
    }
    // Pulls until nothing more comes, as the window's timer does; gives
    // what the last pull that did something did (sync_state), or 1.
    int pull(Device& device)
    {
        int state = 1;
        for (int i = 0; i < 10; ++i) {
            be(device);
            EXPECT_EQ(device.db->pull_all(!device.db->needs_save()), TVErrC_ok) << take_messages();
            if (device.db->sync_state() != 1)
                state = device.db->sync_state();
            // The first ask for a new host's file only marks it wanted.
            if (!device.db->has_ext_data() && !device.db->has_ext_data())
                break;
        }
        return state;
    }
    TVDBTestNode* live(Device& device, const std::string& name)
    {
        for (int i = 0; i < device.db->get_nobjects(); ++i) {
            auto* node = dynamic_cast<TVDBTestNode*>(device.db->get_object_by_index(i));
            if (node != nullptr && !node->is_deleted() && node->m_name == name)
                return node;
        }
        return nullptr;
    }
    void rename(Device& device, const std::string& from, const std::string& to)
    {
        be(device);
        TVDBTestNode* node = live(device, from);
        ASSERT_NE(node, nullptr) << from;
        node->m_name = to;
        node->mark_changed(TVLOCATION, true);
        ASSERT_EQ(device.db->complete_operation("Rename"), TVErrC_ok);
    }

    std::string m_share;
    std::vector<std::unique_ptr<Device>> m_devices;
};

TEST_F(SyncTest, LinkKeepsItsTimesAcrossTheFileAndForgetsAPeersMergeAfterAWeek)
{
    TVExternalDB link(C_Share, "maths");
    const TVDate now = TVDateUtils::now();
    link.mark_push(now);
    link.set_pulltime(now - TVDuration(3600L), "study");
    link.set_pulltime(now - TVDuration(8 * 86400L), "garage");
    std::string text;
    ASSERT_EQ(link.object_to_string(text, 0), TVErrC_ok);
    EXPECT_EQ(text.find("garage"), std::string::npos);
    TVObject* made = nullptr;
    ASSERT_EQ(TVObject::object_from_string(text, made, 0), TVErrC_ok);
    std::unique_ptr<TVObject> copy(made);
    auto* back = dynamic_cast<TVExternalDB*>(copy.get());
    ASSERT_NE(back, nullptr);
    std::string again;
    ASSERT_EQ(back->object_to_string(again, 0), TVErrC_ok);
    EXPECT_EQ(again, text);
    EXPECT_TRUE(back->is_available());

    // Our own write, old news and unknown dates are ignored.
    EXPECT_FALSE(back->should_pull(now, now, "study"));
    EXPECT_FALSE(back->should_pull(now - TVDuration(7200L), now, "study"));
    EXPECT_TRUE(back->should_pull(now - TVDuration(60L), now, "study"));
    EXPECT_TRUE(back->should_pull(now - TVDuration(60L), now, "garage"));
    EXPECT_FALSE(back->should_pull(TVDateUtils::invalid_date(), now, "garage"));
}

// The tree of a pull: a device that never wrote takes the whole file; one
// with an unsaved edit merges instead; a device whose last write the peer
// took in takes the peer's whole file again.
TEST_F(SyncTest, FirstPullReplacesUnlessSomethingOfOursIsNotInTheirs)
{
    Device& kitchen = device("kitchen");
    Device& study = device("study");
    be(kitchen);
    ASSERT_EQ(add(*kitchen.db, "tables"), TVErrC_ok);
    push(kitchen);
    EXPECT_EQ(pull(study), 2);
    EXPECT_EQ(names(*study.db), std::set<std::string>{"tables"});

    Device& garage = device("garage");
    ASSERT_EQ(add(*garage.db, "bonds"), TVErrC_ok);
    EXPECT_EQ(pull(garage), 3);

    EXPECT_EQ(names(*garage.db), (std::set<std::string>{"bonds", "tables"}));

    // The study's write reaches the kitchen, which merged nothing since.
    rename(study, "tables", "tables 7");
    push(study);
    pull(kitchen);
    EXPECT_EQ(names(*kitchen.db), std::set<std::string>{"tables 7"});
    // The replaced file is the kitchen's newest backup.
    EXPECT_FALSE(tv_file_exists(m_share + "/kitchen@maths.bk0"));
}

TEST_F(SyncTest, APeerFileCutBetweenObjectsIsMergedNeverTakenWhole)
{
    Device& kitchen = device("kitchen");
    Device& study = device("study");
    be(kitchen);
    ASSERT_EQ(add(*kitchen.db, "tables"), TVErrC_ok);
    ASSERT_EQ(add(*kitchen.db, "bonds"), TVErrC_ok);
    push(kitchen);
    EXPECT_EQ(pull(study), 2);
    rename(study, "tables", "tables 7");
    push(study);
    // A copier shows half the file, cut where the last object starts: it
    // reads, and it says it holds the kitchen's latest write.
    const std::string whole = slurp(m_share + "/study@maths");
    spill(m_share + "/study@maths", whole.substr(0, whole.rfind("@O:\n{TVDBTestNode")));
    pull(kitchen);
    EXPECT_EQ(names(*kitchen.db), (std::set<std::string>{"tables 7", "bonds"}));
}

TEST_F(SyncTest, SameObjectChangedOnTwoDevicesTakesTheLaterChangeOnBoth)
{
    Device& kitchen = device("kitchen");
    ASSERT_EQ(add(*kitchen.db, "tables"), TVErrC_ok);
    push(kitchen);
    Device& study = device("study");
    pull(study);
    rename(kitchen, "tables", "early");
    rename(study, "tables", "late");
    push(kitchen);
    push(study);
    pull(kitchen);
    pull(study);
    EXPECT_EQ(names(*kitchen.db), std::set<std::string>{"late"});
    EXPECT_EQ(names(*study.db), std::set<std::string>{"late"});
}

// Two devices gave one id to two different objects: both survive, the
// incoming one keeps the id, the local one is renumbered; coming back the
// other way, the renumbered one is known by its creation.
TEST_F(SyncTest, TwoObjectsUnderOneIdBothSurviveOnEveryDevice)
{
    Device& kitchen = device("kitchen");
    Device& study = device("study");
    ASSERT_EQ(add(*kitchen.db, "kitchen's"), TVErrC_ok);
    be(study);
    ASSERT_EQ(add(*study.db, "study's"), TVErrC_ok);
    push(kitchen);
    push(study);
    for (int round = 0; round < 2; ++round) {
        pull(kitchen);
        push(kitchen);
        pull(study);
        push(study);
    }
    const std::set<std::string> both{"kitchen's", "study's"};
    EXPECT_EQ(names(*kitchen.db), both);
    EXPECT_EQ(names(*study.db), both);
    std::string logs;
    for (Device* at : {&kitchen, &study}) {
        be(*at);
        logs += tvlog()->read(TVDatabase::C_DatabaseService);
    }
    EXPECT_NE(logs.find("Collisions: 1"), std::string::npos) << logs;
}

// An incoming object keeps what it refers to when another incoming object
// then takes the id of one of ours: here a child that came before its
// parent in the peer's file, with both ids used here by other objects.
TEST_F(SyncTest, IncomingChildKeepsItsParentWhenThatParentsIdWasOurs)
{
    Device& kitchen = device("kitchen");
    Device& study = device("study");
    be(kitchen);
    ASSERT_EQ(add(*kitchen.db, "sum"), TVErrC_ok);
    ASSERT_EQ(add(*kitchen.db, "set"), TVErrC_ok);
    TVDBTestNode* sum = live(kitchen, "sum");
    ASSERT_EQ(kitchen.db->reparent(sum, live(kitchen, "set"), TVDBTestNode::C_KidsTag), TVErrC_ok);
    sum->mark_changed(TVLOCATION, true);
    ASSERT_EQ(kitchen.db->complete_operation("Move"), TVErrC_ok);
    be(study);
    ASSERT_EQ(add(*study.db, "mine"), TVErrC_ok);
    ASSERT_EQ(add(*study.db, "other"), TVErrC_ok);
    push(kitchen);
    EXPECT_EQ(pull(study), 3);

    EXPECT_EQ(names(*study.db), (std::set<std::string>{"mine", "other", "set", "sum"}));
    ASSERT_NE(live(study, "sum"), nullptr);
    EXPECT_EQ(live(study, "sum")->get_parent(), live(study, "set"));
    EXPECT_EQ(live(study, "mine")->get_parent(), nullptr);
}

// What must not come in: half a file, a damaged one, another program's
// data under the same name, a newer release's; and a shared folder that
// vanished. The local file is never touched, and a newer release pauses
// the link's pushes.
TEST_F(SyncTest, PeerFilesThatCantBeTakenInLeaveTheLocalFileAsItWas)
{
    Device& kitchen = device("kitchen");
    ASSERT_EQ(add(*kitchen.db, "tables"), TVErrC_ok);
    push(kitchen);
    const std::string before = slurp(m_file);
    std::string good;
    {
        Device& study = device("study");
        ASSERT_EQ(add(*study.db, "bonds"), TVErrC_ok);
        push(study);
        good = slurp(m_share + "/study@maths");
    }
    std::string foreign = good;
    foreign.replace(foreign.find(C_AppType), std::string(C_AppType).size(), "Diary");
    std::string newer = good;
    newer.insert(newer.find("!AppRelease!") + 12, "99.0");
    const struct {
        const char* name;
        std::string text;
    } rows[] = {
        {"cut short", good.substr(0, good.size() / 2)},
        {"garbled", "TVDatabase:7685\n!Version!0\n@O:\n{NoSuchClass\n}\n"},
        {"another program's", foreign},
        {"a newer release's", newer},
    };
    for (const auto& row : rows) {
        be(*m_devices.back());
        spill(m_share + "/study@maths", row.text);
        be(kitchen);
        pull(kitchen);
        EXPECT_EQ(names(*kitchen.db), std::set<std::string>{"tables"});
        EXPECT_EQ(slurp(m_file), before);
    }
    EXPECT_FALSE(kitchen.db->get_external_no(0)->can_push());

    // A folder that went away: the push fails by its name, the file stays.
    TVExternalDB* link = nullptr;
    be(kitchen);
    kitchen.db->remove_external(C_Share);
    ASSERT_EQ(kitchen.db->add_external(C_Share, "maths", 3, link), TVErrC_ok);
    take_messages();
    QDir(QString::fromStdString(m_share)).removeRecursively();
    ASSERT_EQ(add(*kitchen.db, "chess"), TVErrC_ok);
    be(kitchen);
    EXPECT_EQ(kitchen.db->save(true, false, false), TVErrC_ok);
    EXPECT_NE(take_messages().find("kitchen@maths"), std::string::npos);
    EXPECT_EQ(names(*reopen()), (std::set<std::string>{"chess", "tables"}));
}

// Three devices, random operations and random sync rounds in a random
// order; after a last round everywhere all hold the same objects, and
// those are what the model says: for each object (known by its creation),
// the version with the latest change, deleted or not.
TEST_F(SyncTest, RandomRunOfThreeDevicesConvergesOnTheLatestVersionOfEachObject)
{
    // TV_SYNC_SEED and TV_SYNC_STEPS run it longer or otherwise.
    const char* seedText = std::getenv("TV_SYNC_SEED");
    const char* stepsText = std::getenv("TV_SYNC_STEPS");
    const unsigned seed = seedText != nullptr ? std::strtoul(seedText, nullptr, 10) : 20261125;
    const int steps = stepsText != nullptr ? std::atoi(stepsText) : 120;
    std::cout << "sync model seed " << seed << ", " << steps << " steps" << std::endl;
    std::mt19937 random(seed);
    Device* devices[] = {&device("kitchen"), &device("study"), &device("garage")};
    using Key = std::pair<int, std::string>; // create id and create time
    struct Version {
        std::string name;
        bool deleted;
        TVDate modified;
    };
    const auto versions = [](const TVDatabase& db) {
        std::map<Key, Version> found;
        for (int i = 0; i < db.get_nobjects(); ++i)
            if (const auto* node = dynamic_cast<const TVDBTestNode*>(db.get_object_by_index(i)))
                found[{node->get_create_id(), node->get_create_time().to_string("%Y%j%H%M%S%U")}] =
                    {node->m_name, node->is_deleted(), node->get_modify_time()};
        return found;
    };
    int made = 0;
    for (int step = 0; step < steps; ++step) {
        Device& at = *devices[random() % 3];
        be(at);
        const std::set<std::string> live = names(*at.db);
        switch (random() % 7) {
        case 0:
        case 1:
            ASSERT_EQ(add(*at.db, "n" + std::to_string(made++)), TVErrC_ok);
            break;
        case 2:
            if (!live.empty())
                rename(at, *std::next(live.begin(), random() % live.size()),
                       "c" + std::to_string(step));
            break;
        case 3:
            if (!live.empty()) {
                TVDBTestNode* node = this->live(at, *std::next(live.begin(), random() % live.size()));
                ASSERT_EQ(at.db->delete_object(node->get_id(), "Delete"), TVErrC_ok);
            }
            break;
        case 4:
            if (at.db->can_undo()) {
                ASSERT_EQ(at.db->undo(), TVErrC_ok) << take_messages();
            }
            break;
        case 5:
            push(at);
            break;
        default:
            pull(at);
            break;
        }
    }
    // Each device writes what it holds, so that no file in the shared
    // folder holds a change its device has undone since (whether a peer
    // saw that is a matter of timing). Then the model expects the latest
    // version of each object on any device.
    for (Device* at : devices)
        push(*at);
    std::map<Key, Version> expected;
    for (Device* at : devices)
        for (const auto& [key, version] : versions(*at->db)) {
            auto it = expected.find(key);
            if (it == expected.end() || it->second.modified < version.modified)
                expected[key] = version;
        }
    for (int round = 0; round < 3; ++round)
        for (Device* at : devices) {
            pull(*at);
            push(*at);
        }
    for (Device* at : devices) {
        std::map<Key, Version> found = versions(*at->db);
        ASSERT_EQ(found.size(), expected.size());
        for (const auto& [key, version] : expected) {
            ASSERT_EQ(found.count(key), 1u) << version.name;
            EXPECT_EQ(found[key].name, version.name);
            EXPECT_EQ(found[key].deleted, version.deleted) << version.name;
        }
    }
}

} // namespace
