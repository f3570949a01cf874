// Scripts on objects of a real database: what a run returns and raises,
// the triggers and when they run, the calls that reach other objects, the
// date functions, prompts through the host, the expression cache, and a
// script that runs away being stopped with its changes dropped.

#include "LibDatabase/db/tvdbscript.h"

#include "LibDatabase/db/tvdbscriptcache.h"
#include "LibDatabase/db/tvdbscriptengineqt.h"
#include "LibDatabase/db/tvdbscripthost.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvvariable.h"
#include "LibDate/date/tvdateparser.h"
#include "TestSupport/tvdbfiletest.h"

#include <QCoreApplication>

#include <memory>
#include <string>
#include <vector>

namespace {

// Records what scripts ask of the world: TVOpenUrl is the tests' way for a
// script to say it ran.
class RecordingHost : public TVDBScriptHost
{
public:
    bool open_url(const std::string& url) override
    {
        m_calls.push_back(url);
        return true;
    }
    std::string prompt_text(const std::string& title, const std::string&) override
    {
        m_calls.push_back("asked " + title);
        return "typed";
    }
    std::vector<std::string> m_calls;
};

class ScriptTest : public TVDBFileTest
{
protected:
    static void SetUpTestSuite()
    {
        static int argc = 1;
        static char name[] = "tvdatabase_tests";
        static char* argv[] = {name, nullptr};
        if (QCoreApplication::instance() == nullptr)
            static QCoreApplication application(argc, argv);
        tv_install_date_parser();
    }
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        TVDBScriptHost::set_instance(&m_host);
        TVDBScriptEngineQt::set_time_limit_ms(2000);
        m_db = reopen();
    }
    void TearDown() override
    {
        m_db.reset();
        TVDBScriptHost::set_instance(nullptr);
        TVDBFileTest::TearDown();
    }
    // A node of that name carrying scripts (name, text) of its own.
    TVDBTestNode* node(const std::string& name,
                       const std::vector<std::pair<std::string, std::string>>& scripts,
                       TVDBObject* parent = nullptr, const std::string& tag = "")
    {
        auto* made = new TVDBTestNode(name);
        for (const auto& script : scripts)
            made->add_script(new TVDBScript(script.first, script.second, ""));
        EXPECT_EQ(m_db->add_object(made, parent, parent != nullptr ? "kids" : "", tag, -1,
                                   "Add " + name),
                  TVErrC_ok)
            << take_messages();
        return made;
    }
    // Runs text on object within the current operation: (result, value).
    std::pair<int, std::string> run(TVDBObject& object, const std::string& text)
    {
        m_last = std::make_unique<TVDBScript>("probe", text, "");
        std::string value;
        const int result = m_last->run_within(object, true, &value);
        return {result, value};
    }

    RecordingHost m_host;
    std::unique_ptr<TVDatabase> m_db;
    std::unique_ptr<TVDBScript> m_last;
};

TEST_F(ScriptTest, RunGivesTheValueOrTheLineAndTextOfWhatItRaised)
{
    TVDBTestNode* tables = node("Tables", {{"broken", "var a = 1;\nvar b = 2;\nthrow 'no answer';"}});
    EXPECT_EQ(run(*tables, "6 * 7"), std::make_pair(static_cast<int>(TVErrC_ok), std::string("42")));
    EXPECT_EQ(m_last->get_error_line(), -1);

    EXPECT_EQ(tables->get_script("broken")->run(*tables, false), TVErrC_okCancel);
    EXPECT_EQ(tables->get_script("broken")->get_error_line(), 3);
    EXPECT_EQ(tables->get_script("broken")->get_error_text(), "no answer");
    // The workspace lists the first script that failed.
    std::string script;
    int id = -1;
    int line = 0;
    std::string message;
    ASSERT_TRUE(m_db->get_error_script(script, id, line, &message));
    EXPECT_EQ(script + ":" + std::to_string(line) + " " + message, "broken:3 no answer");
    EXPECT_EQ(id, tables->get_id());
}

