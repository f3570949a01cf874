// The run window driven by key events: judging as the child types, the
// clock, the focus, closing, and the record and pace marker over runs.

#include "AppTarvelloMaths/qt/goexerciseqt.h"

#include "AppTarvelloMaths/maths/question.h"
#include "AppTarvelloMaths/qt/tests/mathsqttest.h"
#include "LibGui/qt/tvlineeditqt.h"

#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>

namespace {

class GoExerciseQtTest : public MathsQtTest
{
protected:
    void SetUp() override
    {
        MathsQtTest::SetUp();
        GoExerciseQt::set_beep([this] { ++m_beeps; });
    }

    void TearDown() override
    {
        GoExerciseQt::set_beep(nullptr);
        delete m_window.data();
        MathsQtTest::TearDown();
    }

    // Opens a run of exercise in a window of its own.
    GoExerciseQt* start(int exercise)
    {
        m_goId = new_go(exercise);
        GoExerciseQt* window = nullptr;
        EXPECT_EQ(GoExerciseQt::start_exercise(*m_db, m_goId, nullptr, &window), TVErrC_ok);
        m_window = window;
        return window;
    }

    Go& go() const { return *m_db->get_go_id(m_goId); }
    void type(int row, const char* text) { QTest::keyClicks(m_window->input_field(row), text); }
    std::string answer(int row) const { return go().get_question_no(row)->solution_text(); }
    void answer_all_from(int row)
    {
        for (int i = row; i < go().get_nquestions(); ++i)
            type(i, answer(i).c_str());
    }
    std::string status() const { return m_window->status_field()->toPlainText().toStdString(); }
    std::string cell(int row, int column) const
    {
        return m_window->question_list()->topLevelItem(row)->text(column).toStdString();
    }

    // A whole run taking seconds from the first answer to the last.
    void timed_run(int exercise, long seconds)
    {
        start(exercise);
        type(0, answer(0).c_str());
        m_clock.advance(seconds);
        answer_all_from(1);
        ASSERT_TRUE(go().is_complete());
    }

    int m_beeps = 0;
    int m_goId = -1;
    QPointer<GoExerciseQt> m_window;
};

} // namespace

TEST_F(GoExerciseQtTest, AnswersAreJudgedAsTheyAreTyped)
{
    GoExerciseQt* window = start(add_tables({4}, 3, 5, 3)); // 12, 16, 20
    ASSERT_EQ(window->question_list()->topLevelItemCount(), 3);
    EXPECT_EQ(window->objectName(), "GoExerciseQt");
    EXPECT_EQ(cell(1, GoExerciseQt::C_ColQuestion), "4 x 4");
    EXPECT_EQ(status(), "\n    Start typing your answers to begin...");
    EXPECT_EQ(window->focusWidget(), window->input_field(0));

    // The clock waits for a whole answer.
    m_clock.advance(10);
    window->do_refresh();
    type(0, "1");
    window->do_refresh();
    EXPECT_FALSE(go().is_started());
    EXPECT_EQ(status(), "\n    Start typing your answers to begin...");

    // A wrong answer empties the field, beeps and starts the clock.
    type(0, "3");
    EXPECT_TRUE(go().is_started());
    EXPECT_EQ(window->input_field(0)->text(), "");
    EXPECT_EQ(m_beeps, 1);
    EXPECT_EQ(cell(0, GoExerciseQt::C_ColWrong), "Not 13");
    EXPECT_EQ(window->focusWidget(), window->input_field(0));

    m_clock.advance(2, 300000);
    window->do_refresh();
    EXPECT_EQ(status(), "\n    2.3");

    // Right answers move on by themselves.
    type(0, "12");
    EXPECT_EQ(cell(0, GoExerciseQt::C_ColWrong), "1 wrong");
    EXPECT_FALSE(window->question_list()->topLevelItem(0)->icon(GoExerciseQt::C_ColTick).isNull());
    EXPECT_EQ(window->focusWidget(), window->input_field(1));
    type(2, "20"); // out of turn: the move wraps round onto the answered first row
    window->do_refresh();
    EXPECT_EQ(window->focusWidget(), window->input_field(1));
    type(1, "16");
    EXPECT_TRUE(go().is_complete());
    EXPECT_EQ(window->focusWidget(), window->close_button());
    EXPECT_TRUE(window->close_button()->isDefault());
    EXPECT_EQ(status(), "\n    Finished in 2.3 seconds.");
    EXPECT_EQ(m_beeps, 1);

    // The widths are the window's own, whatever the header allows.
    EXPECT_EQ(window->question_list()->columnWidth(GoExerciseQt::C_ColQuestion), 100);
}

TEST_F(GoExerciseQtTest, OneQuestionRunFinishesOnItsOnlyRow)
{
    GoExerciseQt* window = start(add_tables({7}, 2, 2, 1));
    ASSERT_EQ(window->question_list()->topLevelItemCount(), 1);
    type(0, "14");
    EXPECT_TRUE(go().is_complete());
    EXPECT_EQ(window->focusWidget(), window->close_button());
    EXPECT_EQ(status(), "\n    Finished in 0.0 seconds.");
}

TEST_F(GoExerciseQtTest, ClosingAnUnfinishedRunLeavesNoTrace)
{
    GoExerciseQt* window = start(add_tables({4}, 3, 5, 3));
    type(0, "99");
    ASSERT_TRUE(go().is_started());
    window->close_dialog(); // from outside, as Escape or the manager ends it
    EXPECT_FALSE(go().is_started());
    EXPECT_FALSE(go().is_active());
    EXPECT_EQ(go().get_nquestions(), 0);
    flush_deletes();
    EXPECT_TRUE(m_window.isNull());
}

TEST_F(GoExerciseQtTest, RecordAndPaceMarkerFollowTheBestTime)
{
    const int exercise = add_tables({2, 3}, 1, 2, 4); // 2, 4, 3, 6: two characters each
    timed_run(exercise, 5);
    EXPECT_EQ(m_window->marker_row(), -1); // a first run races nobody
    EXPECT_EQ(status(), "\n    Finished in 5.0 seconds.");
    EXPECT_FALSE(m_window->has_chart());
    m_window->close_pressed();
    flush_deletes();

    // Half the best time is half the characters: the end of the second row.
    start(exercise);
    EXPECT_EQ(m_window->marker_row(), 0);
    type(0, answer(0).c_str());
    m_clock.advance(2, 500000);
    m_window->do_refresh();
    EXPECT_EQ(m_window->marker_row(), 1);
    EXPECT_FALSE(m_window->question_list()->topLevelItem(1)->icon(GoExerciseQt::C_ColMarker).isNull());
    EXPECT_TRUE(m_window->question_list()->topLevelItem(0)->icon(GoExerciseQt::C_ColMarker).isNull());
    m_clock.advance(0, 500000);
    answer_all_from(1);
    EXPECT_EQ(status(), "\n    Finished in 3.0 seconds.\n    Record Time!!");
    EXPECT_EQ(m_window->status_field()->styleSheet(), "background: yellow;");
    EXPECT_TRUE(m_window->has_chart());
    m_window->close_pressed();
    flush_deletes();

    // Slower than the best: the marker waits on the last row; no record.
    start(exercise);
    type(0, answer(0).c_str());
    m_clock.advance(4);
    m_window->do_refresh();
    EXPECT_EQ(m_window->marker_row(), 3);
    answer_all_from(1);
    EXPECT_EQ(status(), "\n    Finished in 4.0 seconds.");
}
