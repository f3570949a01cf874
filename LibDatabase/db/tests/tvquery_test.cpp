// Queries in the framework's own database: the language read into
// conditions, fields and prompts, every message of the parser from a text
// that provokes it, runs over objects on specs, and queries carried in
// .tvo files and in the main file.

#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDatabase/db/tvquery.h"
#include "LibDatabase/db/tvquerycond.h"
#include "LibDatabase/db/tvqueryfield.h"
#include "LibDatabase/db/tvqueryprompt.h"
#include "LibDatabase/db/tvqueryresult.h"
#include "LibDate/date/tvdateparser.h"

#include "TestSupport/tvdbfiletest.h"
#include "TestSupport/tvdbtestnode.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The user's text of the newest error; clears them all.
std::string message()
{
    const TVErrDetails* details = get_tverror()->error_details();
    const std::string text = details != nullptr ? details->get_details(TVAspectUser) : "";
    get_tverror()->clear_all();
    return text;
}

// The table as the tool prints it.
std::string text_of(const TVQueryResult& result)
{
    std::ostringstream out;
    result.write_text(out);
    return out.str();
}

class QueryTest : public TVDBFileTest
{
protected:
    void SetUp() override
    {
        TVDBFileTest::SetUp();
        tv_install_date_parser();
        m_db = reopen();
    }

    // Books on specs: Item, and Book inheriting it, with a title and pages.
    void shelve()
    {
        for (const auto& [name, text] : std::vector<std::pair<std::string, std::string>>{
                 {"Item", "$<Title> = prompt();\n$<Pages> = init(\"0\");"},
                 {"Book", "inherits Item;"}})
            ASSERT_EQ(m_db->add_objectspec(new TVObjectSpec(name, text), "Spec"), TVErrC_ok);
        ASSERT_EQ(m_db->create_default_spec(), TVErrC_ok);
        ASSERT_EQ(m_db->parse_objectspecs(true), TVErrC_ok) << message();
        ASSERT_EQ(m_db->apply_objectspecs(), TVErrC_ok) << message();
        for (const auto& [title, pages, spec] :
             std::vector<std::tuple<std::string, std::string, std::string>>{
                 {"Dune", "412", "Book"}, {"Emma", "474", "Book"}, {"Lamp", "1", "Item"}}) {
            auto* node = new TVDBTestNode(title);
            ASSERT_EQ(m_db->add_object(node, nullptr, "", "",
                                       m_db->get_objectspec_id_for_name(spec), "Add"),
                      TVErrC_ok);
            ASSERT_EQ(node->set_var_value("Title", title, false), TVErrC_ok);
            ASSERT_EQ(node->set_var_value("Pages", pages, false), TVErrC_ok);
            m_ids.push_back(node->get_id());
        }
    }

    // Parses text as a query named "q" and runs it; the table, or the message.
    std::string run(const std::string& text)
    {
        TVQuery query("q", text);
        int result = query.parse(false, nullptr);
        TVQueryResult table;
        if (!istvwarn(result))
            result = query.execute(*m_db, table);
        return istvwarn(result) ? message() : text_of(table);
    }

    std::unique_ptr<TVDatabase> m_db;
    std::vector<int> m_ids;
};

// ---- The language -------------------------------------------------------------------