TEST_F(ScriptTest, TriggersRunOnCreateEditStartupAndRecalculate)
{
    TVDBTestNode* tables = node("Tables", {{"on_create", "TVOpenUrl('create')"},
                                           {"on_edit", "TVOpenUrl('edit')"},
                                           {"on_startup", "TVOpenUrl('startup')"},
                                           {"on_recalculate", "TVOpenUrl('recalculate')"}});
    EXPECT_EQ(m_host.m_calls, std::vector<std::string>{"create"});
    ASSERT_EQ(m_db->edit_object(tables->get_id(), false, 1), TVErrC_ok);
    ASSERT_EQ(m_db->commit_object(tables->get_id(), "Edit"), TVErrC_ok);
    ASSERT_EQ(m_db->recalculate(TVDatabase::E_RecalcAll), TVErrC_ok);
    ASSERT_EQ(m_db->recalculate(TVDatabase::E_RecalcNone), TVErrC_ok);
    m_db.reset();
    m_db = reopen();
    EXPECT_EQ(m_host.m_calls,
              (std::vector<std::string>{"create", "edit", "recalculate", "startup"}));
}

TEST_F(ScriptTest, SpecTriggerRunsForObjectsOfTheSpecsThatInheritIt)
{
    ASSERT_EQ(m_db->add_objectspec(
                  new TVObjectSpec("Item", "@Script on_create \"TVOpenUrl('item made')\";"), ""),
              TVErrC_ok);
    ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec("Book", "inherits Item;"), ""), TVErrC_ok);
    ASSERT_EQ(m_db->apply_objectspecs(), TVErrC_ok) << take_messages();
    ASSERT_EQ(m_db->add_object(new TVDBTestNode("Dune"), nullptr, "", "",
                               m_db->get_objectspec_id_for_name("Book"), "Add Dune"),
              TVErrC_ok);
    EXPECT_EQ(m_host.m_calls, std::vector<std::string>{"item made"});
    // Editing the spec itself runs none of its objects' triggers.
    const int item = m_db->get_objectspec_id_for_name("Item");
    ASSERT_EQ(m_db->edit_objectspec(item, 1), TVErrC_ok);
    m_db->get_objectspec_by_id(item)->set_text("@Script on_edit \"TVOpenUrl('edited')\";");
    ASSERT_EQ(m_db->commit_objectspec(item, "Edit Item"), TVErrC_ok) << take_messages();
    EXPECT_EQ(m_host.m_calls, std::vector<std::string>{"item made"});
}

TEST_F(ScriptTest, CallsReachSelfParentChildrenAndEveryObject)
{
    TVDBTestNode* shelf = node("Shelf", {{"hello", "TVOpenUrl('shelf'); 'from shelf'"}});
    node("Two", {{"hello", "TVOpenUrl('two')"}}, shelf, "Times");
    TVDBTestNode* three = node("Three", {{"hello", "TVOpenUrl('three')"}}, shelf, "Times");
    node("Loose", {{"bye", "TVOpenUrl('loose')"}});

    EXPECT_EQ(run(*three, "TVCallParent('hello')").second, "from shelf");
    EXPECT_EQ(run(*shelf, "TVCallChild('Times', 'hello', 1)").first, TVErrC_ok);
    EXPECT_EQ(run(*shelf, "TVCallChild('Times', 'hello', -1)").first, TVErrC_ok);
    EXPECT_EQ(run(*three, "TVCallAll('hello', -1)").first, TVErrC_ok);
    EXPECT_EQ(run(*three, "TVCallID('bye', " + std::to_string(shelf->get_id() + 3) + ")").first,
              TVErrC_ok);
    EXPECT_EQ(m_host.m_calls, (std::vector<std::string>{"shelf", "three", "two", "three", "shelf",
                                                        "two", "three", "loose"}));

    // What can't be reached raises in the caller, which may catch it.
    const std::vector<std::pair<std::string, std::string>> misses = {
        {"TVCallParent('hello')", "Error: Object does not have a parent."},
        {"TVCallChild('Pages', 'hello', -1)", "Error: Could not find child Pages"},
        {"TVCallSelf('absent')", "Error: Could not find script absent"},
        {"try { TVCallSelf('absent') } catch (e) { 'caught' }", ""},
    };
    for (const auto& miss : misses) {
        run(*shelf, miss.first);
        EXPECT_EQ(m_last->get_error_text(), miss.second) << miss.first;
    }
}

