// The load, create and unload flows on a file in a temporary home:
// every row of the load table and every button of its boxes, the order of
// recovery, the lock, and what closing leaves on the disk. The boxes are
// answered by a script; a flow runs from the event loop until it ends.

#include "LibDatabase/qt/tvdbloadqt.h"

#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvlockfile.h"
#include "LibDatabase/qt/tests/tvdbqttest.h"
#include "LibDatabase/qt/tvdbimportqt.h"
#include "LibDatabase/qt/tvdbmanagerqt.h"
#include "LibDatabase/qt/tvdbunloadqt.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvmessageboxscript.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Labels = std::vector<std::string>;

class LoadFlowTest : public TVDBQtTest
{
protected:
    void SetUp() override
    {
        TVDBQtTest::SetUp();
        write_file(m_file, {"Tables"});
        m_window = std::make_unique<TVDBManagerQt>(*m_db);
    }
    void TearDown() override
    {
        m_window.reset();
        TVDBQtTest::TearDown();
    }

    // Runs a load of file to its end; gives how it ended.
    std::string load(const std::string& file, const std::string& fallback = "",
                     bool create_if_missing = false)
    {
        FlowEnd end;
        TVDBLoadQt::start_load(*m_db, file, fallback, create_if_missing, false, m_window.get(),
                               TVSlotQt(&end, SLOT(complete(std::string))),
                               TVSlotQt(&end, SLOT(failed())), TVSlotQt(&end, SLOT(cancelled())));
        EXPECT_TRUE(drain([&] { return !end.m_end.empty(); }));
        return end.m_end;
    }
    std::string unload()
    {
        FlowEnd end;
        auto* flow = new TVDBUnloadQt(*m_db, m_window.get(), false);
        QObject::connect(flow, SIGNAL(unload_complete()), &end, SLOT(unloaded()));
        QObject::connect(flow, SIGNAL(unload_cancelled()), &end, SLOT(cancelled()));
        QObject::connect(flow, SIGNAL(unload_failed()), &end, SLOT(failed()));
        flow->step1();
        EXPECT_TRUE(drain([&] { return !end.m_end.empty(); }));
        return end.m_end;
    }
    // A main file that is no database file.
    void damage_main() { spill(m_file, "not a database\n"); }

    std::unique_ptr<TVDBManagerQt> m_window;
};

TEST_F(LoadFlowTest, PlainFileLoadsWithoutAQuestionAndAnOpenOneIsLeftAlone)
{
    TVMessageBoxScript script;
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Tables"});
    EXPECT_TRUE(m_window->get_lock().is_locked());
    ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Bonds", "Tables"}));
    EXPECT_TRUE(script.boxes().empty());
}

// The leftovers of a save a crash stopped go; the operations the session
// file holds don't go with them.
TEST_F(LoadFlowTest, TempFilesAreDeletedOrLeftForQuit)
{
    {
        TVMessageBoxScript none;
        ASSERT_EQ(load(m_file), "complete " + m_file);
        ASSERT_EQ(add(*m_db, "Bonds"), TVErrC_ok);
        // As a kill leaves it: the session file stays.
        m_window->unlock();
        m_window.reset();
        m_db = std::make_unique<TVDBQtTestDB>();
        m_window = std::make_unique<TVDBManagerQt>(*m_db);
    }
    const std::string side = m_file + ".new";
    spill(side, "half a save");
    {
        TVMessageBoxScript script({"Quit"});
        EXPECT_EQ(load(m_file), "failed");
        ASSERT_EQ(script.titles(), Labels{"Temp Files"});
        EXPECT_EQ(script.texts()[0],
                  "Some temporary files from " + m_file + " have been located.\nThe application "
                  "may not have been shut down cleanly last time is was run.  You can delete "
                  "these files, or just quit.");
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Delete", "Quit"}));
        EXPECT_TRUE(tv_file_exists(side));
    }
    TVMessageBoxScript script({"Delete"});
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_FALSE(tv_file_exists(side));
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Bonds", "Tables"}));
}

