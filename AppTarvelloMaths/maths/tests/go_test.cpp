// A run: its clock, its completion, the record rule, and the stored form
// of runs and exercises.

#include "AppTarvelloMaths/maths/go.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/tests/mathstest.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

class GoTest : public MathsTest
{
protected:
    // A prepared run of "1 + 1" and "2 + 2".
    static void prepare(Go& go)
    {
        go.add_question(new Question("1 + 1", 2));
        go.add_question(new Question("2 + 2", 4));
        go.restart();
    }

    // One keystroke as the run window passes it on.
    static void type(Go& go, int index, const char* text)
    {
        if (go.get_question_no(index)->set_answer(text, false) != TVErrC_okNotFinished)
            go.update(true);
    }

    // Seconds after 2 June 2024 12:00 GMT.
    static TVDate at(long seconds)
    {
        return TVDate(2024, 5, 1, 12, 0, 0, 0, TVDate::C_GMT) + TVDuration(seconds);
    }

    static std::string date_text(const TVDate& date)
    {
        std::ostringstream out;
        out << date;
        return out.str();
    }
};

TEST_F(GoTest, ClockStartsWithTheFirstJudgedInputOnly)
{
    Go go;
    go.add_question(new Question("3 x 4", 12));
    go.add_question(new Question("2 + 2", 4));
    go.restart();
    EXPECT_TRUE(go.is_active());
    m_clock.advance(5);
    type(go, 0, "1"); // not yet judged
    EXPECT_FALSE(go.is_started());

    m_clock.advance(2, 250000);
    type(go, 0, "13"); // judged, wrong
    ASSERT_TRUE(go.is_started());
    EXPECT_EQ(go.get_time().get_start(), TVDateUtils::unow());
    EXPECT_EQ(go.get_duration(), TVDuration(0, 0, 0));

    m_clock.advance(4);
    type(go, 0, "12");
    EXPECT_FALSE(go.is_complete());
    m_clock.advance(3);
    type(go, 1, "4");
    EXPECT_TRUE(go.is_complete());
    EXPECT_FALSE(go.is_active());
    EXPECT_EQ(go.get_duration(), TVDuration(7));
}

