// Object specs in a database: compiling with inheritance, objects on
// their specs and their variables worked out, children a spec makes, the
// checker's questions, a spec edit through undo and redo, a file saved
// and loaded, and .tvo spec files in and out.

#include "LibCore/textstr/tvtextstr.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvdbscript.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibDatabase/db/tvvarspec.h"

#include "TestSupport/tvdbfiletest.h"
#include "TestSupport/tvdbtestnode.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

// A node whose name is a system value: a compiled field a spec may name.
class NamedNode : public TVDBTestNode
{
public:
    using TVDBTestNode::TVDBTestNode;
    using TVDBTestNode::get_sysvalue;
    using TVDBTestNode::set_sysvalue;
    std::string get_sysvalue(const std::string& tag) const override
    {
        return tag == "Name" ? m_name : std::string();
    }
    int set_sysvalue(const std::string& tag, const std::string& value) override
    {
        if (tag == "Name")
            m_name = value;
        return TVErrC_ok;
    }
};

// A database that declares that field to every spec.
class NamesDB : public TVDatabase
{
public:
    int add_sysquants(TVObjectSpec& spec) override
    {
        auto* name = new TVVarSpec("Name");
        name->set_sysvalue(true);
        spec.add_varspec(name);
        return TVErrC_ok;
    }
};

class ObjectSpecTest : public TVDBFileTest
{
protected:
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        m_db = reopen();
    }

    // Adds a spec of that text; its id, or -1.
    int spec(const std::string& name, const std::string& text)
    {
        EXPECT_EQ(m_db->add_objectspec(new TVObjectSpec(name, text), "Spec " + name), TVErrC_ok)
            << take_messages();
        return m_db->get_objectspec_id_for_name(name);
    }
    // Compiles every spec strictly (the defaults there first) and applies them.
    int compile()
    {
        int result = m_db->create_default_spec();
        if (!istvwarn(result))
            result = m_db->parse_objectspecs(true);
        if (!istvwarn(result))
            result = m_db->apply_objectspecs();
        return result;
    }
    TVDBTestNode* node(const std::string& name, int spec_id, TVDBObject* parent = nullptr)
    {
        auto* made = new TVDBTestNode(name);
        const int result = m_db->add_object(made, parent, parent != nullptr ? "kids" : "", "",
                                            spec_id, "Add " + name);
        EXPECT_FALSE(istvwarn(result)) << take_messages();
        return made;
    }
    static std::string value(const TVDBObject& object, const std::string& tag)
    {
        const TVVariable* var = object.get_var_by_tag(tag, false);
        return var == nullptr ? "<none>" : var->get_value();
    }
    // The user's text of the newest error; clears them all.
    static std::string message()
    {
        const TVErrDetails* details = get_tverror()->error_details();
        const std::string text = details != nullptr ? details->get_details(TVAspectUser) : "";
        get_tverror()->clear_all();
        return text;
    }
    TVDBTestNode* find(TVDatabase& db, const std::string& name)
    {
        for (int i = 0; i < db.get_nobjects(); ++i)
            if (auto* n = dynamic_cast<TVDBTestNode*>(db.get_object_by_index(i)))
                if (n->m_name == name && !n->is_deleted())
                    return n;
        return nullptr;
    }
    std::string tvo(const std::string& name, const std::string& text)
    {
        const std::string path = m_dir.path().toStdString() + "/" + name;
        spill(path, text);
        return path;
    }

    std::unique_ptr<TVDatabase> m_db;
};

// ---- Compiling --------------------------------------------------------------------------

