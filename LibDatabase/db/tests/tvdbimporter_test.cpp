// Import of another database file: objects come in under new ids with
// their links and tree kept, specs meet by name and text, the whole import
// is one undo step, and a file that can't be taken changes nothing.

#include "TestSupport/tvdbfiletest.h"

#include "LibDatabase/db/tvobjectspec.h"

#include <cstdio>
#include <functional>
#include <map>

namespace {

class ImportTest : public TVDBFileTest
{
protected:
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        m_source = m_dir.path().toStdString() + "/other.tvdb";
        m_db = reopen();
        ASSERT_EQ(add(*m_db, "mine"), TVErrC_ok);
    }

    // The other file: a parent "p" with a child "c", and "q" linking to "p";
    // extra runs on it before the save (specs).
    void write_source(const std::function<void(TVDatabase&)>& extra = {})
    {
        drop_source();
        TVDatabase other;
        other.set_app_type(C_AppType);
        ASSERT_EQ(other.load(m_source, true, "", false, true, true), TVErrC_ok) << take_messages();
        // Its numbers overlap the target's on purpose.
        auto* p = new TVDBTestNode("p");
        ASSERT_EQ(other.add_object(p, nullptr, "", "", -1, "p"), TVErrC_ok);
        ASSERT_EQ(other.add_object(new TVDBTestNode("c"), p, TVDBTestNode::C_KidsTag, "", -1, "c"),
                  TVErrC_ok);
        auto* q = new TVDBTestNode("q");
        q->add_link(p->get_id(), "friend");
        ASSERT_EQ(other.add_object(q, nullptr, "", "", -1, "q"), TVErrC_ok);
        ASSERT_EQ(add(other, "gone"), TVErrC_ok);
        ASSERT_EQ(other.delete_object(other.get_nobjects() > 0 ? last_id(other) : -1, "gone"),
                  TVErrC_ok);
        if (extra)
            extra(other);
        ASSERT_EQ(other.save(true, true, false), TVErrC_ok) << take_messages();
        ASSERT_EQ(other.unload(), TVErrC_ok);
    }
    void drop_source()
    {
        std::remove(m_source.c_str());
        std::remove(TVDatabase::partial_name(m_source).c_str());
    }
    static int last_id(const TVDatabase& db)
    {
        return db.get_object_by_index(db.get_nobjects() - 1)->get_id();
    }
    static std::multimap<std::string, TVDBTestNode*> nodes(const TVDatabase& db)
    {
        std::multimap<std::string, TVDBTestNode*> found;
        for (int i = 0; i < db.get_nobjects(); ++i)
            if (auto* n = dynamic_cast<TVDBTestNode*>(db.get_object_by_index(i)))
                if (!n->is_deleted())
                    found.emplace(n->m_name, n);
        return found;
    }
    static void spec(TVDatabase& db, const std::string& name, const std::string& text)
    {
        ASSERT_EQ(db.add_objectspec(new TVObjectSpec(name, text), ""), TVErrC_ok) << take_messages();
        ASSERT_EQ(db.parse_objectspecs(true), TVErrC_ok) << take_messages();
        ASSERT_EQ(db.apply_objectspecs(), TVErrC_ok) << take_messages();
        ASSERT_EQ(db.complete_operation("Spec " + name), TVErrC_ok);
    }

    std::string m_source;
    std::unique_ptr<TVDatabase> m_db;
};

TEST_F(ImportTest, ObjectsComeInAboveTheOldIdsWithTheirTreeAndLinks)
{
    write_source();
    const int firstNew = m_db->next_id();
    ASSERT_EQ(m_db->import_db(m_source, nullptr), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_db->get_import_count(), 3);

    const auto in = nodes(*m_db);
    ASSERT_EQ(in.count("p"), 1u);
    EXPECT_EQ(in.count("gone"), 0u);
    TVDBTestNode* p = in.find("p")->second;
    TVDBTestNode* c = in.find("c")->second;
    TVDBTestNode* q = in.find("q")->second;
    for (TVDBTestNode* n : {p, c, q})
        EXPECT_GE(n->get_id(), firstNew) << n->m_name;
    EXPECT_EQ(c->get_parent(), p);
    EXPECT_EQ(p->m_kids.size(), 1);
    EXPECT_EQ(q->get_links("friend"), std::vector<int>{p->get_id()});

    // On the disk after a restart as well.
    m_db.reset();
    m_db = reopen();
    const auto back = nodes(*m_db);
    EXPECT_EQ(back.size(), 4u);
    EXPECT_EQ(back.find("c")->second->get_parent_id(), back.find("p")->second->get_id());
}

