// Scripts on objects of a real database: what a run returns and raises,
// the triggers and when they run, the calls that reach other objects, the
// date functions, prompts through the host, the expression cache, and a
// script that runs away being stopped with its changes dropped.

#include "LibDatabase/db/tvdbscript.h"

#include "LibDatabase/db/tvdbscriptcache.h"
#include "LibDatabase/db/tvdbscriptengineqt.h"
#include "LibDatabase/db/tvdbscripthost.h"
#include "LibDatabase/db/tvobjectspec.h"
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

TEST_F(ScriptTest, ExpressionCacheEvaluatesAgainOnlyWhenTheTextChanges)
{
    TVDBScriptCache cache;
    EXPECT_EQ(cache.evaluate("6 * 7", 0), "42");
    EXPECT_EQ(cache.evaluate("(new Date()).getTime()", 1), cache.evaluate("(new Date()).getTime()", 1));
    EXPECT_EQ(cache.evaluate("6 * 8", 0), "48");
    EXPECT_EQ(cache.evaluate("nothing.here", 2), "ReferenceError: Can't find variable: nothing");
    TVDBScriptEngineQt::set_time_limit_ms(100);
    EXPECT_NE(cache.evaluate("while (true) {}", 3).find("was stopped at line 1"), std::string::npos);
}

TEST_F(ScriptTest, RunawayScriptIsStoppedAndItsStepDropped)
{
    TVDBTestNode* tables = node("Tables", {{"spin", "var n = 0;\ntry { while (true) { ++n; } } catch (e) {}\n'done'"}});
    TVDBScriptEngineQt::set_time_limit_ms(100);
    // Changes open before the run are finished first, and stay.
    ASSERT_EQ(m_db->add_object(new TVDBTestNode("Division"), nullptr, "", "", -1, ""), TVErrC_ok);
    TVDBScript* spin = tables->get_script("spin");
    EXPECT_EQ(spin->run(*tables, false) % 100000, TVDBScript::TVErrC_ScriptStopped);
    EXPECT_EQ(spin->get_error_text(),
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