TEST_F(ObjectSpecTest, InheritanceIsTransitiveAndALocalDefinitionWins)
{
    spec("Item", "$<Name> = prompt();\n$<Pages> = init(\"1\");\n@Script on_create \"a()\";");
    spec("Book", "inherits Item;\n$<Pages> = init(\"0\");\n@Script on_edit \"b()\";");
    spec("Novel", "inherits Book;\n$<Pages> = init(\"300\");\n@Script on_edit \"c()\";");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    const TVObjectSpec& novel = *m_db->get_objectspec_by_name("Novel");
    EXPECT_EQ(novel.get_inherited(), (Names{"Book", "Item"}));
    EXPECT_EQ(novel.get_varspec_by_name("Pages")->get_spec(), "300");
    EXPECT_TRUE(novel.get_varspec_by_name("Name")->is_prompt());
    EXPECT_TRUE(m_db->is_spec_derived_from(m_db->get_objectspec_id_for_name("Item"),
                                           novel.get_id()));

    // Scripts: the object's own first, then its spec's, inherited ones included.
    TVDBTestNode* book = node("Dune", novel.get_id());
    ASSERT_NE(book->get_script("on_create"), nullptr);
    EXPECT_EQ(book->get_script("on_create")->get_script(), "a()");
    EXPECT_EQ(book->get_script("on_edit")->get_script(), "c()");
    book->add_script(new TVDBScript("on_edit", "own()", ""));
    EXPECT_EQ(book->get_script("on_edit")->get_script(), "own()");
    EXPECT_EQ(book->get_script("on_delete"), nullptr);
}

TEST_F(ObjectSpecTest, RenameFollowsTheTextsAndDeleteMovesObjectsToDefault)
{
    spec("Item", "$<Name> = prompt();");
    const int book = spec("Book", "inherits Item;\n$[Part] = ${Item}[];\n$[Cover] = ${Item=Item}[-];");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    std::string by;
    EXPECT_TRUE(m_db->objectspec_referenced("Item", by));
    EXPECT_EQ(by, "Book");

    ASSERT_EQ(m_db->rename_spec("Item", "Thing"), TVErrC_ok) << message();
    EXPECT_EQ(m_db->get_objectspec_by_id(book)->get_text(),
              "inherits Thing;\n$[Part] = ${Thing}[];\n$[Cover] = ${Thing=Thing}[-];");
    EXPECT_EQ(m_db->get_objectspec_by_id(book)->get_inherited(), Names{"Thing"});
    EXPECT_FALSE(m_db->objectspec_referenced("Item", by));

    TVDBTestNode* dune = node("dune", book);
    const int id = dune->get_id();
    ASSERT_EQ(dune->set_var_value("Name", "Dune", false), TVErrC_ok);
    EXPECT_TRUE(m_db->objectspec_in_use(book));
    ASSERT_EQ(m_db->delete_objectspec(book), TVErrC_ok) << message();
    EXPECT_EQ(m_db->get_objectspec_by_name("Book"), nullptr);
    EXPECT_EQ(m_db->get_object_by_id(id)->get_spec_id(), m_db->default_spec_id());
    // Its value is kept, though Default doesn't define it.
    EXPECT_EQ(m_db->extra_variables(id), Names{"Name"});
}

struct CompileFailure {
    const char* name;
    std::vector<std::pair<const char*, const char*>> specs;
    const char* failing;
    const char* message;
    int line;
};

TEST_F(ObjectSpecTest, CompileFailuresStayOnTheSpecForTheUser)
{
    const CompileFailure cases[] = {
        {"unknown inherited spec", {{"Book", "inherits Item;"}}, "Book",
         "Spec Inheritance Error: Book Could not find inherited spec name Item.", -1},
        {"inherited spec that fails",
         {{"Item", "nonsense;"}, {"Book", "inherits Item;"}}, "Book",
         "Spec Error: Book Error in inherited spec Item.", -1},
        {"a circle of inheritance",
         {{"Ying", "inherits Yang;"}, {"Yang", "inherits Ying;"}}, "Ying",
         "Spec Error: Ying Error in inherited spec Yang.", -1},
        {"unknown child spec", {{"Book", "$<A> = init();\n\n$[Chapter] = ${Chapter}[];"}}, "Book",
         "Child Spec Error: Book:3 Could not find child spec name Chapter.", 3},
        {"unknown default spec", {{"Book", "$[Page] = ${Book=Leaf};"}}, "Book",
         "Child Default Spec Error: Book:1 Could not find child spec name Leaf.", 1},
    };
    for (const CompileFailure& c : cases) {
        use_folder(c.name);
        m_db = reopen();
        for (const auto& entry : c.specs)
            spec(entry.first, entry.second);
        TVObjectSpec& failing = *m_db->get_objectspec_by_name(c.failing);
        int line = 0;
        EXPECT_TRUE(istvwarn(m_db->parse_objectspec(failing, &line))) << c.name;
        EXPECT_EQ(line, c.line) << c.name;
        const std::string text = message();
        EXPECT_EQ(text, c.message) << c.name;
        // Loading goes on; the workspace learns of it from validate_specs.
        EXPECT_EQ(m_db->parse_objectspecs(false), TVErrC_ok) << c.name;
        EXPECT_TRUE(istvwarn(m_db->validate_specs())) << c.name;
        EXPECT_NE(message(), "") << c.name;
    }
}