TEST_F(QueryTest, EachStatementFormBuildsItsObject)
{
    struct Row
    {
        const char* m_text;
        const char* m_class; // of the one condition or field
        const char* m_check; // "field:qualifier" to read back, or ""
        const char* m_value;
    };
    const Row rows[] = {
        {"Condition: From=Go+Session, Spec=Exercise;", "TVQueryCondSpec", "", ""},
        {"Condition: From=Go, ID=12;", "TVQueryCondId", "", ""},
        {"Condition: From=Go, Value=Name, Text=Seven times;", "TVQueryCondText", "", ""},
        {"Condition: From=Go, Value=Name, Regex=`^7`;", "TVQueryCondRegex", "", ""},
        {"Condition: From=Go, Value=Start, MinDate=\"1 June 2024\";", "TVQueryCondDate", "", ""},
        {"Condition: From=Go, Value=Start, MaxDate=today;", "TVQueryCondDate", "", ""},
        {"Condition: From=Go, Value=Time, LessThan=30, GreaterThan=5;", "TVQueryCondNum", "", ""},
        // Unquoted values keep their inner blanks; tags nobody reads stay.
        {"Field: Title=Best time, From=Exercise, Value=Best, Colour=red;", "TVQueryField",
         "Colour", "red"},
        {"Field: Title=`Week`, From=Go, Value=Start, RangeType=Date, RangeStart=1 June 2024, "
         "RangeEnd=30 June 2024, RangeDiv=1 week;",
         "TVQueryField", "RangeDiv", "1 week"},
    };
    for (const Row& row : rows) {
        TVQuery query("q", std::string("# one statement\n") + row.m_text);
        ASSERT_EQ(query.parse(false, nullptr), TVErrC_ok) << row.m_text << ": " << message();
        const TVQueryCond* made = query.get_nconditions() == 1
                                      ? query.get_condition(0)
                                      : static_cast<const TVQueryCond*>(query.get_field_no(0));
        ASSERT_NE(made, nullptr) << row.m_text;
        EXPECT_EQ(made->get_class_name(), row.m_class) << row.m_text;
        if (*row.m_check != '\0') {
            EXPECT_EQ(made->get_qualifier(row.m_check), row.m_value) << row.m_text;
        }
    }
    TVQuery titled("q", "Field: Title=Best time, From=Exercise, Value=Best;");
    ASSERT_EQ(titled.parse(false, nullptr), TVErrC_ok);
    EXPECT_EQ(titled.get_field_no(0)->get_title(), "Best time");
    EXPECT_EQ(titled.get_field_no(0)->get_objects(), std::vector<std::string>{"exercise"});

    TVQuery prompted("q", "Prompt: Title=Table, Value=7;\nPrompt: Title=\"Since\";");
    ASSERT_EQ(prompted.parse(false, nullptr), TVErrC_ok);
    EXPECT_EQ(prompted.get_prompts(), (std::vector<std::string>{"7", ""}));
}

TEST_F(QueryTest, EveryParseMessageNamesTheLine)
{
    const std::string usage = " - Condition should be defined as Condition: Tag=Value,Tag=\"Value\";";
    struct Row
    {
        std::string m_text;
        std::string m_message;
    };
    const Row rows[] = {
        {"Field: Title=A, From=Go, Value=Time;\nSelect: all;", "q:2: error  Unknown symbol \"Select\""},
        {"Condition From=Go;", "q:1: error  Missing ':'" + usage},
        {"Condition: From Go;", "q:1: error  Unknown 'Go' - Should be '=' sign" + usage},
        {"Condition: From=\"Go;", "q:1: error  Missing quote after 'Go;'" + usage},
        {"Condition: From=\"Go\" Value=Time;",
         "q:1: error  Unknown 'Value' - Should be ';' or ','" + usage},
        {"Condition: From=Go,\n 7=Time;", "q:1: error  Unknown '7' - Should be a new tag" + usage},
        {"Field: Title=Score;", "q:1: error  Missing From for Field"},
        {"Field: From=Go, Value=Time;", "q:1: error  Missing Title for Field"},
        {"\n\nField: Title=T, From=Go;", "q:3: error  Missing Value for Field"},
        {"Condition: Value=Time, Equal=1;", "q:1: error  Missing From for Field"},
        {"Condition: From=Go, Equal=1;", "q:1: error  Missing Value for Field"},
        {"Condition: From=Go, Value=Time, Above=1;", "q:1: error  Unknown condition type"},
        {"Prompt: Value=7;", "q:1: error  Missing Title for Prompt"},
    };
    for (const Row& row : rows) {
        TVQuery query("q", row.m_text);
        int line = 0;
        EXPECT_TRUE(istvwarn(query.parse(false, &line))) << row.m_text;
        EXPECT_EQ(message(), row.m_message) << row.m_text;
        EXPECT_EQ(line, std::stoi(row.m_message.substr(2))) << row.m_text;
    }
    // From a file, the file's name and the line there.
    TVQuery filed("q", "Field: Title=Score;");
    filed.set_file_info("/x/progress.tvo", 10);
    EXPECT_TRUE(istvwarn(filed.parse(false, nullptr)));
    EXPECT_EQ(message(), "/x/progress.tvo:11: error  Missing From for Field");
}