TEST_F(LoadFlowTest, UnreadablePartialFileIsDeletedLosingTheChangesSinceTheLastFullSave)
{
    {
        TVDBQtTestDB db;
        ASSERT_EQ(db.load(m_file, false, "", true, true, true), TVErrC_ok);
        ASSERT_EQ(add(db, "Partial"), TVErrC_ok); // only in the partial file
    }
    const std::string partial = TVDatabase::partial_name(m_file);
    ASSERT_TRUE(tv_file_exists(partial));
    {
        TVFileFaults faults([&](TVFileFaults::E_FileOp op, const std::string& path,
                                const std::string&) {
            return op == TVFileFaults::E_OpRead && path == partial;
        });
        TVMessageBoxScript script({"Quit"});
        const std::string end = load(m_file);
        EXPECT_EQ(end, "failed");
        ASSERT_EQ(script.titles(), Labels{"Partial Save"});
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Delete", "Quit"}));
        EXPECT_EQ(script.texts()[0].substr(0, 26), "A partially saved version ");
    }
    TVFileFaults faults([&](TVFileFaults::E_FileOp op, const std::string& path,
                            const std::string&) {
        return op == TVFileFaults::E_OpRead && path == partial;
    });
    TVMessageBoxScript script({"Delete"});
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Tables"});
    EXPECT_FALSE(tv_file_exists(partial));
}

TEST_F(LoadFlowTest, CorruptFileOkShowsTheDetailsAndFallsBackOrFails)
{
    const std::string other = m_dir.path().toStdString() + "/other" + C_Extension;
    write_file(other, {"Other"});
    damage_main();
    {
        TVMessageBoxScript script({"Ok"});
        EXPECT_EQ(load(m_file), "failed");
        ASSERT_EQ(script.titles(), Labels{"Corrupt File"});
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Ok", "Delete", "Auto-Saved"}));
        EXPECT_EQ(script.texts()[0],
                  "There was a problem opening " + m_file + ".  Press OK to view the error "
                  "details.\nIf the file is corrupt, then you can delete it, and restore from a "
                  "backup or open the Auto-Saved file.");
    }
    EXPECT_FALSE(get_tverror()->is_error());
    TVMessageBoxScript script({"Ok"});
    EXPECT_EQ(load(m_file, other), "complete " + other);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Other"});
}

TEST_F(LoadFlowTest, CorruptFileDeleteKeepsItAsBakAndStartsAFreshOneUnlessCancelled)
{
    damage_main();
    {
        TVMessageBoxScript script({"Delete", "Cancel"});
        EXPECT_EQ(load(m_file), "failed");
        EXPECT_EQ(script.titles(), (Labels{"Corrupt File", "Corrupt File"}));
        EXPECT_EQ(script.texts()[1], "Are you sure you want to delete " + m_file);
        EXPECT_EQ(script.boxes()[1].labels, (Labels{"Ok", "Cancel"}));
        EXPECT_FALSE(tv_file_exists(m_file + ".bak"));
    }
    TVMessageBoxScript script({"Delete", "Ok"});
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_EQ(slurp(m_file + ".bak"), "not a database\n");
    EXPECT_TRUE(m_db->is_loaded());
    EXPECT_TRUE(names(*m_db).empty());
}

TEST_F(LoadFlowTest, AutoSavedRecoversLastKnownGoodBeforeTheNewestBackup)
{
    const std::string lkg = scratch(TVDatabase::C_LastKnownGood);
    const std::string bk0 = scratch(".bk0");
    const struct {
        bool m_lkg;
        bool m_bk0;
        std::string m_end;
        std::set<std::string> m_names;
    } rows[] = {
        {false, true, "complete", {"Backup"}},
        {true, true, "complete", {"Good"}},
        {false, false, "failed", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_end + (row.m_lkg ? " lkg" : "") + (row.m_bk0 ? " bk0" : ""));
        QFile::remove(QString::fromStdString(lkg));
        QFile::remove(QString::fromStdString(bk0));
        // Made elsewhere and copied in: a database saved under a side
        // file's name would keep side files of its own beside it.
        const std::string made = m_dir.path().toStdString() + "/made" + C_Extension;
        if (row.m_lkg) {
            write_file(made, {"Good"});
            ASSERT_EQ(tv_copy_file(made, lkg, true, true), TVErrC_ok);
        }
        if (row.m_bk0) {
            write_file(made, {"Backup"});
            ASSERT_EQ(tv_copy_file(made, bk0, true, true), TVErrC_ok);
        }
        const std::string backup = slurp(bk0);
        damage_main();
        TVMessageBoxScript script({"Auto-Saved"});
        const std::string end = load(m_file);
        EXPECT_EQ(end.substr(0, row.m_end.size()), row.m_end);
        EXPECT_EQ(names(*m_db), row.m_names);
        // A last known good copy never touches the backup.
        EXPECT_EQ(slurp(bk0), backup);
        if (row.m_bk0) {
            EXPECT_EQ(slurp(m_file + ".bak"), "not a database\n");
        }
        ASSERT_EQ(m_db->unload(), TVErrC_ok);
    }
}