// ---- Variables ---------------------------------------------------------------------------

TEST_F(ObjectSpecTest, VariablesWorkOutInAnyOrderAndCirclesStayVisible)
{
    spec("Shelf", "$<Room> = init(\"Study\");");
    const int book = spec("Book",
                          "$<Label> = eval(\"$<%UTitle> in $<^Room> $<Nope>\");\n"
                          "$<Full> = eval(\"$<Title> of $<Pages>\");\n"
                          "$<Title> = init(\"dune\");\n"
                          "$<Pages> = init(\"$<Count>\");\n$<Count> = init(\"412\");\n"
                          "$<Ping> = eval(\"$<Pong>!\");\n$<Pong> = eval(\"$<Ping>?\");");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    TVDBTestNode* shelf = node("shelf", m_db->get_objectspec_id_for_name("Shelf"));
    TVDBTestNode* dune = node("dune", book, shelf);
    EXPECT_EQ(value(*dune, "Full"), "dune of 412");
    // A reference to an unknown variable stays as it was written.
    EXPECT_EQ(value(*dune, "Label"), "DUNE in Study $<Nope>");
    EXPECT_EQ(value(*dune, "Ping"), "$<Pong>!");
    EXPECT_EQ(value(*dune, "Pong"), "$<Ping>?");
    EXPECT_EQ(m_db->unfilled_vars(dune->get_id()), (Names{"Label", "Ping", "Pong"}));
}

TEST_F(ObjectSpecTest, AutoNumberHandsOutItsValueAndKeepsTheNextOfTheSameWidth)
{
    spec("TopLevel", "$<Next> = auto(\"007\");\n$[Object] = ${Default}[];");
    const int ticket = spec("Ticket", "$<Number> = init(\"No. $<Next>\");");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    EXPECT_EQ(value(*node("first", ticket), "Number"), "No. 007");
    EXPECT_EQ(value(*node("second", ticket), "Number"), "No. 008");
    EXPECT_EQ(value(*m_db, "Next"), "009");
    // Asked without counting on, the value stays.
    EXPECT_EQ(m_db->get_var_value("Next", false, false), "009");
    EXPECT_EQ(m_db->get_var_value("Next", false, true), "009");
    EXPECT_EQ(value(*m_db, "Next"), "010");
}

TEST_F(ObjectSpecTest, VariableDroppedFromTheSpecStaysWhileItHoldsAValue)
{
    const int book = spec("Book", "$<Title> = prompt();\n$<Note> = init();\n$<Pages> = init();");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    TVDBTestNode* dune = node("dune", book);
    ASSERT_EQ(dune->set_var_value("Title", "Dune", false), TVErrC_ok);
    ASSERT_EQ(dune->set_var_value("Note", "signed", false), TVErrC_ok);
    EXPECT_EQ(m_db->unfilled_vars(dune->get_id()), Names{});

    ASSERT_EQ(m_db->edit_objectspec(book, 7), TVErrC_ok);
    m_db->get_objectspec_by_id(book)->set_text("$<Title> = prompt();");
    ASSERT_EQ(m_db->commit_objectspec(book, "Edit Book"), TVErrC_ok) << message();
    EXPECT_EQ(value(*dune, "Note"), "signed");
    EXPECT_EQ(value(*dune, "Pages"), "<none>");
    EXPECT_EQ(m_db->extra_variables(dune->get_id()), Names{"Note"});
}

