// The database's files as written and read: ids, byte-stable round trips,
// and damaged input, each with what survives on disk.

#include "TestSupport/tvdbfiletest.h"

#include "LibCore/fileutils/tvfilefaults.h"
#include "LibCore/fileutils/tvfileutils.h"

#include <filesystem>
#include <functional>
#include <map>
#include <sstream>

namespace {

class DatabaseFormatTest : public TVDBFileTest
{
protected:
    static std::string write_all(const TVDatabase& db)
    {
        std::ostringstream out;
        EXPECT_EQ(db.write(out, 0, false, "", -1), TVErrC_ok);
        return out.str();
    }

    // Inserts line after the first line that starts with after.
    static std::string insert_after(const std::string& text, const std::string& after,
                                    const std::string& line)
    {
        const size_t at = text.find('\n', text.find("\n" + after) + 1);
        return text.substr(0, at + 1) + line + "\n" + text.substr(at + 1);
    }

    // Every file below the temporary folder, by path, with its bytes.
    std::map<std::string, std::string> every_file() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(m_dir.path().toStdString()))
            if (entry.is_regular_file())
                files[entry.path().string()] = slurp(entry.path().string());
        return files;
    }
};

TEST_F(DatabaseFormatTest, DatabaseIsIdZeroAndObjectsCountOnFromOne)
{
    std::unique_ptr<TVDatabase> db = reopen();
    EXPECT_EQ(db->get_id(), 0);
    ASSERT_EQ(add(*db, "a"), TVErrC_ok);
    ASSERT_EQ(add(*db, "b"), TVErrC_ok);
    EXPECT_EQ(db->get_object_by_index(0)->get_id(), 1);
    EXPECT_EQ(db->get_object_by_index(1)->get_id(), 2);
    EXPECT_EQ(db->get_object_by_id(0), db.get());
    ASSERT_EQ(db->save(true, true, false), TVErrC_ok);
    db.reset();
    db = reopen();
    // Ids are never given out twice, across saves.
    EXPECT_EQ(db->allocate_id(), 3);
}

TEST_F(DatabaseFormatTest, WriteReadWriteIsByteIdenticalAndKeepsUnknownTags)
{
    std::unique_ptr<TVDatabase> db = reopen();
    ASSERT_EQ(add(*db, "first"), TVErrC_ok);
    ASSERT_EQ(add(*db, "second line\nwith a break"), TVErrC_ok);
    db->set_comment("a comment");
    std::string text = write_all(*db);
    // The type stands twice, and the header as written by every version.
    EXPECT_EQ(text.rfind("TVDatabase:7685\n!Version!0\n@O:\n{TVDatabase\n!UnID!3\n", 0), 0u);
    EXPECT_NE(text.find("!AppType!TestApp"), text.rfind("!AppType!TestApp"));
    // Entries of a newer program, in the database's record and in an object's.
    text = insert_after(text, "!NoteURL!", "!Future!kept");
    text = insert_after(text, "!n!first", "!Later!also kept");

    auto rewrite = [](const std::string& from) {
        TVDatabase copy;
        std::istringstream in(from);
        EXPECT_EQ(copy.read(in, false, false), TVErrC_ok) << take_messages();
        return write_all(copy);
    };
    const std::string once = rewrite(text);
    // Unknown entries go behind the known ones of their record, and stay there.
    EXPECT_NE(once.find("!Future!kept\n}\n@O:\n{TVDBTestNode\n!n!first"), std::string::npos)
        << once;
    EXPECT_NE(once.find("!Later!also kept\n}"), std::string::npos) << once;
    EXPECT_EQ(rewrite(once), once);
}

// Each case damages the files a closed session left: three operations,
// the first two in the main file, the third only in the partial file.
struct Damage {
    const char* name;
    std::function<void(const std::string& main, const std::string& partial,
                       const std::string& index)> harm;
    bool loads;                    // the main file still loads
    std::set<std::string> survive; // what a load then holds
    const char* message;           // part of the report
};