TEST_F(LoadFlowTest, MissingFileOffersFindCreatePreviousAndQuit)
{
    const std::string missing = m_dir.path().toStdString() + "/gone" + C_Extension;
    const std::string other = m_dir.path().toStdString() + "/other" + C_Extension;
    write_file(other, {"Other"});
    {
        // One recent file: no "Previous".
        ASSERT_EQ(m_app->add_recent(m_file, 0), TVErrC_ok);
        TVFileSelectQt::Scoped chooser(
            [&](TVFileSelectQt::Kind, const std::string&, const std::string&,
                const std::string& filter) { return filter == "*.tvmaths" ? other : ""; });
        TVMessageBoxScript script({"Find It"});
        EXPECT_EQ(load(missing), "complete " + other);
        ASSERT_EQ(script.titles(), Labels{"Load File"});
        EXPECT_EQ(script.texts()[0], "Could not find or access " + missing + ". Do you want to:");
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Find It", "Create New", "Quit"}));
        ASSERT_EQ(m_db->unload(), TVErrC_ok);
    }
    {
        TVMessageBoxScript script({"Quit"});
        EXPECT_EQ(load(missing), "failed");
    }
    {
        TVMessageBoxScript script({"Create New"});
        EXPECT_EQ(load(missing), "complete " + missing);
        EXPECT_TRUE(tv_file_exists(missing));
        ASSERT_EQ(m_db->unload(), TVErrC_ok);
        QFile::remove(QString::fromStdString(missing));
    }
    ASSERT_EQ(m_app->add_recent(other, 0), TVErrC_ok);
    TVMessageBoxScript script({"Previous"});
    EXPECT_EQ(load(missing), "complete " + other);
    EXPECT_EQ(script.boxes()[0].labels, (Labels{"Find It", "Create New", "Previous", "Quit"}));
}

// A first start (no recent files, no default file) asks once, in a box a
// test or the user answers: create the file, find one, take the data from
// the cloud, or quit.
TEST_F(LoadFlowTest, FirstStartWelcomesThenCreatesFindsOrQuits)
{
    const std::string other = m_dir.path().toStdString() + "/other" + C_Extension;
    write_file(other, {"Other"});
    QFile::remove(QString::fromStdString(m_file));
    ASSERT_TRUE(m_app->get_recent().empty());
    {
        TVMessageBoxScript script({"Quit"});
        EXPECT_EQ(load(m_file), "failed");
        ASSERT_EQ(script.titles(), Labels{"Welcome"});
        EXPECT_NE(script.texts()[0].find("Welcome to Database Window Test!"), std::string::npos);
        EXPECT_NE(script.texts()[0].find(m_file), std::string::npos);
        EXPECT_EQ(script.boxes()[0].labels,
                  (Labels{"Create New", "Find It", TVDBManagerQt::C_FromCloud, "Quit"}));
        EXPECT_FALSE(tv_file_exists(m_file));
    }
    {
        // A chooser closed without a choice asks again.
        int chosen = 0;
        TVFileSelectQt::Scoped chooser([&](TVFileSelectQt::Kind, const std::string&, const std::string&,
                                           const std::string& filter) {
            return ++chosen == 2 && filter == "*.tvmaths" ? other : std::string();
        });
        TVMessageBoxScript script({"Find It", "Find It"});
        EXPECT_EQ(load(""), "complete " + other);
        EXPECT_TRUE(script.done());
        EXPECT_EQ(names(*m_db), std::set<std::string>{"Other"});
        ASSERT_EQ(m_db->unload(), TVErrC_ok);
        m_window->unlock();
    }
    {
        // An existing file asked for by name opens without a welcome.
        TVMessageBoxScript script;
        EXPECT_EQ(load(other), "complete " + other);
        EXPECT_TRUE(script.boxes().empty());
        ASSERT_EQ(m_db->unload(), TVErrC_ok);
        m_window->unlock();
    }
    TVMessageBoxScript script({"Create New"});
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_TRUE(tv_file_exists(m_file));
    EXPECT_TRUE(names(*m_db).empty());
}

