// The shared folder as each device sees it: the index of who wrote what,
// files read only once wanted and only when they changed, one host's file
// per fetch, and the links' handles by type. Devices are played in one
// process by a service each and the host name they write under.

#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvlocalservice.h"

#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "TestSupport/tvraise.h"

#include <QTemporaryDir>

#include <fstream>
#include <memory>

namespace {

class CloudServiceTest : public TVQuietErrorTest
{
protected:
    void SetUp() override
    {
        TVQuietErrorTest::SetUp();
        ASSERT_TRUE(m_dir.isValid());
        qputenv("XDG_CONFIG_HOME", m_dir.filePath("config").toLocal8Bit());
        m_share = m_dir.filePath("share").toStdString();
        ASSERT_EQ(tv_create_dir(m_share, true), TVErrC_ok);
        ASSERT_EQ(TVLocalService::set_syncdir(m_share), TVErrC_ok);
    }
    void TearDown() override
    {
        be(nullptr, "");
        TVQuietErrorTest::TearDown();
    }
    // The device that acts next: its service and its host name.
    void be(TVLocalService* device, const std::string& host)
    {
        TVLocalService::swap_instance(device);
        TVCloudService::override_host(host);
    }
    std::string index_text() const
    {
        std::ifstream in(m_share + "/" + tvapplication()->get_application() + "-Local-index.txt");
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    QTemporaryDir m_dir;
    std::string m_share;
    TVLocalService m_kitchen, m_study;
};

TEST_F(CloudServiceTest, EachHostWritesItsOwnFileAndTheIndexListsThemInHostOrder)
{
    be(&m_study, "study");
    ASSERT_EQ(m_study.send("/home/a/maths.tvmaths", "study's data\n"), TVErrC_ok);
    be(&m_kitchen, "kitchen");
    ASSERT_EQ(m_kitchen.send("maths.tvmaths", "kitchen's data\n"), TVErrC_ok);
    EXPECT_TRUE(tv_file_exists(m_share + "/study@maths.tvmaths"));
    EXPECT_TRUE(tv_file_exists(m_share + "/kitchen@maths.tvmaths"));
    const std::string index = index_text();
    // The kitchen had never read the index: it still keeps the study's record.
    ASSERT_NE(index.find("!h!study"), std::string::npos) << index;
    EXPECT_LT(index.find("!h!kitchen"), index.find("!h!study")) << index;
    EXPECT_EQ(m_kitchen.file_list(), std::vector<std::string>{"maths.tvmaths"});
    // Nothing but the data files and the index: no temporary stays.
    const QDir share(QString::fromStdString(m_share));
    EXPECT_EQ(share.entryList(QDir::Files | QDir::Hidden).size(), 3);
}

TEST_F(CloudServiceTest, AFileIsReadOnceWantedThenOnlyWhenItChangesOneHostPerFetch)
{
    be(&m_study, "study");
    ASSERT_EQ(m_study.send("maths.tvmaths", "one\n"), TVErrC_ok);
    TVLocalService garage;
    be(&garage, "garage");
    ASSERT_EQ(garage.send("maths.tvmaths", "two\n"), TVErrC_ok);

    be(&m_kitchen, "kitchen");
    // The first ask only marks the file wanted; the next check reads it.
    EXPECT_FALSE(m_kitchen.has_data("maths.tvmaths"));
    EXPECT_TRUE(m_kitchen.has_data("maths.tvmaths"));
    std::string data;
    ASSERT_EQ(m_kitchen.fetch("maths.tvmaths", data), TVErrC_ok);
    EXPECT_EQ(data, "two\n"); // garage sorts first
    ASSERT_EQ(m_kitchen.fetch("maths.tvmaths", data), TVErrC_ok);
    EXPECT_EQ(data, "one\n");
    EXPECT_FALSE(m_kitchen.has_data("maths.tvmaths"));

    be(&m_study, "study");
    ASSERT_EQ(m_study.send("maths.tvmaths", "one, again\n"), TVErrC_ok);
    be(&m_kitchen, "kitchen");
    EXPECT_TRUE(m_kitchen.has_data("maths.tvmaths"));
    ASSERT_EQ(m_kitchen.fetch("maths.tvmaths", data), TVErrC_ok);
    EXPECT_EQ(data, "one, again\n");
    // Forgetting what was read makes every file new again.
    m_kitchen.reset_files();
    EXPECT_TRUE(m_kitchen.has_data("maths.tvmaths"));
}

TEST_F(CloudServiceTest, AVanishedOrUnwritableFolderIsReportedByName)
{
    be(&m_kitchen, "kitchen");
    ASSERT_EQ(m_kitchen.send("maths.tvmaths", "x\n"), TVErrC_ok);
    // The index lists a file that is gone: nothing to read, nothing wrong.
    ASSERT_EQ(tv_delete_file(m_share + "/kitchen@maths.tvmaths", false), TVErrC_ok);
    be(&m_study, "study");
    EXPECT_FALSE(m_study.has_data("maths.tvmaths"));
    EXPECT_FALSE(m_study.has_data("maths.tvmaths"));
    EXPECT_FALSE(get_tverror()->is_error());

    ASSERT_EQ(tv_delete_file(m_share + "/kitchen@maths.tvmaths", false), TVErrC_ok);
    QDir(QString::fromStdString(m_share)).removeRecursively();
    EXPECT_TRUE(istvwarn(m_study.send("maths.tvmaths", "y\n")));
    EXPECT_NE(get_tverror()->get_details(TVAspectSystem).find("study@maths.tvmaths"),
              std::string::npos);
    get_tverror()->clear_all();
    EXPECT_TRUE(istvwarn(TVLocalService::set_syncdir(m_share + "/nowhere/file")));
}

TEST_F(CloudServiceTest, OnlyTheSharedFolderRunsHereDriveUnregisteredAndiCloudAreOff)
{
    EXPECT_EQ(TVCloudInstance::to_file_type(108), TVCloudInstance::E_LocalShare);
    EXPECT_EQ(TVCloudInstance::to_file_type(42), TVCloudInstance::E_None);
    for (int type : {103, 105, 110}) {
        TVCloudInstance link;
        ASSERT_EQ(link.set_file(TVCloudInstance::to_file_type(type), "maths.tvmaths"), TVErrC_ok);
        EXPECT_FALSE(link.is_available());
        EXPECT_EQ(link.get_state(), 1);
        EXPECT_EQ(link.read(), "");
    }
    TVCloudInstance shared;
    ASSERT_EQ(shared.set_file(TVCloudInstance::E_LocalShare, "/x/maths.tvmaths"), TVErrC_ok);
    EXPECT_TRUE(shared.is_available());
    EXPECT_EQ(shared.get_state(), 4);
    EXPECT_EQ(shared.get_name(), "File: maths.tvmaths");
}

} // namespace
