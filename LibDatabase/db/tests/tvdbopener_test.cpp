// Opening a file and what is found: missing, locked, left by a session
// that ended badly, damaged with or without a copy to recover from; and
// the recoveries, each leaving the damaged file as ".bak". No window: the
// load flow asks the user about these outcomes.

#include "LibDatabase/db/tvdbopener.h"

#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "TestSupport/tvdbfiletest.h"
#include "LibDatabase/db/tvdbfilenames.h"
#include "LibDatabase/db/tvlockfile.h"

namespace {

class OpenerTest : public TVDBFileTest
{
protected:
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        std::unique_ptr<TVDatabase> db = reopen();
        ASSERT_EQ(add(*db, "a"), TVErrC_ok);
        ASSERT_EQ(db->save(true, true, true), TVErrC_ok); // verified: a last known good copy
        ASSERT_EQ(add(*db, "b"), TVErrC_ok);
        ASSERT_EQ(db->unload(), TVErrC_ok);
        m_db.set_app_type(C_AppType);
    }
    TVDBOpener::Result open(bool steal = false)
    {
        return TVDBOpener(m_db, &m_lock).open(m_file, false, "", steal);
    }

    TVDatabase m_db;
    TVLockFile m_lock;
};

TEST_F(OpenerTest, PlainFileOpensAndAMissingOneIsSaidToBe)
{
    EXPECT_EQ(open().outcome, TVDBOpener::E_Opened);
    EXPECT_EQ(names(m_db), (std::set<std::string>{"a", "b"}));
    EXPECT_TRUE(m_lock.is_locked());
    ASSERT_EQ(m_db.unload(), TVErrC_ok);
    const std::string missing = tv_dirname(m_file) + "/missing.tvmaths";
    EXPECT_EQ(TVDBOpener(m_db, &m_lock).open(missing, false, "", false).outcome,
              TVDBOpener::E_Missing);
    EXPECT_FALSE(tv_file_exists(missing));
}

TEST_F(OpenerTest, LockedFileIsSaidToBeAndTakenOnlyByStealingALeftLock)
{
    {
        TVLockFile holder;
        ASSERT_EQ(holder.lock(m_file, false), TVErrC_ok);
        EXPECT_EQ(open().outcome, TVDBOpener::E_Locked);
        EXPECT_FALSE(m_db.is_loaded());
        // A live holder can't be robbed.
        EXPECT_EQ(open(true).outcome, TVDBOpener::E_Failed);
        take_messages();
    }
    EXPECT_EQ(open().outcome, TVDBOpener::E_Opened);
}

TEST_F(OpenerTest, LeftoversAndAnUnreadableSessionAreSaidToBeAndDiscardingLoadsTheMainFile)
{
    spill(TVDBFileNames::new_main(m_file), "half a save");
    EXPECT_EQ(open().outcome, TVDBOpener::E_Leftovers);
    EXPECT_FALSE(m_db.is_loaded());
    ASSERT_EQ(TVDBOpener(m_db, nullptr).discard_leftovers(m_file, false, ""), TVErrC_ok);
    EXPECT_EQ(names(m_db), (std::set<std::string>{"a", "b"}));
    EXPECT_FALSE(tv_file_exists(TVDBFileNames::new_main(m_file)));

    ASSERT_EQ(add(m_db, "c"), TVErrC_ok);
    ASSERT_EQ(m_db.unload(), TVErrC_ok);
    {
        TVFileFaults unreadable([this](TVFileFaults::E_FileOp op, const std::string& path,
                                       const std::string&) {
            return op == TVFileFaults::E_OpRead && path == TVDBFileNames::partial(m_file);
        });
        EXPECT_EQ(open().outcome, TVDBOpener::E_DamagedPartial);
    }
    EXPECT_FALSE(m_db.is_loaded());
    // A session file that can't be read goes, with what it held.
    take_messages();
    ASSERT_EQ(TVDBOpener(m_db, nullptr).discard_session(m_file, false, ""), TVErrC_ok);
    EXPECT_EQ(names(m_db), std::set<std::string>{"a"});
}

TEST_F(OpenerTest, DamagedFileNamesItsRecoveryWhichPutsItBackKeepingTheDamagedOne)
{
    spill(m_file, "not a database\n");
    TVDBOpener::Result found = open();
    EXPECT_EQ(found.outcome, TVDBOpener::E_Damaged);
    EXPECT_TRUE(istvwarn(found.result));
    EXPECT_EQ(found.recovery, TVDBFileNames::last_known_good(m_file));
    take_messages();
    ASSERT_EQ(TVDBOpener(m_db, nullptr).recover(m_file), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(m_db), std::set<std::string>{"a"});
    EXPECT_EQ(slurp(TVDBFileNames::kept_damaged(m_file)), "not a database\n");

    // Without a copy, nothing to recover from; giving up keeps the file.
    ASSERT_EQ(m_db.unload(), TVErrC_ok);
    spill(m_file, "damaged again\n");
    ASSERT_EQ(tv_delete_file(TVDBFileNames::last_known_good(m_file), false), TVErrC_ok);
    found = open();
    EXPECT_EQ(found.outcome, TVDBOpener::E_Damaged);
    EXPECT_EQ(found.recovery, "");
    take_messages();
    EXPECT_TRUE(istvwarn(TVDBOpener(m_db, nullptr).recover(m_file)));
    take_messages();
    ASSERT_EQ(TVDBOpener(m_db, nullptr).give_up(m_file), TVErrC_ok);
    EXPECT_FALSE(tv_file_exists(m_file));
    EXPECT_EQ(slurp(TVDBFileNames::kept_damaged(m_file)), "damaged again\n");
}

} // namespace