TEST_F(ObjectSpecTest, SystemValuesLiveInTheObjectsOwnFields)
{
    NamesDB db;
    ASSERT_EQ(db.add_objectspec(new TVObjectSpec("Person", "$<Greeting> = eval(\"Hi $<Name>\");"), ""),
              TVErrC_ok);
    ASSERT_EQ(db.add_objectspec(new TVObjectSpec("Bad", "$<A> = init();\nconstrain $<Name> int;"), ""),
              TVErrC_ok);
    ASSERT_EQ(db.create_default_spec(), TVErrC_ok);
    int line = 0;
    EXPECT_TRUE(istvwarn(db.parse_objectspec(*db.get_objectspec_by_name("Bad"), &line)));
    EXPECT_EQ(line, 2);
    EXPECT_EQ(message(), "Bad:2: error  The variable Name is a system value and cannot have constraints.");

    auto* ada = new NamedNode("Ada");
    ASSERT_EQ(db.add_object(ada, nullptr, "", "", db.get_objectspec_id_for_name("Person"), ""),
              TVErrC_ok);
    // The declared field is read, never overwritten by an empty definition.
    EXPECT_EQ(ada->m_name, "Ada");
    EXPECT_EQ(value(*ada, "Greeting"), "Hi Ada");
    ASSERT_EQ(ada->set_var_value("Name", "Grace", false), TVErrC_ok);
    EXPECT_EQ(ada->m_name, "Grace");
    ASSERT_EQ(db.update_vars(ada->get_id(), false), TVErrC_ok);
    EXPECT_EQ(value(*ada, "Greeting"), "Hi Grace");
}

// ---- Children a spec makes -----------------------------------------------------------------

TEST_F(ObjectSpecTest, ChildModifiersSayWhichChildrenAreMade)
{
    spec("Tag", "$<Text> = init(\"blank\");");
    const int shelf =
        spec("Shelf", "$[Label] = ${Tag};\n$[Spare] = ${Tag}[-];\n$[Extra] = ${Tag}[^];");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    const auto children = [](const TVDBObject& parent) {
        Names tags;
        for (const char* tag : {"Label", "Spare", "Extra"})
            if (const TVDBObject* kid = parent.get_child_by_mtag(tag))
                tags.push_back(tag + std::string("=") + value(*kid, "Text"));
        return tags;
    };
    // Created as a Shelf: the mandatory child and the add-create one.
    TVDBTestNode* created = node("created", shelf);
    EXPECT_EQ(children(*created), (Names{"Label=blank", "Extra=blank"}));
    // Put on the spec later: only the mandatory one.
    TVDBTestNode* moved = node("moved", -1);
    ASSERT_EQ(m_db->apply_objectspec_to_db(moved, shelf, false), TVErrC_ok) << message();
    EXPECT_EQ(children(*moved), Names{"Label=blank"});
    // Applying again makes no second one.
    ASSERT_EQ(m_db->apply_objectspecs(), TVErrC_ok) << message();
    EXPECT_EQ(moved->get_num_member_tag("Label"), 1);

    auto* stray = new TVDBTestNode("stray");
    ASSERT_EQ(m_db->add_object(stray, moved, "kids", "Junk", -1, "Add stray"), TVErrC_ok);
    EXPECT_TRUE(m_db->is_bastard(stray->get_id()));
    EXPECT_FALSE(m_db->is_bastard(moved->get_child_by_mtag("Label")->get_id()));
}

// ---- Through the file ------------------------------------------------------------------------

TEST_F(ObjectSpecTest, ObjectsKeepTheirSpecsThroughUndoRedoAndAReload)
{
    const int book = spec("Book", "$<Title> = init(\"untitled\");");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    const int id = node("dune", book)->get_id();
    ASSERT_EQ(m_db->edit_objectspec(book, 7), TVErrC_ok);
    m_db->get_objectspec_by_id(book)->set_text(
        "$<Title> = init(\"untitled\");\n$<Shout> = eval(\"$<%UTitle>\");");
    ASSERT_EQ(m_db->commit_objectspec(book, "Edit Book"), TVErrC_ok) << message();
    EXPECT_EQ(value(*m_db->get_object_by_id(id), "Shout"), "UNTITLED");

    ASSERT_EQ(m_db->undo(), TVErrC_ok) << take_messages();
    const TVDBObject* undone = m_db->get_object_by_id(id);
    EXPECT_EQ(undone->get_spec_id(), book);
    EXPECT_EQ(value(*undone, "Shout"), "<none>");
    ASSERT_EQ(m_db->redo(), TVErrC_ok) << take_messages();
    EXPECT_EQ(value(*m_db->get_object_by_id(id), "Shout"), "UNTITLED");

    ASSERT_EQ(m_db->save(true, true, true), TVErrC_ok) << take_messages();
    ASSERT_EQ(m_db->unload(), TVErrC_ok);
    m_db = reopen();
    const TVDBObject* loaded = m_db->get_object_by_id(id);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->get_spec_id(), book);
    EXPECT_TRUE(loaded->linked_to(*m_db->get_objectspec_by_id(book)));
    EXPECT_EQ(value(*loaded, "Shout"), "UNTITLED");
    EXPECT_EQ(m_db->get_object_by_id(0)->get_spec_id(),
              m_db->get_objectspec_id_for_name("TopLevel"));
}

