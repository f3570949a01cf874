// The maths database over a file in a temporary folder: sessions filling
// and closing as "now" moves across days, exercises coming and going, the
// record rule over stored runs, the stored form and the rotation of the
// background image. The reminders are tested as the main window shows them.

#include "AppTarvelloMaths/maths/mathsdb.h"

#include "AppTarvelloMaths/maths/tests/mathstest.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvobjectspec.h"
#include "LibDate/core/tvdateutils.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr long C_Day = 86400;

class MathsDBTest : public MathsTest
{
protected:
    void SetUp() override
    {
        MathsTest::SetUp();
        ASSERT_TRUE(m_dir.isValid());
        const std::string root = m_dir.path().toStdString();
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(root + "/data"));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(root + "/cache"));
        m_file = root + "/drill" + MathsDB::C_FileExtension;
        m_db = open();
    }

    // The file loaded as at a program start, created when missing.
    std::unique_ptr<MathsDB> open()
    {
        auto db = std::make_unique<MathsDB>();
        EXPECT_EQ(db->load(m_file, true, std::string(), true, true, true), TVErrC_ok);
        return db;
    }

    void reopen()
    {
        ASSERT_EQ(m_db->complete_operation("Test"), TVErrC_ok);
        m_db.reset();
        m_db = open();
    }

    int add_exercise(const std::string& name, int type, int sequence)
    {
        Exercise* exercise = nullptr;
        EXPECT_EQ(m_db->create_exercise(exercise), TVErrC_ok);
        exercise->set_type(type);
        exercise->set_value(3, true);
        exercise->set_number(2);
        exercise->set_sequence(sequence);
        exercise->set_name(name);
        return exercise->get_id();
    }

    // The open run of exercise in the current session, or null.
    Go* open_go(int exercise) const
    {
        const Session* session = m_db->current_session();
        for (int i = 0; session != nullptr && i < session->get_ngos(); ++i) {
            Go* go = m_db->get_go_id(session->get_go_no(i));
            if (go != nullptr && go->get_exercise() == exercise && !go->is_complete())
                return go;
        }
        return nullptr;
    }

    // Runs go as the run window does, a second per answer; the first
    // `wrong` questions are first answered one too high.
    void run(Go& go, int wrong = 0)
    {
        ASSERT_EQ(m_db->fill_questions(go), TVErrC_ok);
        go.restart();
        for (int i = 0; i < go.get_nquestions(); ++i) {
            Question* question = go.get_question_no(i);
            m_clock.advance(1);
            if (i < wrong) {
                const std::string high = std::to_string(int(question->get_solution()) + 1);
                (void)question->set_answer(high, true);
                go.update(true);
            }
            (void)question->set_answer(question->solution_text(), false);
            go.update(true);
        }
        ASSERT_TRUE(go.is_complete());
        m_db->collate_incorrect(go);
        ASSERT_EQ(m_db->update(), TVErrC_ok);
    }

    static std::string solution(const Go& go, int index)
    {
        return go.get_question_no(index)->solution_text();
    }

    // Exercise names of the current session's runs, "*" marking finished ones.
    std::string session_text() const
    {
        std::string text;
        const Session* session = m_db->current_session();
        for (int i = 0; session != nullptr && i < session->get_ngos(); ++i) {
            const Go* go = m_db->get_go_id(session->get_go_no(i));
            const Exercise* exercise = go ? m_db->get_exercise_id(go->get_exercise()) : nullptr;
            text += (text.empty() ? "" : " ") + (exercise ? exercise->get_name() : "?") +
                    (go && go->is_complete() ? "*" : "");
        }
        return text;
    }

    QTemporaryDir m_dir;
    std::string m_file;
    std::unique_ptr<MathsDB> m_db;
};

