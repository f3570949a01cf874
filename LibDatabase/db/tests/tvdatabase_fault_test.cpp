// Saving through its faults (TVDBSaver, which does every save, rename and
// copy of a database's files): every disk operation of a save, a partial
// save, a save under another name and a snapshot's restore fails in turn,
// once or from there on (a crash), and what complete_operation had
// returned for must load again.

#include "TestSupport/tvdbfiletest.h"

#include "LibCore/fileutils/tvfilefaults.h"
#include "LibDatabase/db/tvdbsaver.h"
#include "LibCore/fileutils/tvfileutils.h"

#include <QDir>

#include <string>

namespace {

// Fails the disk operation numbered target (from 0), and with crash every
// one after it too; remembers the path of the first failure.
class FaultAt
{
public:
    FaultAt(int target, bool crash)
        : m_faults([this, target, crash](TVFileFaults::E_FileOp, const std::string& path,
                                         const std::string&) {
              const int n = m_count++;
              const bool fail = n == target || (crash && n > target);
              if (fail && m_path.empty())
                  m_path = path;
              return fail;
          })
    {
    }
    bool fired() const { return !m_path.empty(); }
    const std::string& path() const { return m_path; }

private:
    int m_count = 0;
    std::string m_path;
    TVFileFaults m_faults;
};

class DatabaseFaultTest : public TVDBFileTest
{
protected:
    // Runs step under a fault at each disk operation in turn, on a fresh
    // database where "a" is saved and "b" is only in the partial file,
    // until a run meets no fault. Then reopens as after a restart.
    // Then check(reopened, done, fired) says whether it is whole.
    template <class Step, class Check>
    void each_fault(bool crash, Step step, Check check)
    {
        for (int target = 0;; ++target) {
            SCOPED_TRACE((crash ? "crash at operation " : "fault at operation ") +
                         std::to_string(target));
            use_folder((crash ? "crash" : "fault") + std::to_string(target) + "-" +
                       std::to_string(m_rounds));
            std::set<std::string> done{"a", "b"};
            bool fired = false;
            {
                std::unique_ptr<TVDatabase> db = reopen();
                ASSERT_EQ(add(*db, "a"), TVErrC_ok);
                ASSERT_EQ(TVDBSaver(*db).save(true, true, false), TVErrC_ok);
                ASSERT_EQ(add(*db, "b"), TVErrC_ok);
                FaultAt fault(target, crash);
                const int result = step(*db, done);
                fired = fault.fired();
                const std::string messages = take_messages();
                // A fault after the commit point (an unflushed log record)
                // may be ridden over; one that fails the call is named.
                if (fired && istvwarn(result)) {
                    EXPECT_NE(messages.find(tv_filename(fault.path())), std::string::npos)
                        << fault.path() << "\n" << messages;
                } else if (!fired) {
                    EXPECT_EQ(result, TVErrC_ok) << messages;
                }
            } // dropped where it stood, as by a crash
            std::unique_ptr<TVDatabase> db = reopen();
            check(*db, done, fired);
            EXPECT_FALSE(get_tverror()->is_error()) << take_messages();
            if (!fired)
                break;
        }
        ++m_rounds;
    }
    template <class Step>
    void each_fault(bool crash, Step step)
    {
        each_fault(crash, step, [](const TVDatabase& db, const std::set<std::string>& done, bool) {
            EXPECT_EQ(names(db), done);
        });
    }

    // The names that a read-only load of file and its partial file shows;
    // none when it doesn't load.
    static std::set<std::string> names_in(const std::string& file)
    {
        TVDatabase db;
        db.set_app_type(C_AppType);
        if (istvwarn(db.read(file, true, true)))
            return {"(does not load: " + take_messages() + ")"};
        return names(db);
    }

    // Another database's main file, holding only a node called name: the
    // saved main file with "a" renamed, written past the fault seam.
    std::string write_other(const std::string& file, const std::string& name)
    {
        std::string text = slurp(m_file);
        const std::string from = "!n!a\n";
        const size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos);
        text.replace(at, from.size(), "!n!" + name + "\n");
        spill(file, text);
        return text;
    }

    // each_fault calls so far: each runs in folders of its own.
    int m_rounds = 0;
};

TEST_F(DatabaseFaultTest, SaveStoppedAtAnyStepLosesNothing)
{
    for (bool crash : {false, true})
        each_fault(crash, [](TVDatabase& db, std::set<std::string>&) {
            return TVDBSaver(db).save(true, false, true);
        });
}