TEST_F(GoTest, CompletionNeedsEveryQuestionRightAtLast)
{
    struct Row {
        const char* name;
        std::vector<const char*> first, second;
        bool stamp;
        bool complete, started;
    };
    const std::vector<Row> rows = {
        {"NothingAnswered", {}, {}, true, false, true},
        {"OneOpen", {"2"}, {"5"}, true, false, true},
        {"WrongThenRight", {"3", "2"}, {"5", "4"}, true, true, true},
        {"LeadingZeroCountsAsRight", {"02"}, {"4"}, true, true, true},
        {"UnstampedKeepsItsTime", {"2"}, {"4"}, false, true, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Go go;
        prepare(go);
        for (const char* text : row.first)
            (void)go.get_question_no(0)->set_answer(text, false);
        for (const char* text : row.second)
            (void)go.get_question_no(1)->set_answer(text, false);
        go.update(row.stamp);
        EXPECT_EQ(go.is_complete(), row.complete);
        EXPECT_EQ(go.is_active(), !row.complete);
        EXPECT_EQ(go.is_started(), row.started);
    }
}

TEST_F(GoTest, RunWithoutQuestionsIsNeverTouched)
{
    Go go;
    go.restart();
    go.update(true);
    EXPECT_FALSE(go.is_complete());
    EXPECT_FALSE(go.is_started());
    EXPECT_TRUE(go.is_active());
    EXPECT_EQ(go.get_question_no(0), nullptr);
    EXPECT_EQ(go.get_question_no(-1), nullptr);
    EXPECT_FALSE(get_tverror()->is_error());
}

TEST_F(GoTest, RestartKeepsQuestionsAndClearDropsThem)
{
    Go go;
    prepare(go);
    type(go, 0, "2");
    type(go, 1, "4");
    ASSERT_TRUE(go.is_complete());
    go.restart();
    EXPECT_EQ(go.get_nquestions(), 2);
    EXPECT_FALSE(go.is_complete());
    EXPECT_FALSE(go.is_started());
    EXPECT_TRUE(go.is_active());
    go.clear();
    EXPECT_EQ(go.get_nquestions(), 0);
    EXPECT_FALSE(go.is_active());
    EXPECT_FALSE(go.is_started());
}

// Runs of exercise 1 (id, seconds, or -1 for an unfinished run), then the
// one just finished, id 10; a run of exercise 2 lasting 3 s is always there.
TEST_F(GoTest, RecordBeatsTheBestStrictly)
{
    struct Row {
        const char* name;
        std::vector<long> earlier;
        long now;
        long best;
        bool record;
    };
    const std::vector<Row> rows = {
        {"FirstRunIsNoRecord", {}, 8, 0, false},
        {"UnfinishedRunsHaveNoTime", {-1, -1}, 8, 0, false},
        {"Faster", {10, -1, 12}, 8, 10, true},
        {"TieIsNoRecord", {8}, 8, 8, false},
        {"Slower", {9, 8, 20}, 10, 8, false},
        {"BestAmongUnfinished", {-1, 9, -1, 6}, 5, 6, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::unique_ptr<Go>> gos;
        auto add = [&](int exercise, long seconds) {
            gos.push_back(std::make_unique<Go>());
            Go& go = *gos.back();
            go.set_id(static_cast<int>(gos.size()), TVDateUtils::now(), false);
            go.set_exercise(exercise);
            if (seconds >= 0)
                go.set_time(TVDateSlot(at(0), at(seconds), true));
        };
        add(2, 3);
        for (long seconds : row.earlier)
            add(1, seconds);
        add(1, row.now);
        gos.back()->set_id(10, TVDateUtils::now(), false);

        TVDuration best;
        for (const auto& go : gos)
            Go::fold_best_time(best, *go, 1, 10);
        EXPECT_EQ(best, TVDuration(row.best));
        EXPECT_EQ(gos.back()->is_record(best), row.record);
    }
}

// Whether a run still counts for a session that began at at(0); the
// sequencing decides, not the schedule.
TEST_F(GoTest, RunCountsForTheSessionByTheSequencing)
{
    struct Row {
        const char* name;
        int sequence;
        bool complete;
        long started;
        bool counts;
    };
    const std::vector<Row> rows = {
        {"OpenRunAlwaysCounts", 9, false, 0, true},
        {"RandomCountsAnyRun", 0, true, -60, true},
        {"InOrderRunBeforeTheSession", 1, true, -60, false},
        {"InOrderRunAtTheSessionStart", 1, true, 0, true},
        {"OtherValueNeverCounts", 9, true, 60, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Exercise exercise;
        exercise.set_sequence(row.sequence);
        exercise.set_schedule(Exercise::C_ScheduleWeekly);
        Go go;
        go.add_question(new Question("1 + 1", 2));
        go.set_time(TVDateSlot(at(row.started), at(row.started + 30), true));
        if (row.complete) {
            (void)go.get_question_no(0)->set_answer("2", false);
            go.update(false);
        }
        EXPECT_EQ(exercise.go_time_expired(go, at(0)), row.counts);
    }
}

// Written by hand in the stored order; writing what was read gives the
// same bytes.
TEST_F(GoTest, ExerciseStoresEveryFieldInOrder)
{
    const std::string text = "{Exercise\n"
                             "!name!Sevens\n"
                             "!type!3\n"
                             "!minimum!2\n"
                             "!maximum!9\n"
                             "!value!7\n"
                             "!value!4\n"
                             "!number!20\n"
                             "!sequencing!0\n"
                             "!maxTime!0000000000000090@\n"
                             "!maxMistakes!3\n"
                             "!active!0\n"
                             "!schedule!3\n"
                             "!TVDBObject+I!5\n"
                             "}\n";
    std::unique_ptr<Exercise> exercise = read<Exercise>(text);
    ASSERT_NE(exercise, nullptr);
    EXPECT_EQ(exercise->get_values(), "7, 4");
    EXPECT_EQ(exercise->get_timelimit(), TVDuration(90));
    EXPECT_FALSE(exercise->get_active());
    EXPECT_EQ(write(*exercise), text);
    EXPECT_EQ(write(Exercise()), "{Exercise\n}\n");
}

TEST_F(GoTest, GoStoresNeitherQuestionsNorActivity)
{
    const std::string slot = date_text(at(0)) + "=" + date_text(at(42));
    const std::string text = "{Go\n"
                             "!exercise!4\n"
                             "!time!" + slot + "\n"
                             "!complete!1\n"
                             "!TVDBObject+I!9\n"
                             "}\n";
    std::unique_ptr<Go> go = read<Go>(text);
    ASSERT_NE(go, nullptr);
    EXPECT_EQ(go->get_duration(), TVDuration(42));
    EXPECT_EQ(write(*go), text);

    prepare(*go);
    ASSERT_TRUE(go->is_active());
    const std::string busy = write(*go);
    std::unique_ptr<Go> back = read<Go>(busy);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->get_nquestions(), 0);
    EXPECT_FALSE(back->is_active());
    EXPECT_EQ(write(*back), busy);
    EXPECT_EQ(write(Go()), "{Go\n}\n");
}

TEST_F(GoTest, RemapFollowsTheExercise)
{
    Go go;
    go.set_exercise(4);
    go.remap_id(4, 17);
    EXPECT_EQ(go.get_exercise(), 17);
    go.remap_id(4, 99);
    EXPECT_EQ(go.get_exercise(), 17);
}

} // namespace