TEST_F(DatabaseFormatTest, DamagedFilesAreReportedAndTheMainFileIsLeftAsItWas)
{
    auto replace = [](const std::string& file, const std::string& from, const std::string& to) {
        std::string text = slurp(file);
        const size_t at = text.rfind(from);
        ASSERT_NE(at, std::string::npos) << from;
        spill(file, text.replace(at, from.size(), to));
    };
    const std::vector<Damage> cases = {
        {"TruncatedMainFile",
         [](const std::string& f, const std::string&, const std::string&) {
             const std::string text = slurp(f);
             spill(f, text.substr(0, text.size() - 12));
         },
         false, {}, "contains invalid data"},
        {"NotADatabase",
         [&](const std::string& f, const std::string&, const std::string&) {
             replace(f, "TVDatabase:7685", "Something else");
         },
         false, {}, "not a database file"},
        {"NewerFileVersion",
         [&](const std::string& f, const std::string&, const std::string&) {
             replace(f, "!Version!0", "!Version!1");
         },
         false, {}, "Does not handle database version 1 (max version handled is 0)"},
        {"NewerApplicationVersion",
         [&](const std::string& f, const std::string&, const std::string&) {
             replace(f, "!Comment!", "!AFV!4\n!Comment!");
         },
         false, {}, "newer version"},
        {"OtherApplicationType",
         [&](const std::string& f, const std::string&, const std::string&) {
             std::string text = slurp(f);
             for (size_t at; (at = text.find("!AppType!TestApp")) != std::string::npos;)
                 text.replace(at, 16, "!AppType!Other");
             spill(f, text);
         },
         false, {}, "is not a TestApp data file (it is a Other data file)"},
        {"TruncatedPartialBlock",
         [](const std::string&, const std::string& p, const std::string&) {
             const std::string text = slurp(p);
             spill(p, text.substr(0, text.size() - 5));
         },
         true, {"a", "b"}, "was damaged"},
        {"GarbledPartialBlock",
         [&](const std::string&, const std::string& p, const std::string&) {
             replace(p, "{TVDBTestNode", "{TVDBTestNoXe");
         },
         true, {"a", "b"}, "was damaged"},
        {"IndexNamingTransactionsThatAreNotThere",
         [](const std::string&, const std::string&, const std::string& i) {
             spill(i, slurp(i) + "@I:\n{TVDBIndex\n!lastSave!40\n}\n");
         },
         true, {"a", "b", "c"}, "names transactions that are not there"},
    };
    for (const Damage& c : cases) {
        SCOPED_TRACE(c.name);
        use_folder(c.name);
        std::string partial;
        std::string index;
        {
            std::unique_ptr<TVDatabase> db = reopen();
            ASSERT_EQ(add(*db, "a"), TVErrC_ok);
            ASSERT_EQ(add(*db, "b"), TVErrC_ok);
            ASSERT_EQ(db->save(true, true, false), TVErrC_ok);
            ASSERT_EQ(add(*db, "c"), TVErrC_ok);
            partial = db->get_partial_filename();
            index = db->get_index_filename();
        } // dropped as a crash would: the partial file holds "c"
        c.harm(m_file, partial, index);
        const std::string mainBefore = slurp(m_file);
        const std::string partialBefore = slurp(partial);
        {
            // A read-only look (tvdb check) sees the same and repairs nothing.
            const std::map<std::string, std::string> filesBefore = every_file();
            TVDatabase look;
            look.set_app_type(C_AppType);
            const int result = look.read(m_file, true, true);
            const std::string messages = take_messages();
            EXPECT_EQ(every_file(), filesBefore);
            EXPECT_EQ(istvwarn(result), !c.loads) << messages;
            const std::string& named =
                !c.loads ? m_file : c.survive.size() < 3 ? partial : index;
            EXPECT_NE(messages.find(named), std::string::npos) << messages;
            if (c.loads) {
                EXPECT_EQ(names(look), c.survive);
            }
        }

        TVDatabase db;
        db.set_app_type(C_AppType);
        const int result = db.load(m_file, false, "", true, true, false);
        const std::string messages = take_messages();
        EXPECT_NE(messages.find(c.message), std::string::npos) << messages;
        EXPECT_EQ(slurp(m_file), mainBefore);
        if (!c.loads) {
            EXPECT_TRUE(istvwarn(result));
            EXPECT_NE(messages.find(m_file), std::string::npos) << messages;
            continue;
        }
        EXPECT_EQ(result, TVErrC_ok);
        EXPECT_EQ(names(db), c.survive);
        if (c.survive.size() < 3) {
            // The session file as it was is kept aside, and named.
            EXPECT_EQ(slurp(partial + ".bad"), partialBefore);
            EXPECT_NE(messages.find(partial), std::string::npos) << messages;
            // What is left of it is whole: the next operation follows good data.
            ASSERT_EQ(add(db, "d"), TVErrC_ok);
            TVDatabase again;
            again.set_app_type(C_AppType);
            ASSERT_EQ(again.load(m_file, false, "", true, true, false), TVErrC_ok)
                << take_messages();
            EXPECT_EQ(names(again), (std::set<std::string>{"a", "b", "d"}));
        }
    }
}