TEST_F(QueryTest, ConditionsTestTheirValues)
{
    struct Row
    {
        const char* m_text;
        const char* m_value;
        bool m_pass;
    };
    const Row rows[] = {
        {"Condition: From=Go, Value=T, Equal=1;", "1.0000001", false},
        {"Condition: From=Go, Value=T, Equal=1, Epsilon=0.001;", "1.0000001", true},
        {"Condition: From=Go, Value=T, NotEqual=1;", "2", true},
        {"Condition: From=Go, Value=T, NotEqual=1;", "1", false},
        {"Condition: From=Go, Value=T, LessThan=10;", "10", true},
        {"Condition: From=Go, Value=T, LessThan=10, GreaterThan=5;", "4.9", false},
        {"Condition: From=Go, ID=-1;", "88", true},
        {"Condition: From=Go, ID=88;", "87", false},
        {"Condition: From=Go, Value=T, Regex=`^7 ti`;", "7 times", true},
        {"Condition: From=Go, Value=T, Regex=`(`;", "(", false},
        {"Condition: From=Go, Value=T, MinDate=2024-06-01 0:00;", "2024-06-03 10:00", true},
        {"Condition: From=Go, Value=T, MaxDate=2024-06-01 0:00;", "2024-06-03 10:00", false},
        {"Condition: From=Go, Value=T, MinDate=2024-06-01 0:00;", "soon-ish", false},
    };
    for (const Row& row : rows) {
        TVQuery query("q", row.m_text);
        ASSERT_EQ(query.parse(false, nullptr), TVErrC_ok) << row.m_text << message();
        EXPECT_EQ(query.get_condition(0)->evaluate(row.m_value, *m_db), row.m_pass)
            << row.m_text << " on " << row.m_value;
    }
    // A long value, on which a matcher that recurses per character would
    // run out of stack.
    TVQuery deep("q", "Condition: From=Go, Value=T, Regex=`^a.*x$`;");
    ASSERT_EQ(deep.parse(false, nullptr), TVErrC_ok) << message();
    EXPECT_TRUE(deep.get_condition(0)->evaluate(std::string(200000, 'a') + "x", *m_db));
}

// ---- Runs ---------------------------------------------------------------------------

TEST_F(QueryTest, RunsSelectBySpecVariableAndId)
{
    shelve();
    const std::string fields = "Field: Title=Title, From=TVDBTestNode, Value=Title;\n"
                               "Field: Title=Pages, From=TVDBTestNode, Value=Pages, Sort=Down;\n";
    EXPECT_EQ(run("Condition: From=TVDBTestNode, Spec=Item;\n" + fields),
              "Title  Pages\nEmma   474\nDune   412\nLamp   1\n");
    EXPECT_EQ(run("Condition: From=TVDBTestNode, Spec=Item, Exact=1;\n" + fields),
              "Title  Pages\nLamp   1\n");
    EXPECT_EQ(run("Condition: From=tvdbtestnode, Value=Pages, GreaterThan=100;\n"
                  "Condition: From=TVDBTestNode, Value=Title, Regex=^E;\n" + fields),
              "Title  Pages\nEmma   474\n");
    EXPECT_EQ(run("Condition: From=TVDBTestNode, ID=" + std::to_string(m_ids[0]) + ";\n" +
                  "Field: Title=Spec, From=TVDBTestNode, Value=ObjectSpec;\n"
                  "Field: Title=All, From=TVDBTestNode, Value=*;"),
              "Spec  All\nBook  Dune 412\n");

    // Deleted objects never enter a chain; no condition makes one row of nothing.
    ASSERT_EQ(m_db->delete_object(m_ids[1], "Delete"), TVErrC_ok);
    EXPECT_EQ(run("Condition: From=TVDBTestNode, Spec=Item;\n" + fields),
              "Title  Pages\nDune   412\nLamp   1\n");
    TVQuery empty("q", "");
    TVQueryResult table;
    ASSERT_EQ(empty.execute(*m_db, table), TVErrC_ok);
    ASSERT_EQ(table.get_nids(), 1);
    EXPECT_TRUE(table.get_id_no(0)->get_ids().empty());
    EXPECT_EQ(run("Field: Title=Pages, From=Shelf, Value=Pages;"),
              "Object type shelf used in Pages field is missing from the query.");
}