TEST_F(ObjectSpecTest, DatabaseWithoutSpecsIsLeftAsItWas)
{
    node("plain", -1);
    ASSERT_EQ(m_db->save(true, true, true), TVErrC_ok);
    const std::string before = slurp(m_file);
    ASSERT_EQ(m_db->unload(), TVErrC_ok);
    m_db = reopen();
    EXPECT_EQ(m_db->get_nobjectspecs(), 0);
    EXPECT_EQ(find(*m_db, "plain")->get_spec_id(), -1);
    ASSERT_EQ(m_db->save(true, true, true), TVErrC_ok);
    EXPECT_EQ(slurp(m_file).substr(slurp(m_file).find("\n@O:")), before.substr(before.find("\n@O:")));
}

TEST_F(ObjectSpecTest, LanguageGuideExampleMakesItsDrill)
{
    // The worked example of doc/schema-language.md.
    const std::string path = tvo("drills.tvo",
        "# Kinds of drill a parent can set, beside the program's own exercises.\n"
        "########################################################################\n"
        "{Drill\n"
        "# What every drill has: a title asked for, and a number handed out.\n"
        "baseOnly;\n"
        "$<Title> = prompt();\n"
        "$<Number> = init(\"$<NextDrill>\");\n"
        "$<Label> = eval(\"Drill $<Number>: $<Title>\");\n"
        "private $<Number>;\n"
        "}\n"
        "########################################################################\n"
        "{TimesDrill\n"
        "# One times table, asked a number of times.\n"
        "inherits Drill;\n"
        "$<Table> = prompt();\n"
        "constrain $<Table> int;\n"
        "$<Count> = init(\"12\");\n"
        "constrain $<Count> choice `6,12,20`;\n"
        "$<Title> = init(\"The $<Table> times table\");\n"
        "$<Heading> = eval(\"$<%UTitle> ($<Count> questions, in $<^Room>)\");\n"
        "$[Question] = ${Question}[+];\n"
        "$[Reward] = ${Sticker}[^];\n"
        "@Script on_create @Shortcut F5 >\"\n"
        "    TVSet(\"Count\", \"20\");\n"
        "\"<;\n"
        "}\n"
        "########################################################################\n"
        "{Question\n"
        "$<Left> = init(\"$<^Table>\");\n"
        "$<Right> = prompt();\n"
        "}\n"
        "########################################################################\n"
        "{Sticker\n"
        "$<Picture> = init(\"star\");\n"
        "}\n"
        "########################################################################\n"
        "{TopLevel\n"
        "# The counter that numbers the drills, and where they are done.\n"
        "$<NextDrill> = auto(\"001\");\n"
        "$<Room> = init(\"kitchen\");\n"
        "$[Object] = ${Default}[];\n"
        "$[Drill] = ${Drill=TimesDrill}[];\n"
        "}\n");
    ASSERT_EQ(m_db->do_import(path), TVErrC_ok) << message();
    const int times = m_db->get_objectspec_id_for_name("TimesDrill");
    TVDBTestNode* drill = node("sevens", times);
    EXPECT_EQ(m_db->unfilled_vars(drill->get_id()), (Names{"Table", "Title", "Heading", "Label"}));
    ASSERT_EQ(drill->set_var_value("Table", "7", false), TVErrC_ok);
    ASSERT_EQ(m_db->update_vars(drill->get_id(), false), TVErrC_ok) << message();
    EXPECT_EQ(value(*drill, "Label"), "Drill 001: The 7 times table");
    EXPECT_EQ(value(*drill, "Heading"), "THE 7 TIMES TABLE (12 questions, in kitchen)");
    EXPECT_EQ(drill->get_nvars(true), drill->get_nvars(false) - 1);
    const TVDBObject* question = drill->get_child_by_mtag("Question");
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(value(*question, "Left"), "7");
    EXPECT_NE(drill->get_child_by_mtag("Reward"), nullptr);
    EXPECT_EQ(value(*node("eights", times), "Number"), "002");
    EXPECT_EQ(m_db->get_allowable_specs(m_db->get_objectspec_id_for_name("Drill"), false).size(), 1u);
}