TEST_F(DatabaseFaultTest, PartialSaveStoppedAtAnyStepKeepsEveryFinishedOperation)
{
    for (bool crash : {false, true})
        each_fault(crash, [](TVDatabase& db, std::set<std::string>& done) {
            const int result = add(db, "c");
            // Only an operation that came back finished must be there.
            if (result == TVErrC_ok)
                done.insert("c");
            return result;
        });
}

// Until save_as comes back finished the old name holds everything, and
// after it the new one does; the old main file is never written.
TEST_F(DatabaseFaultTest, SaveAsStoppedAtAnyStepLeavesTheOldNameWhole)
{
    for (bool over : {false, true})
        for (bool crash : {false, true}) {
            SCOPED_TRACE(over ? "over an existing file" : "to a new name");
            std::string old, other, before;
            each_fault(
                crash,
                [&](TVDatabase& db, std::set<std::string>&) {
                    old = m_file;
                    other = tv_dirname(old) + "/other.tvmaths";
                    before = slurp(old);
                    if (over)
                        write_other(other, "z");
                    const int result = TVDBSaver(db).save_as(other, false);
                    if (result == TVErrC_ok)
                        m_file = other;
                    return result;
                },
                [&](const TVDatabase& db, const std::set<std::string>& done, bool) {
                    EXPECT_EQ(names(db), done) << m_file;
                    EXPECT_EQ(slurp(old), before);
                    if (m_file == other) {
                        EXPECT_EQ(names_in(old), std::set<std::string>{"a"});
                    } else if (over && tv_file_exists(other)) {
                        // The file saved over, or the old name's state
                        // whole, with or without its session. (A copy over
                        // a file deletes it first: a fault at the copy
                        // leaves none, of a file the user gave up.)
                        const std::set<std::string> found = names_in(other);
                        EXPECT_TRUE(found == std::set<std::string>{"z"} ||
                                    found == std::set<std::string>{"a"} || found == done)
                            << ::testing::PrintToString(found);
                    }
                });
        }
}

// A restore either happens or not, never half: the main file reopens as
// the present state, as the snapshot, or (a crash after the session files
// went) as last saved, never a mix; whenever the present state is not what
// reopens, the safety copy holds all of it.
TEST_F(DatabaseFaultTest, RestoreSnapshotStoppedAtAnyStepKeepsThePresentState)
{
    for (bool crash : {false, true}) {
        std::string snapshot, taken, backup;
        each_fault(
            crash,
            [&](TVDatabase& db, std::set<std::string>&) {
                snapshot = tv_dirname(m_file) + "/snapshot.tvmaths";
                taken = write_other(snapshot, "s");
                backup.clear();
                return TVDBSaver(db).restore_snapshot(snapshot, backup);
            },
            [&](const TVDatabase& db, const std::set<std::string>& done, bool fired) {
                const std::set<std::string> found = names(db);
                EXPECT_EQ(slurp(snapshot), taken);
                if (!fired) {
                    EXPECT_EQ(found, std::set<std::string>{"s"});
                }
                if (found != done) {
                    EXPECT_TRUE(found == std::set<std::string>{"s"} ||
                                found == std::set<std::string>{"a"})
                        << "a mix of the snapshot and the present state";
                    ASSERT_FALSE(backup.empty());
                    EXPECT_EQ(names_in(backup), done);
                }
            });
    }
}

TEST_F(DatabaseFaultTest, FailedRestoreLeavesTheSafetyCopyWhereItSays)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(TVDBSaver(*db).save(true, true, false), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    const std::string snapshot = tv_dirname(m_file) + "/snapshot.tvmaths";
    spill(snapshot, "no database\n");
    std::string backup;
    EXPECT_TRUE(istvwarn(TVDBSaver(*db).restore_snapshot(snapshot, backup)));
    EXPECT_NE(take_messages().find("Could not restore snapshot"), std::string::npos);
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
    EXPECT_EQ(names_in(backup), (std::set<std::string>{"a", "b"}));
}