TEST_F(DatabaseFormatTest, PartialBlocksAlreadySavedAreSkippedAndLaterOnesReplace)
{
    {
        std::unique_ptr<TVDatabase> db = reopen();
        ASSERT_EQ(add(*db, "a"), TVErrC_ok);
        ASSERT_EQ(db->save(true, true, false), TVErrC_ok);
        // Changed after the save: the partial block must win over the main file.
        auto* a = dynamic_cast<TVDBTestNode*>(db->get_object_by_index(0));
        a->m_name = "a2";
        a->mark_changed(TVLOCATION, true);
        ASSERT_EQ(db->complete_operation("Rename"), TVErrC_ok);
        const std::string partial = slurp(db->get_partial_filename());
        // No change, no block, no transaction.
        const int transactions = db->get_index().size();
        ASSERT_EQ(db->complete_operation("Nothing"), TVErrC_ok);
        // Nor when the clock ticked for an object outside the database.
        TVDBTestNode outside("x");
        outside.mark_changed(TVLOCATION, true);
        ASSERT_EQ(db->complete_operation("Nothing here"), TVErrC_ok);
        EXPECT_EQ(slurp(db->get_partial_filename()), partial);
        EXPECT_EQ(db->get_index().size(), transactions);
    }
    std::unique_ptr<TVDatabase> db = reopen();
    EXPECT_EQ(names(*db), (std::set<std::string>{"a2"}));
    EXPECT_EQ(db->get_nobjects(), 1);
}

TEST_F(DatabaseFormatTest, ADamagedSessionFileThatCantBeCutBackStopsTheLoadAsItWas)
{
    std::string partial;
    {
        std::unique_ptr<TVDatabase> db = reopen();
        ASSERT_EQ(add(*db, "a"), TVErrC_ok);
        ASSERT_EQ(db->save(true, true, false), TVErrC_ok);
        ASSERT_EQ(add(*db, "b"), TVErrC_ok);
        partial = db->get_partial_filename();
    }
    const std::string whole = slurp(partial);
    const std::string before = whole.substr(0, whole.size() - 5);
    spill(partial, before);
    TVFileFaults stuck([&](TVFileFaults::E_FileOp op, const std::string& path, const std::string&) {
        return op == TVFileFaults::E_OpWrite && path == partial;
    });
    TVDatabase db;
    db.set_app_type(C_AppType);
    EXPECT_TRUE(istvwarn(db.load(m_file, false, "", true, true, false)));
    EXPECT_NE(take_messages().find("Could not cut the damaged session file " + partial),
              std::string::npos);
    EXPECT_EQ(slurp(partial), before);
}

// Leftovers of a session and a session file that won't open stop the load
// with their own codes, so that the user can be asked; nothing is lost.
TEST_F(DatabaseFormatTest, LeftoversAndAnUnopenableSessionFileStopTheLoadForTheUser)
{
    std::string partial;
    {
        std::unique_ptr<TVDatabase> db = reopen();
        ASSERT_EQ(add(*db, "a"), TVErrC_ok);
        ASSERT_EQ(db->save(true, true, false), TVErrC_ok);
        ASSERT_EQ(add(*db, "b"), TVErrC_ok);
        partial = db->get_partial_filename();
    }
    spill(m_file + ".new", "half a save");
    const auto load = [this](TVDatabase& db, bool remove) {
        db.set_app_type(C_AppType);
        return db.load(m_file, false, "", true, true, remove);
    };
    {
        TVDatabase db;
        EXPECT_TRUE(istvwarn(load(db, false)));
        EXPECT_EQ(get_tverror()->get_code(), TVDatabase::TVErrC_Intermediate);
        take_messages();
    }
    {
        TVDatabase db;
        TVFileFaults unreadable([&](TVFileFaults::E_FileOp op, const std::string& path,
                                    const std::string&) {
            return op == TVFileFaults::E_OpRead && path == partial;
        });
        EXPECT_TRUE(istvwarn(load(db, true)));
        EXPECT_EQ(get_tverror()->get_code(), TVDatabase::TVErrC_CorruptPartial);
        EXPECT_FALSE(db.is_loaded());
        take_messages();
    }
    TVDatabase db;
    ASSERT_EQ(load(db, true), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(db), (std::set<std::string>{"a", "b"}));
    EXPECT_FALSE(tv_file_exists(m_file + ".new"));
}

} // namespace