// ---- Spec files ------------------------------------------------------------------------------

TEST_F(ObjectSpecTest, ExportedSpecsImportIntoAnotherDatabaseAsTheyWere)
{
    spec("Item", "# shared\n$<Name> = prompt();\n");
    spec("Book", "inherits Item;\n\n    @Script s >\"\n  x\n\"<;");
    ASSERT_EQ(compile(), TVErrC_ok) << message();
    const std::string path = m_dir.path().toStdString() + "/out.tvo";
    ASSERT_EQ(m_db->export_specs(path), TVErrC_ok);
    const std::string written = slurp(path);

    use_folder("other");
    m_db = reopen();
    ASSERT_EQ(m_db->do_import(path), TVErrC_ok) << message();
    EXPECT_EQ(m_db->get_objectspec_by_name("Book")->get_inherited(), Names{"Item"});
    ASSERT_EQ(m_db->export_specs(path), TVErrC_ok);
    EXPECT_EQ(slurp(path), written);
}

TEST_F(ObjectSpecTest, BadSpecFilesAreRefusedWithTheirLine)
{
    const std::string sep(72, '#');
    const std::vector<std::pair<std::string, std::string>> cases = {
        {sep + "\n{Book\n$<A> = init();\n}\nstray words\n",
         "(FILE:5): error: Unknown line \"stray words\" outside spec definition."},
        {"\n{   \n}\n", "(FILE:2): error: Empty spec name."},
        {"{Book\n}\n}\n", "(FILE:3): error: Extra \"}\" tag."},
        {"{Book\n$<A> = init();\n", "(FILE:2): error: Unterminated spec \"Book\""},
        {"<Overdue\n$<Due> < today\n>\n", "FILE:2: error  Unknown symbol \"$\""},
        {"{Book\n\n$<A> = nothing();\n}\n", "FILE:3: error  invalid value \"nothing\" after assignment."},
        {"{Book\n$[Page] = ${Leaf};\n}\n", "Child Spec Error: FILE:2 Could not find child spec name Leaf."},
    };
    spec("Kept", "$<K> = init();");
    ASSERT_EQ(compile(), TVErrC_ok);
    const int before = m_db->get_nobjects();
    for (const auto& c : cases) {
        const std::string path = tvo("bad.tvo", c.first);
        EXPECT_TRUE(istvwarn(m_db->do_import(path))) << c.first;
        EXPECT_EQ(message(), tv_replace_substr(c.second, "FILE", path)) << c.first;
        EXPECT_EQ(m_db->get_nobjects(), before) << c.first;
        EXPECT_EQ(m_db->get_objectspec_by_name("Book"), nullptr) << c.first;
    }
}

} // namespace

// Adding objects must not rebuild every container each time: a family's
// import of thousands of objects was quadratic in that.
TEST_F(ObjectSpecTest, AddingObjectsWithoutNotesResolvesNothing)
{
    struct CountingDB : TVDatabase {
        void containers_resolved() override { ++m_resolved; }
        int m_resolved = 0;
    } db;
    db.set_app_type(C_AppType);
    ASSERT_EQ(db.load(m_file, true, std::string(), true, true, true), TVErrC_ok) << take_messages();
    const int before = db.m_resolved;
    for (const char* name : {"one", "two", "three"})
        ASSERT_EQ(add(db, name), TVErrC_ok) << take_messages();
    EXPECT_EQ(db.m_resolved, before);
    EXPECT_EQ(names(db), (std::set<std::string>{"one", "two", "three"}));
}