TEST_F(MathsDBTest, SessionsFillFinishAndFollowEachOtherAcrossDays)
{
    EXPECT_EQ(m_db->current_session(), nullptr);
    EXPECT_FALSE(m_db->has_user_data());
    ASSERT_EQ(m_db->recalculate(TVDatabase::E_RecalcChanged), TVErrC_ok);
    ASSERT_NE(m_db->current_session(), nullptr);
    EXPECT_EQ(session_text(), "");

    const int tables = add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
    const int adding = add_exercise("Adding", Exercise::C_TypeAddition, 0);
    EXPECT_TRUE(m_db->has_user_data());
    m_clock.advance(600);
    ASSERT_EQ(m_db->update(), TVErrC_ok);
    EXPECT_EQ(session_text(), "Tables Adding");
    // Untouched, the session's start follows the present.
    EXPECT_EQ(m_db->current_session()->get_start(), TVDateUtils::now());
    EXPECT_EQ(m_db->get_remaining_exercises(), 2);

    run(*open_go(tables));
    const TVDate pinned = m_db->current_session()->get_start();
    m_clock.advance(600);
    run(*open_go(adding));
    EXPECT_EQ(m_db->current_session()->get_start(), pinned);
    EXPECT_EQ(session_text(), "Tables* Adding*");
    EXPECT_EQ(m_db->get_remaining_exercises(), 0);

    // "Again": a further run of a finished exercise reopens the session.
    int again = -1;
    ASSERT_EQ(m_db->add_go(tables, again), TVErrC_ok);
    run(*m_db->get_go_id(again));
    EXPECT_EQ(session_text(), "Tables* Adding* Tables*");

    // Next morning the old session closes and a full one begins.
    m_clock.advance(C_Day);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    ASSERT_EQ(m_db->get_nsessions(), 2);
    EXPECT_TRUE(m_db->get_session_no(0)->get_complete());
    EXPECT_EQ(m_db->current_session(), m_db->get_session_no(1));
    EXPECT_EQ(session_text(), "Tables Adding");

    // A week later the reloaded file still has that session open, and the
    // periodic update leaves it as it is.
    m_clock.advance(7 * C_Day);
    reopen();
    ASSERT_EQ(m_db->recalculate(TVDatabase::E_RecalcChanged), TVErrC_ok);
    EXPECT_EQ(m_db->get_nsessions(), 2);
    EXPECT_EQ(session_text(), "Tables Adding");
}

TEST_F(MathsDBTest, TheFirstIncompleteSessionIsCurrentAndTheOthersClose)
{
    for (int i = 0; i < 3; ++i) {
        auto* session = new Session;
        session->set_start(TVDateUtils::now() + TVDuration(i * C_Day));
        session->add_go(999); // a run id with no object behind it
        ASSERT_EQ(m_db->add_object(session, m_db.get(), MathsDB::C_SessionTag, "", -1, ""),
                  TVErrC_ok);
    }
    Session* first = m_db->get_session_no(0);
    m_db->get_session_no(2)->set_complete(true);
    EXPECT_EQ(m_db->current_session(), first);
    EXPECT_EQ(m_db->get_remaining_exercises(), 1);

    ASSERT_EQ(m_db->cleanup_incomplete(false), TVErrC_ok);
    EXPECT_FALSE(first->get_complete());
    EXPECT_TRUE(m_db->get_session_no(1)->get_complete());

    // With everything complete the newest start wins.
    first->set_complete(true);
    EXPECT_EQ(m_db->current_session(), m_db->get_session_no(2));
}