TEST_F(ImportTest, TwiceGivesTwoSetsAndUndoTakesEachBackWhole)
{
    write_source();
    ASSERT_EQ(m_db->import_db(m_source, nullptr), TVErrC_ok) << take_messages();
    ASSERT_EQ(m_db->import_db(m_source, nullptr), TVErrC_ok) << take_messages();
    EXPECT_EQ(nodes(*m_db).count("c"), 2u);
    EXPECT_EQ(m_db->get_undo_operation(), "Import other.tvdb");
    ASSERT_EQ(m_db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(nodes(*m_db).count("c"), 1u);
    ASSERT_EQ(m_db->undo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(names(*m_db), std::set<std::string>{"mine"});
}

TEST_F(ImportTest, SpecsMeetByNameAndText)
{
    const std::string thing = "$<Size> = init(\"1\");";
    spec(*m_db, "Thing", thing);
    write_source([&](TVDatabase& other) {
        spec(other, "Thing", thing);
    });
    const int specs = m_db->get_nobjectspecs();
    ASSERT_EQ(m_db->import_db(m_source, nullptr), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_db->get_nobjectspecs(), specs) << "the same specs add none";

    write_source([&](TVDatabase& other) {
        spec(other, "Thing", thing);
        other.get_objectspec_by_name("Default")->set_text("$<Colour> = init(\"red\");");
        other.get_objectspec_by_name("TopLevel")->set_text("$<Next> = auto(\"007\");");
        ASSERT_EQ(other.parse_objectspecs(true), TVErrC_ok);
        ASSERT_EQ(other.apply_objectspecs(), TVErrC_ok);
        ASSERT_EQ(other.complete_operation("Red"), TVErrC_ok);
    });
    ASSERT_EQ(m_db->import_db(m_source, nullptr), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_db->get_nobjectspecs(), specs + 1);
    const TVObjectSpec* renamed = m_db->get_objectspec_by_name("Default0");
    ASSERT_NE(renamed, nullptr);
    EXPECT_EQ(renamed->get_text(), "$<Colour> = init(\"red\");");
    EXPECT_NE(m_db->get_objectspec_by_name("Default")->get_text(), renamed->get_text());
    // The top level is joined, never doubled.
    const std::string top = m_db->get_objectspec_by_name("TopLevel")->get_text();
    EXPECT_EQ(top.substr(top.rfind('\n', top.size() - 2) + 1), "$<Next> = auto(\"007\");");
    EXPECT_TRUE(m_db->get_objectspec_by_name("TopLevel")->get_parse_error().empty());
}

// Half-way: the good spec is in before the bad one fails to compile. The
// import is dropped whole, and the file still loads as it was. (A source
// that is no database, or another program's, is refused before anything
// starts: tvdbimportexport_test.cpp.)
TEST_F(ImportTest, AFailureHalfWayLeavesTheTargetAsItWas)
{
    const std::string before = slurp(TVDatabase::partial_name(m_file));
    write_source([](TVDatabase& other) {
        ASSERT_EQ(other.add_objectspec(new TVObjectSpec("Good", "$<A> = init();"), ""), TVErrC_ok);
        ASSERT_EQ(other.add_objectspec(new TVObjectSpec("Bad", "$<A> = init(;"), ""), TVErrC_ok);
        (void)other.parse_objectspecs(false);
        get_tverror()->clear_all();
        ASSERT_EQ(other.complete_operation("Bad"), TVErrC_ok);
    });
    EXPECT_TRUE(istvwarn(m_db->import_db(m_source, nullptr)));
    EXPECT_NE(take_messages().find("Bad:1: error"), std::string::npos);
    EXPECT_EQ(names(*m_db), std::set<std::string>{"mine"});
    EXPECT_EQ(m_db->get_objectspec_by_name("Good"), nullptr);
    EXPECT_EQ(slurp(TVDatabase::partial_name(m_file)), before);
    m_db.reset();
    m_db = reopen();
    EXPECT_EQ(names(*m_db), std::set<std::string>{"mine"});
}

} // namespace