TEST_F(ScriptTest, DatesGoThroughTheDateEngineAndPromptsOnlyAskWhenInteractive)
{
    TVDBTestNode* tables = node("Tables", {});
    // The test clock stands at 2 June 2024 12:00 GMT.
    EXPECT_EQ(run(*tables, "TVDateEval('now + 1 day', '%Y-%m-%d')").second, "2024-06-03");
    EXPECT_EQ(run(*tables, "TVDateCompare('now', 'now + 1 hour', '<')").second, "true");
    EXPECT_EQ(run(*tables, "TVDateCompare('now', 'now', '!=')").second, "false");

    EXPECT_EQ(run(*tables, "TVPromptText('Your name', 'Sam')").second, "typed");
    EXPECT_EQ(run(*tables, "TVPromptChoice('Table', 'Which?', '7,8,9', false)").second, "7");
    std::string value;
    TVDBScript quiet("quiet", "TVPromptText('Your name', 'Sam')", "");
    EXPECT_EQ(quiet.run_within(*tables, false, &value), TVErrC_ok);
    EXPECT_EQ(value, "Sam");
    EXPECT_EQ(m_host.m_calls, std::vector<std::string>{"asked Your name"});
    // The window's actions need a window.
    TVDBScriptHost::set_instance(nullptr);
    run(*tables, "TVGuiCall('Go')");
    EXPECT_EQ(m_last->get_error_text(), "Error: There is no window to run Go.");
}

TEST_F(ScriptTest, VariableFunctionsReadAndChangeOnlyTheObjectsOwnVariables)
{
    for (const auto& spec : std::vector<std::pair<std::string, std::string>>{
             {"Shelf", "$<Room> = init(\"den\");"},
             {"Table", "$<Size> = init(\"7\"); $<Twice> = eval(\"$=($<Size> * 2)\");"},
             {"Square", "inherits Table; $<Side> = init(\"3\");"}})
        ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec(spec.first, spec.second), ""), TVErrC_ok);
    ASSERT_EQ(m_db->apply_objectspecs(), TVErrC_ok) << take_messages();
    auto add = [this](const std::string& name, const std::string& spec, TVDBObject* parent) {
        auto* made = new TVDBTestNode(name);
        EXPECT_EQ(m_db->add_object(made, parent, parent != nullptr ? "kids" : "", "",
                                   m_db->get_objectspec_id_for_name(spec), "Add " + name),
                  TVErrC_ok)
            << take_messages();
        return made;
    };
    TVDBTestNode* shelf = add("Shelf", "Shelf", nullptr);
    TVDBTestNode* seven = add("Seven", "Table", shelf);
    add("Eight", "Square", nullptr);

    // "$=(...)" is worked out through the engine; TVSet works the rest out again.
    EXPECT_EQ(run(*seven, "TVGet('Twice')").second, "14");
    EXPECT_EQ(run(*seven, "TVSet('Size', '9'); TVGet('Twice')").second, "18");
    // TVGet stays on the object: the parent's Room is not the table's.
    run(*seven, "TVGet('Room')");
    EXPECT_EQ(m_last->get_error_text(), "Error: Unknown variable Room");
    // Setting an unknown variable raises and makes none.
    run(*seven, "TVSet('Colour', 'red')");
    EXPECT_EQ(m_last->get_error_text(), "Error: Unknown variable Colour");
    EXPECT_EQ(seven->get_var_by_tag("Colour", false), nullptr);

    // Searching matches any variable, case ignored; spec "Table" takes in
    // the "Square" that inherits it.
    EXPECT_EQ(run(*seven, "TVSearchDB('Table', 'Size', '^[0-9]$').join()").second, "9,7");
    EXPECT_EQ(run(*seven, "TVSearchDB('*', '', 'DEN').join()").second,
              std::to_string(shelf->get_id()));
    EXPECT_EQ(run(*seven, "TVPromptDB('Table', 'Size', 'Which size?', '', false)").second, "9");
    run(*seven, "TVSearchDB('Chair', 'Size', '.')");
    EXPECT_EQ(m_last->get_error_text(), "Error: Could not find the spec Chair.");

    // A spec the parent allows moves the object; its variables follow.
    EXPECT_EQ(run(*seven, "TVSetSpec('Square'); TVGet('Side')").second, "3");
    EXPECT_EQ(seven->get_spec_id(), m_db->get_objectspec_id_for_name("Square"));
    run(*seven, "TVSetSpec('Nowhere')");
    EXPECT_EQ(m_last->get_error_text(), "Error: Cannot set the spec to Nowhere.");

    // A failure on line 3 keeps what lines 1 and 2 did, and says where it was.
    TVDBScript failing("failing", "TVSet('Size', '4');\nTVSet('Side', '5');\nTVSet('Nope', 1);",
                       "");
    EXPECT_EQ(failing.run(*seven, false), TVErrC_okCancel);
    EXPECT_EQ(failing.get_error_line(), 3);
    EXPECT_EQ(seven->get_var_value("Size", false, false) + seven->get_var_value("Side", false, false),
              "45");
    const int id = seven->get_id();
    m_db.reset();
    m_db = reopen();
    TVDBObject* reread = m_db->get_object_by_id(id);
    ASSERT_NE(reread, nullptr);
    EXPECT_EQ(reread->get_var_value("Size", false, false), "4");

    // A run the user started that runs away takes its changes with it.
    TVDBScriptEngineQt::set_time_limit_ms(100);
    TVDBScript spin("spin", "TVSet('Size', '1');\nwhile (true) {}", "");
    EXPECT_EQ(spin.run(*reread, false) % 100000, TVDBScript::TVErrC_ScriptStopped);
    take_messages();
    EXPECT_EQ(m_db->get_object_by_id(id)->get_var_value("Size", false, false), "4");
}

