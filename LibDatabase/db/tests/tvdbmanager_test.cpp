// The pieces around the engine: the autosave that catches the main file up
// with the partial file, the list of an application's live databases, and
// the model that refills its rows only when the database changed.

#include "TestSupport/tvdbfiletest.h"

#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvdbfactory.h"
#include "LibDatabase/db/tvdbmanager.h"
#include "LibDatabase/db/tvdbmodel.h"

#include <string>

namespace {

class DBManagerTest : public TVDBFileTest
{
protected:
    // What a load that ignores the partial file sees: the main file alone.
    std::set<std::string> main_file_names()
    {
        TVDatabase plain;
        plain.set_app_type(C_AppType);
        EXPECT_EQ(plain.load(m_file, true, false, "", true, false, false, true), TVErrC_ok)
            << take_messages();
        return names(plain);
    }
};

TEST_F(DBManagerTest, AutosaveCatchesTheMainFileUpWithCompletedOperations)
{
    std::unique_ptr<TVDatabase> db = reopen();
    TVDBManager manager(*db);
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(manager.do_autosave(false), TVErrC_ok);
    EXPECT_EQ(main_file_names(), std::set<std::string>{"a"});

    // Nothing changed since: the file is left alone.
    const std::string before = slurp(m_file);
    m_clock.advance(60);
    ASSERT_EQ(manager.do_autosave(false), TVErrC_ok);
    EXPECT_EQ(slurp(m_file), before);

    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    db->set_autosave(false);
    ASSERT_EQ(manager.do_autosave(false), TVErrC_ok);
    EXPECT_EQ(main_file_names(), std::set<std::string>{"a"});

    // At closing the save is verified, which leaves the last known good copy.
    db->set_autosave(true);
    ASSERT_EQ(manager.do_autosave(true), TVErrC_ok);
    EXPECT_EQ(main_file_names(), (std::set<std::string>{"a", "b"}));
    EXPECT_TRUE(tv_file_exists(TVDatabase::get_scratch_name(m_file) + TVDatabase::C_LastKnownGood));
}

TEST_F(DBManagerTest, AutosaveCatchesUpWhateverTheManagerDidNotSee)
{
    {
        std::unique_ptr<TVDatabase> db = reopen();
        ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    } // dropped as by a crash: "a" is only in the partial file
    std::unique_ptr<TVDatabase> db = reopen();
    {
        TVDBManager manager(*db);
        ASSERT_EQ(manager.do_autosave(false), TVErrC_ok);
        EXPECT_EQ(main_file_names(), std::set<std::string>{"a"});
    }
    // Work completed before a manager existed.
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    TVDBManager late(*db);
    ASSERT_EQ(late.do_autosave(false), TVErrC_ok);
    EXPECT_EQ(main_file_names(), (std::set<std::string>{"a", "b"}));

    // An undo puts the main file behind as well.
    ASSERT_EQ(db->undo(), TVErrC_ok) << take_messages();
    ASSERT_EQ(late.do_autosave(false), TVErrC_ok);
    EXPECT_EQ(main_file_names(), std::set<std::string>{"a"});

    // A load with nothing to replay leaves the main file alone.
    ASSERT_EQ(db->unload(), TVErrC_ok) << take_messages();
    db = reopen();
    const std::string before = slurp(m_file);
    m_clock.advance(60);
    ASSERT_EQ(TVDBManager(*db).do_autosave(false), TVErrC_ok);
    EXPECT_EQ(slurp(m_file), before);
}

TEST_F(DBManagerTest, AutosaveOfAnUnsavedChangeAndOfNothingLoaded)
{
    TVDatabase unloaded;
    TVDBManager idle(unloaded);
    EXPECT_EQ(idle.do_autosave(false), TVErrC_ok);

    std::unique_ptr<TVDatabase> db = reopen();
    TVDBManager manager(*db);
    // A change not yet completed is saved by the first autosave.
    db->set_comment("draft");
    ASSERT_EQ(manager.do_autosave(false), TVErrC_ok);
    TVDatabase plain;
    ASSERT_EQ(plain.read(m_file, true, false), TVErrC_ok) << take_messages();
    EXPECT_EQ(plain.get_comment(), "draft");
}

TEST_F(DBManagerTest, DefaultFileLiesInTheDataFolderWhichIsMade)
{
    std::string file;
    ASSERT_EQ(TVDBManager::get_default_filename(file, "drill"), TVErrC_ok);
    EXPECT_TRUE(tv_dir_exists(tv_dirname(file)));
    EXPECT_EQ(tv_basename(file), "drill");
    EXPECT_EQ(file.find(".."), std::string::npos);
    std::string fallback;
    ASSERT_EQ(TVDBManager::get_filename(fallback, "drill", true), TVErrC_ok);
    EXPECT_EQ(fallback, file); // no recent file exists
}

// A database class that declares itself, as an application's does.
class FactoryDB : public TVDatabase, public TVDBFactory<FactoryDB>
{
};

TEST(DBFactoryTest, ListHoldsTheLiveDatabasesOnce)
{
    auto first = std::make_unique<FactoryDB>();
    FactoryDB second;
    FactoryDB::add_database(first.get());
    FactoryDB::add_database(&second);
    FactoryDB::add_database(first.get());
    ASSERT_EQ(FactoryDB::get_nlive_databases(), 2);
    EXPECT_EQ(FactoryDB::get_live_database(0), first.get());
    EXPECT_EQ(FactoryDB::get_live_database(2), nullptr);
    first.reset();
    ASSERT_EQ(FactoryDB::get_nlive_databases(), 1);
    EXPECT_EQ(FactoryDB::get_live_database(0), &second);
    FactoryDB::remove_database(&second);
    EXPECT_EQ(FactoryDB::get_nlive_databases(), 0);
}

// One row per live node: column 0 cached (the name), column 1 asked for.
class NodeModel : public TVDBModel
{
public:
    using TVDBModel::TVDBModel;
    int populate(TVPtrArray<TVDBModelEntry>& rows) override
    {
        ++m_fills;
        if (m_fail)
            return tverror(TVErrC_FileRead, TVLOCATION, "no rows today");
        for (int i = 0; i < m_db.get_nobjects(); ++i) {
            const auto* node = dynamic_cast<const TVDBTestNode*>(m_db.get_object_by_index(i));
            if (node == nullptr || node->is_deleted())
                continue;
            auto* entry = new TVDBModelEntry(node->get_id());
            if (node->m_name != "lazy")
                entry->set_value(0, node->m_name);
            rows.add(entry);
        }
        return TVErrC_ok;
    }
    std::string get_id_value(int id, int column) const override
    {
        return "asked " + std::to_string(id) + "/" + std::to_string(column);
    }
    int m_fills = 0;
    bool m_fail = false;
};

TEST_F(DBManagerTest, ModelRefillsOnlyWhenTheDatabaseChanged)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(add(*db, "lazy"), TVErrC_ok);
    NodeModel model(*db);
    ASSERT_EQ(model.update(), TVErrC_ok);
    ASSERT_EQ(model.update(), TVErrC_ok);
    EXPECT_EQ(model.m_fills, 1);
    ASSERT_EQ(model.get_nrows(), 2);
    EXPECT_EQ(model.get_row_value(0, 0), "a");
    const int lazy = model.get_row_id(1);
    EXPECT_EQ(model.get_row_value(1, 3), "asked " + std::to_string(lazy) + "/3");
    EXPECT_EQ(model.get_id_row(lazy), 1);
    EXPECT_EQ(model.get_id_row(9999), -1);
    EXPECT_EQ(model.get_row_value(2, 0), "");
    EXPECT_EQ(model.get_row_id(-1), -1);