TEST_F(MathsDBTest, ExercisesComeGoAndReopenOverAWeek)
{
    const int tables = add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
    const int repeat = add_exercise("Repeat", Exercise::C_TypeRepeatIncorrect, 0);
    m_db->get_exercise_id(repeat)->set_number(1);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    // Nothing has gone wrong yet, so there is nothing to repeat.
    EXPECT_EQ(session_text(), "Tables");

    run(*open_go(tables), 1);
    EXPECT_EQ(m_db->get_incorrect().size(), 1);
    EXPECT_EQ(session_text(), "Tables* Repeat");
    run(*open_go(repeat));
    EXPECT_EQ(session_text(), "Tables* Repeat*");

    // Tuesday: a new exercise joins the session at the next update; a
    // second mistake reopens the finished repeat, cleared.
    m_clock.advance(C_Day);
    const int adding = add_exercise("Adding", Exercise::C_TypeAddition, 0);
    int again = -1;
    ASSERT_EQ(m_db->add_go(tables, again), TVErrC_ok);
    Go* go = m_db->get_go_id(again);
    ASSERT_EQ(m_db->fill_questions(*go), TVErrC_ok);
    go->restart();
    for (int i = 0; i < go->get_nquestions(); ++i)
        (void)go->get_question_no(i)->set_answer(i == 1 ? "0" : solution(*go, i), true);
    (void)go->get_question_no(1)->set_answer(solution(*go, 1), true);
    go->update(true);
    m_db->collate_incorrect(*go);
    ASSERT_EQ(m_db->update(), TVErrC_ok);
    EXPECT_EQ(m_db->get_incorrect().size(), 2);
    EXPECT_EQ(session_text(), "Tables* Repeat Tables* Adding");
    EXPECT_FALSE(open_go(repeat)->is_started());

    // Wednesday: Adding made inactive while its run waits; the run goes.
    m_clock.advance(C_Day);
    m_db->get_exercise_id(adding)->set_active(false);
    ASSERT_EQ(m_db->update(), TVErrC_ok);
    EXPECT_EQ(session_text(), "Tables* Repeat Tables*");

    // Thursday: Adding has no runs left and goes; Tables has and stays,
    // inactive, with its best time.
    m_clock.advance(C_Day);
    const TVDuration best = m_db->get_best_time(tables, -1);
    ASSERT_EQ(m_db->delete_exercise(adding), TVErrC_ok);
    EXPECT_EQ(m_db->get_exercise_id(adding), nullptr);
    ASSERT_EQ(m_db->delete_exercise(tables), TVErrC_ok);
    ASSERT_NE(m_db->get_exercise_id(tables), nullptr);
    EXPECT_FALSE(m_db->get_exercise_id(tables)->get_active());
    EXPECT_TRUE(m_db->exercise_referenced(tables));
    EXPECT_EQ(m_db->get_best_time(tables, -1), best);

    // Next week: only the repeat is due; the file forgot the mistakes.
    m_clock.advance(4 * C_Day);
    reopen();
    EXPECT_TRUE(m_db->get_incorrect().empty());
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    EXPECT_EQ(session_text(), "");
    EXPECT_EQ(m_db->get_nexercises(), 2);
}

TEST_F(MathsDBTest, ARunCutOffByAnExitIsDroppedAtTheNextLoad)
{
    const int tables = add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    Go* go = open_go(tables);
    const int cut = go->get_id();
    ASSERT_EQ(m_db->fill_questions(*go), TVErrC_ok);
    go->restart();
    (void)go->get_question_no(0)->set_answer(go->get_question_no(0)->solution_text(), false);
    go->update(true);
    ASSERT_EQ(m_db->recalculate(TVDatabase::E_RecalcChanged), TVErrC_ok);
    EXPECT_EQ(open_go(tables)->get_id(), cut) << "a run in its window stays";

    reopen();
    ASSERT_EQ(m_db->recalculate(TVDatabase::E_RecalcChanged), TVErrC_ok);
    EXPECT_EQ(m_db->get_go_id(cut), nullptr);
    ASSERT_NE(open_go(tables), nullptr);
    EXPECT_FALSE(open_go(tables)->is_started());
}