TEST_F(LoadFlowTest, LockedFileAsksAgainWhileTheLockStandsAndOpenAnywayStealsALeftOne)
{
    {
        TVLockFile holder;
        ASSERT_EQ(holder.lock(m_file, false), TVErrC_ok);
        int asked = 0;
        TVMessageBoxQt::set_answerer([&](const std::string& title, const std::string& text,
                                         const Labels& labels) {
            EXPECT_EQ(title, "Load File");
            EXPECT_EQ(text, m_file + " is locked by another user.  Do you want to:");
            EXPECT_EQ(labels, (Labels{"Quit", "Open Anyway", "Try Again"}));
            if (++asked == 3)
                holder.unlock();
            return std::string("Try Again");
        });
        EXPECT_EQ(load(m_file), "complete " + m_file);
        TVMessageBoxQt::set_answerer(nullptr);
        EXPECT_EQ(asked, 3);
        ASSERT_EQ(m_db->unload(), TVErrC_ok);
        m_window->unlock();
    }
    leave_lock_behind(m_file);
    TVMessageBoxScript script({"Open Anyway"});
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_TRUE(m_window->get_lock().is_locked());
    EXPECT_TRUE(script.done());
}

TEST_F(LoadFlowTest, QuitOnALockedFileGoesBackToTheFallback)
{
    const std::string other = m_dir.path().toStdString() + "/other" + C_Extension;
    write_file(other, {"Other"});
    TVLockFile holder;
    ASSERT_EQ(holder.lock(m_file, false), TVErrC_ok);
    TVMessageBoxScript script({"Quit"});
    EXPECT_EQ(load(m_file, other), "complete " + other);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Other"});
}

TEST_F(LoadFlowTest, CreateAsksBeforeOverwriting)
{
    FlowEnd end;
    auto create = [&](const std::vector<std::string>& answers) {
        end.m_end.clear();
        TVMessageBoxScript script(answers);
        TVDBLoadQt::start_create(*m_db, m_file, "", false, m_window.get(),
                                 TVSlotQt(&end, SLOT(complete(std::string))),
                                 TVSlotQt(&end, SLOT(failed())), TVSlotQt(&end, SLOT(cancelled())));
        EXPECT_TRUE(drain([&] { return !end.m_end.empty(); }));
        EXPECT_EQ(script.titles(), Labels{"Overrwrite File"});
        EXPECT_EQ(script.texts()[0], "The file " + m_file + " already exists.\nDo you want to "
                                     "overwrite it?\nNOTE: All data in " + m_file +
                                     " will be lost.");
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Yes", "No", "Quit"}));
        return end.m_end;
    };
    EXPECT_EQ(create({"No"}), "complete ");
    EXPECT_EQ(create({"Quit"}), "failed");
    EXPECT_FALSE(m_db->is_loaded());
    EXPECT_EQ(create({"Yes"}), "complete " + m_file);
    EXPECT_TRUE(names(*m_db).empty());
}

TEST_F(LoadFlowTest, UnloadAsksToSaveWithoutAutosaveAndDiscardLeavesNoPartialFile)
{
    const std::string partial = TVDatabase::partial_name(m_file);
    auto open_and_add = [&](const std::string& name) {
        TVMessageBoxScript none;
        ASSERT_EQ(load(m_file), "complete " + m_file);
        m_db->set_autosave(false);
        ASSERT_EQ(add(*m_db, name), TVErrC_ok);
    };
    open_and_add("Kept");
    {
        TVMessageBoxScript script({"Cancel"});
        EXPECT_EQ(unload(), "cancelled");
        EXPECT_EQ(script.titles(), Labels{"Save"});
        EXPECT_EQ(script.texts()[0], m_file + " has changes and needs to be saved.");
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Save", "Discard", "Cancel"}));
        EXPECT_TRUE(m_db->is_loaded());
    }
    {
        TVMessageBoxScript script({"Save"});
        EXPECT_EQ(unload(), "complete");
        EXPECT_FALSE(m_db->is_loaded());
        EXPECT_FALSE(m_window->get_lock().is_locked());
    }
    open_and_add("Dropped");
    {
        TVMessageBoxScript script({"Discard"});
        EXPECT_EQ(unload(), "complete");
        EXPECT_FALSE(tv_file_exists(partial));
    }
    TVMessageBoxScript script;
    EXPECT_EQ(load(m_file), "complete " + m_file);
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Kept", "Tables"}));
    EXPECT_TRUE(script.boxes().empty());
}

// Claims a push is due, as a database with a linked copy behind it.
class PushingDB : public TVDBQtTestDB
{
public:
    bool needs_push() const override { return m_push; }
    bool m_push = true;
};