    // A change of the database object alone counts.
    db->set_comment("changed");
    ASSERT_EQ(model.update(), TVErrC_ok);
    EXPECT_EQ(model.m_fills, 2);

    // A failed fill is reported and tried again next time.
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    model.m_fail = true;
    EXPECT_TRUE(istvwarn(model.update()));
    take_messages();
    model.m_fail = false;
    ASSERT_EQ(model.update(), TVErrC_ok);
    EXPECT_EQ(model.m_fills, 4);
    EXPECT_EQ(model.get_nrows(), 3);
}

TEST(DBModelEntryTest, OrderByNumberOrByBytes)
{
    struct Row
    {
        const char* m_name;
        const char* m_left;
        const char* m_right;
        bool m_greater;
    };
    const Row rows[] = {
        {"later letter", "b", "a", true},
        {"earlier letter", "a", "b", false},
        {"longer key after its prefix", "ab", "a", true},
        {"prefix before its extension", "a", "ab", false},
        {"equal", "ab", "ab", false},
        {"high byte after ASCII", "\xc3\xa9", "z", true},
    };
    for (const Row& row : rows) {
        TVDBModelEntry left(1), right(2);
        left.set_text_sort(row.m_left);
        right.set_text_sort(row.m_right);
        EXPECT_EQ(left > right, row.m_greater) << row.m_name;
    }
    // The number wins over the text once set: 10 after 9 though "10" < "9".
    TVDBModelEntry ten(1), nine(2);
    ten.set_text_sort("10");
    nine.set_text_sort("9");
    ten.set_numeric_sort(10);
    nine.set_numeric_sort(9);
    EXPECT_TRUE(ten > nine);
    EXPECT_FALSE(nine > ten);
}

} // namespace