TEST_F(MathsDBTest, BestTimeSkipsUnfinishedRunsAndATieIsNoRecord)
{
    struct Row {
        const char* name;
        std::vector<long> seconds; // 0: a run that never started
        int exclude;               // index into seconds, or -1
        long best;
        bool lastIsRecord;
    };
    const std::vector<Row> rows = {
        {"NoRunsNoTime", {}, -1, 0, false},
        {"UnstartedRunsGiveNoTime", {0, 0}, -1, 0, false},
        {"FirstFinishedRunIsNoRecord", {0, 30}, 1, 0, false},
        {"ShortestWins", {40, 25, 0, 30}, -1, 25, false},
        {"FasterThanAllOthers", {40, 25, 20}, 2, 25, true},
        {"TieIsNoRecord", {25, 40, 25}, 2, 25, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        m_db.reset();
        ASSERT_TRUE(QFile::remove(QString::fromStdString(m_file)));
        m_db = open();
        const int exercise = add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
        const int other = add_exercise("Other", Exercise::C_TypeTimesTables, 1);
        std::vector<int> ids;
        for (long seconds : row.seconds) {
            int id = -1;
            ASSERT_EQ(m_db->add_go(exercise, id), TVErrC_ok);
            if (seconds > 0)
                m_db->get_go_id(id)->set_time(
                    TVDateSlot(TVDateUtils::now(), TVDateUtils::now() + TVDuration(seconds), true));
            ids.push_back(id);
        }
        int fast = -1; // another exercise's quicker run counts for nothing
        ASSERT_EQ(m_db->add_go(other, fast), TVErrC_ok);
        m_db->get_go_id(fast)->set_time(
            TVDateSlot(TVDateUtils::now(), TVDateUtils::now() + TVDuration(1), true));

        const int exclude = row.exclude < 0 ? -1 : ids[size_t(row.exclude)];
        const TVDuration best = m_db->get_best_time(exercise, exclude);
        EXPECT_EQ(best, TVDuration(row.best));
        if (!ids.empty()) {
            EXPECT_EQ(m_db->get_go_id(ids.back())->is_record(best), row.lastIsRecord);
        }
        std::vector<double> times;
        for (long seconds : row.seconds)
            if (seconds > 0)
                times.push_back(double(seconds));
        if (!ids.empty()) {
            EXPECT_EQ(m_db->get_times(*m_db->get_go_id(ids.front())), times);
        }
    }
}

TEST_F(MathsDBTest, SavedFileReadsBackWithoutQuestionsOrMistakes)
{
    const int tables = add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
    (void)add_exercise("Repeat", Exercise::C_TypeRepeatIncorrect, 0);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    run(*open_go(tables), 1);
    m_db->edit_reminders() = {TVDuration(8 * 3600), TVDuration(16 * 3600 + 1800)};
    std::string image;
    ASSERT_EQ(m_db->get_current_image(image), TVErrC_ok);
    ASSERT_EQ(m_db->next_image(image), TVErrC_ok);
    m_db->set_current_image(image);
    ASSERT_EQ(m_db->save(true, true, true), TVErrC_ok);
    std::ostringstream before;
    ASSERT_EQ(m_db->write(before, -1, true, "", 0), TVErrC_ok);
    ASSERT_GT(m_db->get_go_no(0)->get_nquestions(), 0);

    m_db.reset();
    m_db = open();
    std::ostringstream after;
    ASSERT_EQ(m_db->write(after, -1, true, "", 0), TVErrC_ok);
    EXPECT_EQ(after.str(), before.str());
    EXPECT_NE(before.str().find("{MathsDB"), std::string::npos);
    EXPECT_EQ(m_db->get_reminders().size(), 2u);
    EXPECT_EQ(m_db->get_viewed(), (std::vector<std::string>{"giraffe.jpg"}));
    EXPECT_TRUE(m_db->get_incorrect().empty());
    for (int i = 0; i < m_db->get_ngos(); ++i) {
        EXPECT_EQ(m_db->get_go_no(i)->get_nquestions(), 0);
        EXPECT_FALSE(m_db->get_go_no(i)->is_active());
    }
    EXPECT_EQ(session_text(), "Tables* Repeat");
}

TEST_F(MathsDBTest, ImportedRunsAndSessionsReferToTheImportedExercises)
{
    const int tables = add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    run(*open_go(tables));
    ASSERT_EQ(m_db->save(true, true, false), TVErrC_ok);
    const std::string copy = m_dir.path().toStdString() + "/copy" + MathsDB::C_FileExtension;
    ASSERT_TRUE(QFile::copy(QString::fromStdString(m_file), QString::fromStdString(copy)));
    const int before = m_db->get_nobjects();
    ASSERT_EQ(m_db->import_db(copy, nullptr), TVErrC_ok);
    ASSERT_EQ(m_db->get_nexercises(), 2);
    ASSERT_EQ(m_db->get_nsessions(), 2);
    // The copies' references are to the copies, above the ids we had.
    const Session* imported = m_db->get_session_no(1);
    ASSERT_GT(imported->get_ngos(), 0);
    for (int i = 0; i < imported->get_ngos(); ++i) {
        const Go* go = m_db->get_go_id(imported->get_go_no(i));
        ASSERT_NE(go, nullptr);
        EXPECT_GE(go->get_id(), before);
        const Exercise* exercise = m_db->get_exercise_id(go->get_exercise());
        ASSERT_NE(exercise, nullptr);
        EXPECT_NE(exercise->get_id(), tables);
        EXPECT_EQ(exercise->get_name(), "Tables");
    }
}

TEST_F(MathsDBTest, ImportedSpecsLeaveTheDrillRecordsAsTheyWere)
{
    (void)add_exercise("Tables", Exercise::C_TypeTimesTables, 1);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    // Every record but the specs' and the database's own, which the import stamps.
    const auto records = [this] {
        std::string text;
        for (int i = 0; i < m_db->get_nobjects(); ++i) {
            const TVDBObject* object = m_db->get_object_by_index(i);
            std::string record;
            if (dynamic_cast<const TVObjectSpec*>(object) == nullptr &&
                object->object_to_string(record, 0) == TVErrC_ok)
                text += record;
        }
        return text;
    };
    const std::string before = records();
    const std::string specs = m_dir.path().toStdString() + "/sheets.tvo";
    {
        std::ofstream out(specs);
        out << "{Worksheet\n$<Title> = prompt();\n$[Row] = ${Default}[+];\n}\n";
    }
    ASSERT_EQ(m_db->do_import(specs), TVErrC_ok);
    EXPECT_NE(m_db->get_objectspec_by_name("Worksheet"), nullptr);
    EXPECT_EQ(records(), before);
    reopen();
    EXPECT_EQ(records(), before);
    EXPECT_EQ(m_db->get_spec_id(), -1);
}

class MathsDBImageTest : public MathsDBTest
{
protected:
    std::string make_file(const std::string& name)
    {
        const QString path = m_dir.filePath(QString::fromStdString(name));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return path.toStdString();
    }

    std::string next()
    {
        std::string image;
        EXPECT_EQ(m_db->next_image(image), TVErrC_ok);
        return tv_filename(image);
    }
};

TEST_F(MathsDBImageTest, BuiltInPicturesCycleFromTheGiraffe)
{
    std::string image;
    ASSERT_EQ(m_db->get_current_image(image), TVErrC_ok);
    EXPECT_EQ(image, MathsDB::C_BuiltinImages[0]);
    m_db->set_current_image(""); // nothing shown yet: an empty name matches nothing
    std::string names;
    for (int i = 0; i < 11; ++i)
        names += next() + " ";
    EXPECT_EQ(names, "giraffe.jpg meerkat.jpg ostrich.jpg penguin.jpg seal.jpg dolphin.jpg "
                     "duck.jpg hedgehog.jpg monkey.jpg sheep.jpg giraffe.jpg ");
}

TEST_F(MathsDBImageTest, AFolderRotatesAFileStaysAndAVanishedFolderFallsBack)
{
    make_file("pics/a.jpg");
    make_file("pics/b.PNG");
    make_file("pics/notes.txt");
    make_file("pics/sub/a.jpg");
    const std::string folder = m_dir.filePath("pics").toStdString();
    m_db->set_imagedir(folder);
    std::string image;
    ASSERT_EQ(m_db->get_current_image(image), TVErrC_ok);
    EXPECT_EQ(image, folder + "/a.jpg");
    // The name a.jpg stands twice in the tree, so it is shown twice.
    EXPECT_EQ(next() + " " + next() + " " + next() + " " + next(), "b.PNG a.jpg a.jpg b.PNG");

    const std::string single = make_file("one.png");
    m_db->set_imagedir(single);
    EXPECT_TRUE(m_db->get_viewed().empty());
    ASSERT_EQ(m_db->get_current_image(image), TVErrC_ok);
    EXPECT_EQ(image, single);
    EXPECT_EQ(next() + " " + next(), "one.png one.png");

    m_db->set_imagedir(folder);
    ASSERT_TRUE(QDir(QString::fromStdString(folder)).removeRecursively());
    ASSERT_EQ(m_db->get_current_image(image), TVErrC_ok);
    EXPECT_EQ(image, MathsDB::C_BuiltinImages[0]);
    EXPECT_EQ(m_db->get_imagedir(), "");
    EXPECT_TRUE(m_db->get_viewed().empty());
}

} // namespace