TEST_F(ScriptTest, ExpressionCacheEvaluatesAgainOnlyWhenTheTextChanges)
{
    TVDBScriptCache cache;
    EXPECT_EQ(cache.evaluate("6 * 7", 0), "42");
    EXPECT_EQ(cache.evaluate("(new Date()).getTime()", 1), cache.evaluate("(new Date()).getTime()", 1));
    EXPECT_EQ(cache.evaluate("6 * 8", 0), "48");
    EXPECT_EQ(cache.evaluate("nothing.here", 2), "ReferenceError: Can't find variable: nothing");
    // Expressions share an engine but not their declarations.
    EXPECT_EQ(cache.evaluate("var kept = 5; kept", 4), "5");
    EXPECT_EQ(cache.evaluate("typeof kept", 5), "undefined");
    TVDBScriptEngineQt::set_time_limit_ms(100);
    EXPECT_NE(cache.evaluate("while (true) {}", 3).find("was stopped at line 1"), std::string::npos);
}

TEST_F(ScriptTest, RunawayScriptIsStoppedAndItsStepDropped)
{
    TVDBTestNode* tables = node("Tables", {{"spin", "var n = 0;\ntry { while (true) { ++n; } } catch (e) {}\n'done'"}});
    TVDBScriptEngineQt::set_time_limit_ms(100);
    // Changes open before the run are finished first, and stay.
    ASSERT_EQ(m_db->add_object(new TVDBTestNode("Division"), nullptr, "", "", -1, ""), TVErrC_ok);
    const int id = tables->get_id();
    EXPECT_EQ(tables->get_script("spin")->run(*tables, false) % 100000,
              TVDBScript::TVErrC_ScriptStopped);
    // The rebuild made the object and its script afresh; the error is on them.
    EXPECT_EQ(m_db->get_object_by_id(id)->get_script("spin")->get_error_text(),
              "The script spin was stopped at line 2: it ran for longer than 0.1 seconds.");
    take_messages();
    EXPECT_EQ(names(*m_db), (std::set<std::string>{"Division", "Tables"}));
    EXPECT_FALSE(m_db->needs_save());
    // A stop inside a call stops the caller too.
    TVDBTestNode* again = dynamic_cast<TVDBTestNode*>(m_db->get_object_by_index(0));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(run(*again, "TVCallSelf('spin');\nTVOpenUrl('after')").first % 100000,
              TVDBScript::TVErrC_ScriptStopped);
    EXPECT_TRUE(m_host.m_calls.empty());
}

} // namespace