TEST_F(QueryTest, PromptsGoIntoTheTextAndSummariesAddRows)
{
    shelve();
    TVQuery query("q", "Prompt: Title=Least, Value=400;\n"
                       "Condition: From=TVDBTestNode, Value=Pages, GreaterThan=$<Least>;\n"
                       "Field: Title=Title, From=TVDBTestNode, Value=Title;\n"
                       "Field: Title=Pages, From=TVDBTestNode, Value=Pages;\n"
                       "Field: Title=Size, From=TVDBTestNode, Value=Pages, RangeType=Number, "
                       "RangeStart=0, RangeEnd=450, RangeDiv=0;");
    ASSERT_EQ(query.parse(false, nullptr), TVErrC_ok) << message();
    ASSERT_EQ(query.expand_prompts(), TVErrC_ok) << message();
    TVQueryResult table;
    ASSERT_EQ(query.execute(*m_db, table), TVErrC_ok) << message();
    EXPECT_EQ(text_of(table), "Title  Pages  0-450\nDune   412    412\nEmma   474\n");
    EXPECT_EQ(table.get_row_header(0), std::to_string(m_ids[0]));

    query.supply_prompts({"0"});
    ASSERT_EQ(query.expand_prompts(), TVErrC_ok);
    ASSERT_EQ(query.execute(*m_db, table), TVErrC_ok) << message();
    EXPECT_EQ(table.get_prompt(), std::vector<std::string>{"0"});
    table.add_summary({"Dune", "Emma", "Dune"}, "Books", TVQueryResult::E_SummaryTotal);
    table.add_summary({}, "Mean", TVQueryResult::E_SummaryAverage);
    EXPECT_EQ(text_of(table), "Title  Pages   0-450\n"
                              "Dune   412     412\n"
                              "Emma   474\n"
                              "Lamp   1       1\n"
                              "Books  886.00  412.00\n"
                              "Mean   295.67  206.50\n");
    // Added rows carry ids that no object has.
    EXPECT_EQ(table.get_id_no(3)->first_id(), -10);
    EXPECT_EQ(table.get_id_no(4)->first_id(), -20);

    table.post_process(TVQueryResult::E_PostTotalColumns, 1, "Sum");
    EXPECT_EQ(table.get_header(3), "Sum");
    EXPECT_EQ(table.get_cell(0, 3), "824.00");
    table.post_process(TVQueryResult::E_PostTotalRows, 0, "All");
    EXPECT_EQ(table.get_cell(5, 0), "All");
    EXPECT_EQ(table.get_cell(5, 1), "887.00");
    EXPECT_EQ(table.get_id_no(5)->first_id(), -30);
}

// ---- Files ----------------------------------------------------------------------------

TEST_F(QueryTest, QueriesTravelInTvoFilesAndTheMainFile)
{
    shelve();
    const std::string text = "Condition: From=TVDBTestNode, Spec=Book;\n"
                             "Field: Title=Title, From=TVDBTestNode, Value=Title;\n";
    ASSERT_EQ(m_db->add_query(new TVQuery("Books", text), "Add query"), TVErrC_ok);
    const std::string tvo = m_dir.path().toStdString() + "/shelf.tvo";
    ASSERT_EQ(m_db->export_specs(tvo), TVErrC_ok);
    const std::string written = slurp(tvo);
    EXPECT_NE(written.find("\n<Books\n" + text + ">\n"), std::string::npos) << written;

    // The main file keeps the query, parsed, through a reload.
    ASSERT_EQ(m_db->get_query_by_name("Books")->parse(false, nullptr), TVErrC_ok);
    ASSERT_EQ(m_db->save(true, true, true), TVErrC_ok) << message();
    m_db.reset();
    m_db = reopen();
    const TVQuery* loaded = m_db->get_query_by_name("Books");
    ASSERT_NE(loaded, nullptr);
    TVQueryResult table;
    ASSERT_EQ(loaded->execute(*m_db, table), TVErrC_ok) << message();
    EXPECT_EQ(text_of(table), "Title\nDune\nEmma\n");

    // Read back into a fresh file: the same text comes out again.
    use_folder("second");
    std::unique_ptr<TVDatabase> other = reopen();
    ASSERT_EQ(other->import_specs(tvo), TVErrC_ok) << message();
    ASSERT_EQ(other->export_specs(tvo + "2"), TVErrC_ok);
    EXPECT_EQ(slurp(tvo + "2"), written);
    ASSERT_NE(other->get_query_by_name("Books"), nullptr);
    EXPECT_EQ(other->get_query_by_name("Books")->get_nconditions(), 1);

    // A broken query in a file is named with its file and line.
    spill(tvo, "{Extra\n$<A> = init(\"1\");\n}\n#\n<Broken\nField: Title=A;\n>\n");
    EXPECT_TRUE(istvwarn(m_db->import_specs(tvo)));
    EXPECT_EQ(message(), tvo + ":6: error  Missing From for Field");
    std::string name;
    int line = 0;
    std::string text2;
    EXPECT_TRUE(istvwarn(m_db->validate_queries(name, line, text2)));
    EXPECT_EQ(name, "Broken");
    EXPECT_EQ(line, 6);
    message();
}

} // namespace