TEST_F(DatabaseFaultTest, FailedVerifyPutsThePreviousFileBack)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(TVDBSaver(*db).save(true, true, false), TVErrC_ok);
    const std::string before = slurp(m_file);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    {
        // The verifying load can't read the new file.
        TVFileFaults unreadable([this](TVFileFaults::E_FileOp op, const std::string& path,
                                       const std::string&) {
            return op == TVFileFaults::E_OpRead && path == m_file;
        });
        EXPECT_TRUE(istvwarn(TVDBSaver(*db).save(true, true, true)));
        EXPECT_EQ(get_tverror()->get_code(), TVDatabase::TVErrC_CorruptDatabase);
    }
    const std::string messages = take_messages();
    EXPECT_NE(messages.find("Moved"), std::string::npos) << messages;
    EXPECT_EQ(slurp(m_file), before);
    // The autosave's next try writes what the failed one could not.
    ASSERT_EQ(TVDBSaver(*db).save(true, true, true), TVErrC_ok) << take_messages();
    EXPECT_NE(slurp(m_file).find("!n!b\n"), std::string::npos);
    EXPECT_EQ(slurp(m_file), slurp(TVDatabase::get_scratch_name(m_file) + ".lkg"));
}

TEST_F(DatabaseFaultTest, BackupsRotateAtMostEveryTwoHours)
{
    std::unique_ptr<TVDatabase> db = reopen();
    db->set_backup_count(3);
    const std::string scratch = TVDatabase::get_scratch_name(m_file) + ".bk";
    auto save_as_named = [&](const std::string& name) {
        ASSERT_EQ(add(*db, name), TVErrC_ok);
        ASSERT_EQ(TVDBSaver(*db).save(true, false, false), TVErrC_ok) << take_messages();
    };
    auto holds = [](const std::string& file, const std::string& name) {
        return slurp(file).find("!n!" + name + "\n") != std::string::npos;
    };
    save_as_named("a"); // rotates: the file before "a" becomes .bk0
    m_clock.advance(100);
    save_as_named("b"); // within the interval: the old file just goes
    EXPECT_FALSE(holds(scratch + "0", "a"));
    EXPECT_FALSE(tv_file_exists(scratch + "1"));
    for (const char* name : {"c", "d", "e"}) {
        m_clock.advance(TVDatabase::C_BackupIntervalSeconds + 1);
        save_as_named(name);
    }
    // .bk0 the latest; the far end fell off.
    EXPECT_TRUE(holds(scratch + "0", "d") && !holds(scratch + "0", "e"));
    EXPECT_TRUE(holds(scratch + "1", "c") && !holds(scratch + "1", "d"));
    EXPECT_TRUE(holds(scratch + "2", "b") && !holds(scratch + "2", "c"));
    EXPECT_FALSE(tv_file_exists(scratch + "3"));
    EXPECT_FALSE(tv_file_exists(m_file + ".old"));
}

// A replace happens whole or not at all: the file reopens as it stood or
// as the new text, never a mix, and never with the old session's log
// replaying onto the new text or undoing into the old.
TEST_F(DatabaseFaultTest, ReplaceStoppedAtAnyStepLeavesTheOldDataOrTheNewWhole)
{
    for (bool crash : {false, true}) {
        std::string text;
        each_fault(
            crash,
            [&](TVDatabase& db, std::set<std::string>& done) {
                text = write_other(tv_dirname(m_file) + "/other.tvmaths", "r");
                const int result = TVDBSaver(db).replace_file(text, "other.tvmaths");
                if (result == TVErrC_ok)
                    done = {"r"};
                return result;
            },
            [&](TVDatabase& db, const std::set<std::string>& done, bool fired) {
                const std::set<std::string> found = names(db);
                const std::set<std::string> before{"a", "b"}, after{"r"};
                if (!fired) {
                    EXPECT_EQ(found, done);
                }
                EXPECT_TRUE(found == before || found == after) << ::testing::PrintToString(found);
                if (found == after) {
                    EXPECT_FALSE(db.can_undo());
                    ASSERT_EQ(add(db, "c"), TVErrC_ok);
                    ASSERT_EQ(db.undo(), TVErrC_ok) << take_messages();
                    EXPECT_EQ(names(db), after);
                }
            });
    }
}

TEST_F(DatabaseFaultTest, ReplacedDataIsWhereUndoRedoAndACrashStartAndTheOldIsASnapshot)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(TVDBSaver(*db).save(true, true, false), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    const std::string text = write_other(tv_dirname(m_file) + "/other.tvmaths", "r");
    ASSERT_EQ(TVDBSaver(*db).replace_file(text, ""), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), std::set<std::string>{"r"});
    ASSERT_EQ(add(*db, "c"), TVErrC_ok);
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), std::set<std::string>{"r"});
    ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"r", "c"}));
    db.reset(); // as a kill would leave it
    db = reopen();
    EXPECT_EQ(names(*db), (std::set<std::string>{"r", "c"}));
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), std::set<std::string>{"r"});

    // What the replace took away, the unsaved "b" too, is the newest backup.
    const std::string snapshot = TVDatabase::get_scratch_name(m_file) + ".bk0";
    EXPECT_EQ(names_in(snapshot), (std::set<std::string>{"a", "b"}));
    std::string backup;
    ASSERT_EQ(TVDBSaver(*db).restore_snapshot(snapshot, backup), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
}