TEST_F(LoadFlowTest, UnloadDuringASyncAsksWhetherToQuit)
{
    auto db = std::make_unique<PushingDB>();
    PushingDB& pushing = *db;
    m_window.reset();
    m_db = std::move(db);
    m_window = std::make_unique<TVDBManagerQt>(*m_db);
    TVMessageBoxScript none;
    ASSERT_EQ(load(m_file), "complete " + m_file);
    {
        TVMessageBoxScript script({"No"});
        EXPECT_EQ(unload(), "cancelled");
        EXPECT_EQ(script.titles(), Labels{"Sync In Progess"});
        EXPECT_EQ(script.texts()[0], m_file + " is being synced. Do you still want to quit?");
        EXPECT_EQ(script.boxes()[0].labels, (Labels{"Yes", "No"}));
    }
    TVMessageBoxScript script({"Yes"});
    EXPECT_EQ(unload(), "complete");
    EXPECT_FALSE(pushing.is_loaded());
}

TEST_F(LoadFlowTest, ImportOpensACopyMergesReplacesOrIsCancelled)
{
    const std::string source = m_dir.path().toStdString() + "/import" + C_Extension;
    write_file(source, {"Imported"});
    TVFileSelectQt::Scoped chooser([&](TVFileSelectQt::Kind, const std::string&,
                                       const std::string&, const std::string&) { return source; });
    auto import = [&](const std::vector<std::string>& answers) {
        FlowEnd end;
        TVMessageBoxScript script(answers);
        TVDBImportQt::start_import(*m_db, "", "", true, true, m_window.get(),
                                   TVSlotQt(&end, SLOT(complete(std::string))),
                                   TVSlotQt(&end, SLOT(failed())),
                                   TVSlotQt(&end, SLOT(cancelled())));
        EXPECT_TRUE(drain([&] { return !end.m_end.empty(); }));
        EXPECT_EQ(script.titles().size(), answers.size());
        if (!answers.empty()) {
            EXPECT_EQ(script.titles()[0], "Import Type");
            EXPECT_EQ(script.boxes()[0].labels, (Labels{"Open", "Replace", "Merge", "Cancel"}));
        }
        return end.m_end;
    };
    // Nothing open: no choice, a copy beside the application's files.
    const std::string copy = tvapplication()->get_data_dir() + "/import" + C_Extension;
    EXPECT_EQ(import({}), "complete " + copy);
    EXPECT_EQ(slurp(copy), slurp(source));

    TVMessageBoxScript none;
    ASSERT_EQ(load(m_file), "complete " + m_file);
    EXPECT_EQ(import({"Cancel"}), "cancelled");
    // Merge takes the other file's objects in beside ours, and says so.
    EXPECT_EQ(import({"Merge", "Ok"}), "complete " + m_file);
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Tables", "Imported"}));
    EXPECT_EQ(import({"Replace"}), "complete " + m_file);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"Imported"});
    EXPECT_EQ(m_db->get_filename(), m_file);
}

// A file to open of the same name as the one open (or as any file in the
// application's folder) is copied under a new name, never over it; one
// that is in the folder already opens where it is.
TEST_F(LoadFlowTest, ImportToOpenNeverWritesOverAFileThere)
{
    TVMessageBoxScript none;
    ASSERT_EQ(load(m_file), "complete " + m_file);
    const std::string before = slurp(m_file);
    const std::string elsewhere = m_dir.path().toStdString() + "/elsewhere";
    const std::string source = elsewhere + "/" + tv_filename(m_file);
    ASSERT_EQ(tv_create_dir(elsewhere, true), TVErrC_ok);
    write_file(source, {"Imported"});
    std::string chosen = source;
    TVFileSelectQt::Scoped chooser([&](TVFileSelectQt::Kind, const std::string&,
                                       const std::string&, const std::string&) { return chosen; });
    auto open = [&] {
        FlowEnd end;
        TVMessageBoxScript script({"Open"});
        TVDBImportQt::start_import(*m_db, "", "", true, true, m_window.get(),
                                   TVSlotQt(&end, SLOT(complete(std::string))),
                                   TVSlotQt(&end, SLOT(failed())),
                                   TVSlotQt(&end, SLOT(cancelled())));
        EXPECT_TRUE(drain([&] { return !end.m_end.empty(); }));
        return end.m_end;
    };
    const std::string copy = tv_dirname(m_file) + "/" + tv_basename(m_file) + " (2)" + C_Extension;
    EXPECT_EQ(open(), "complete " + copy);
    EXPECT_EQ(slurp(m_file), before);
    EXPECT_EQ(slurp(copy), slurp(source));
    chosen = copy;
    EXPECT_EQ(open(), "complete " + copy);
    EXPECT_FALSE(tv_file_exists(tv_dirname(m_file) + "/" + tv_basename(m_file) + " (3)" + C_Extension));
}

} // namespace