TEST_F(DatabaseFaultTest, DamagedForeignOrNewerTextIsRefusedAndNothingChanges)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(TVDBSaver(*db).save(true, true, false), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    const std::string good = write_other(tv_dirname(m_file) + "/other.tvmaths", "r");
    std::string foreign = good;
    foreign.replace(foreign.find(C_AppType), std::string(C_AppType).size(), "Diary");
    std::string newer = good;
    newer.insert(newer.find("!AppType!"), "!AFV!99\n");
    const struct {
        const char* name;
        std::string text;
        const char* message;
    } rows[] = {
        {"not a database", "Dear diary\n", "not a database file"},
        {"cut short", good.substr(0, good.size() / 2), "other.tvmaths contains invalid data."},
        {"another program's", foreign, "is not a TestApp data file (it is a Diary data file)."},
        {"a newer release's", newer, "written by a newer version"},
    };
    const std::string partial = db->get_partial_filename();
    const std::string index = db->get_index_filename();
    const std::string main = slurp(m_file), blocks = slurp(partial), log = slurp(index);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(istvwarn(TVDBSaver(*db).replace_file(row.text, "other.tvmaths")));
        const std::string messages = take_messages();
        EXPECT_NE(messages.find(row.message), std::string::npos) << messages;
        EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
        EXPECT_EQ(slurp(m_file), main);
        EXPECT_EQ(slurp(partial), blocks);
        EXPECT_EQ(slurp(index), log);
    }
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), std::set<std::string>{"a"});
}

// The first save of a session copies the state the log starts from; a
// copy that fails leaves the main file in place, and undo still works.
TEST_F(DatabaseFaultTest, FirstSaveThatFailsAtTheBaseCopyLeavesUndoWorking)
{
    std::unique_ptr<TVDatabase> db = reopen();
    db = reopen(); // a session of a file that exists, with no base yet
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    {
        TVFileFaults noBase([](TVFileFaults::E_FileOp op, const std::string&,
                               const std::string& target) {
            return op == TVFileFaults::E_OpCopy && tv_extension(target) == "tvdbbase";
        });
        EXPECT_TRUE(istvwarn(TVDBSaver(*db).save(true, false, false)));
    }
    take_messages();
    EXPECT_TRUE(tv_file_exists(m_file));
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    EXPECT_TRUE(db->is_loaded());
    EXPECT_EQ(names(*db), std::set<std::string>{"a"});
    ASSERT_EQ(TVDBSaver(*db).save(true, false, false), TVErrC_ok) << take_messages();
    ASSERT_EQ(db->redo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a", "b"}));
}

// An export is the user's file: it is there whole, as before or as new,
// and no half file or temporary stays behind.
TEST_F(DatabaseFaultTest, ExportStoppedAtAnyStepLeavesTheOldFileOrTheNewWhole)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    const std::string out = tv_dirname(m_file) + "/export/copy.tvmaths";
    ASSERT_EQ(TVDBSaver(*db).export_db(out, nullptr, true, ""), TVErrC_ok) << take_messages();
    const std::string before = slurp(out);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    const std::set<std::string> both{"a", "b"};
    for (int target = 0;; ++target) {
        SCOPED_TRACE("fault at operation " + std::to_string(target));
        int result = TVErrC_ok;
        bool fired = false;
        {
            FaultAt fault(target, false);
            result = TVDBSaver(*db).export_db(out, nullptr, false, "");
            fired = fault.fired();
        }
        const std::string messages = take_messages();
        if (istvwarn(result)) {
            EXPECT_NE(messages.find("/export"), std::string::npos) << messages;
        } else {
            EXPECT_EQ(names_in(out), both);
        }
        EXPECT_TRUE(slurp(out) == before || names_in(out) == both);
        const QDir folder(QString::fromStdString(tv_dirname(out)));
        EXPECT_EQ(folder.entryList(QDir::Files | QDir::Hidden).size(), 1);
        if (!fired)
            break;
    }
    // The copy may claim another program's type; the database keeps its own.
    std::string text;
    ASSERT_EQ(TVDBSaver(*db).export_db("", &text, false, "Diary"), TVErrC_ok);
    EXPECT_NE(text.find("!AppType!Diary\n"), std::string::npos);
    EXPECT_EQ(db->get_app_type(), C_AppType);
}

} // namespace
