// The exercise editor and list: the automatic name and number, what a
// change does to an exercise with runs, deletes that ask, and reminders.

#include "AppTarvelloMaths/qt/exerciseeditqt.h"
#include "AppTarvelloMaths/qt/exerciselistqt.h"

#include "AppTarvelloMaths/qt/tests/mathsqttest.h"
#include "LibGui/qt/tvguideqt.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "LibGui/qt/tvtimeselectqt.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTreeWidget>

namespace {

class ExerciseEditQtTest : public MathsQtTest
{
protected:
    void TearDown() override
    {
        delete m_edit.data();
        delete m_list.data();
        MathsQtTest::TearDown();
    }

    ExerciseEditQt* edit(int exerciseId)
    {
        ExerciseEditQt* window = nullptr;
        EXPECT_EQ(ExerciseEditQt::start_edit(*m_db, exerciseId, nullptr, &window), TVErrC_ok);
        m_edit = window;
        return window;
    }

    void list()
    {
        ExerciseListQt* window = nullptr;
        ASSERT_EQ(ExerciseListQt::start_edit(*m_db, nullptr, &window), TVErrC_ok);
        m_list = window;
    }

    template <class T>
    T* field(const char* name) const
    {
        T* widget = m_edit->findChild<T*>(name);
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    void tick(int table)
    {
        QListWidget* tables = field<QListWidget>("timesTablesList");
        for (int i = 0; i < tables->count(); ++i)
            if (tables->item(i)->data(Qt::UserRole).toInt() == table)
                tables->item(i)->setCheckState(Qt::Checked);
    }

    std::string name() const { return field<QLineEdit>("nameField")->text().toStdString(); }
    int number() const { return field<QSpinBox>("numberField")->value(); }
    Exercise& exercise(int index) const { return *m_db->get_exercise_no(index); }

    QPointer<ExerciseEditQt> m_edit;
    QPointer<ExerciseListQt> m_list;
};

} // namespace

TEST_F(ExerciseEditQtTest, NameAndNumberFollowTheTablesUntilANameIsTyped)
{
    edit(-1);
    EXPECT_EQ(m_edit->objectName(), "ExerciseEditQt");
    {
        TVMessageBoxScript script({"Ok"});
        m_edit->ok_pressed(); // nothing named or chosen yet
        EXPECT_EQ(script.titles(), std::vector<std::string>{"Exercise Problem"});
        EXPECT_EQ(script.texts(), std::vector<std::string>{"You need to give the exercise a name."});
    }
    EXPECT_FALSE(m_edit->is_closing());

    tick(5);
    EXPECT_EQ(name(), "5 times tables");
    EXPECT_EQ(number(), 12);
    tick(6);
    EXPECT_EQ(name(), "5, 6 times tables");
    EXPECT_EQ(number(), 24);

    field<QLineEdit>("nameField")->setText("Fives and sixes");
    EXPECT_FALSE(m_edit->is_auto_name());
    tick(7);
    EXPECT_EQ(name(), "Fives and sixes");
    EXPECT_EQ(number(), 36);
    QTest::mouseClick(field<QPushButton>("resetButton"), Qt::LeftButton);
    EXPECT_EQ(name(), "5, 6, 7 times tables");
    EXPECT_TRUE(m_edit->is_auto_name());

    m_edit->ok_pressed();
    EXPECT_TRUE(m_edit->is_closing());
    ASSERT_EQ(m_db->get_nexercises(), 1);
    EXPECT_EQ(exercise(0).get_name(), "5, 6, 7 times tables");
    EXPECT_EQ(exercise(0).get_values(), "5, 6, 7");
    EXPECT_EQ(exercise(0).get_number(), 36);
}

TEST_F(ExerciseEditQtTest, ChangingWhatAnExerciseWithRunsAsksMakesANewOne)
{
    const int id = add_tables({3}, 1, 12, 12);
    new_go(id);

    // Sequencing alone keeps the exercise and its history.
    edit(id);
    field<QComboBox>("sequenceCombo")->setCurrentText("Random");
    m_edit->ok_pressed();
    ASSERT_EQ(m_db->get_nexercises(), 1);
    EXPECT_EQ(exercise(0).get_id(), id);
    EXPECT_EQ(exercise(0).get_sequence(), Exercise::C_SequenceRandom);
    flush_deletes();

    edit(id);
    field<QSpinBox>("maximumField")->setValue(10);
    EXPECT_EQ(number(), 10);
    m_edit->ok_pressed();
    ASSERT_EQ(m_db->get_nexercises(), 2);
    EXPECT_EQ(exercise(0).get_id(), id);
    EXPECT_FALSE(exercise(0).get_active());
    EXPECT_EQ(exercise(0).get_maximum(), 12);
    EXPECT_NE(exercise(1).get_id(), id);
    EXPECT_TRUE(exercise(1).get_active());
    EXPECT_EQ(exercise(1).get_maximum(), 10);
    EXPECT_FALSE(m_db->exercise_referenced(exercise(1).get_id()));
}

TEST_F(ExerciseEditQtTest, ListDeletesExercisesAfterAskingAndShowsTheGuideWhenEmpty)
{
    add_tables({3}, 1, 12, 12);
    list();
    auto* exercises = m_list->findChild<QTreeWidget*>("exerciseList");
    auto* guide = m_list->findChild<TVGuideQt*>("guideForm");
    ASSERT_EQ(exercises->topLevelItemCount(), 1);
    EXPECT_FALSE(guide->isVisible());

    exercises->topLevelItem(0)->setSelected(true);
    TVMessageBoxScript script({"No", "Yes"});
    m_list->delete_pressed();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_db->get_nexercises(), 1);
    m_list->delete_pressed();
    QCoreApplication::processEvents();
    EXPECT_EQ(script.texts().back(), "Are you sure you want to delete 3 times tables?");
    EXPECT_EQ(m_db->get_nexercises(), 0);
    EXPECT_EQ(exercises->topLevelItemCount(), 0);
    EXPECT_TRUE(guide->isVisible());
    EXPECT_EQ(guide->get_page(), "guide_exercise_list.html");
}

TEST_F(ExerciseEditQtTest, EmptyingAReminderTimeRemovesIt)
{
    m_db->edit_reminders() = {TVDuration(8 * 3600L), TVDuration(16 * 3600L)};
    ASSERT_EQ(m_db->complete_operation("Test"), TVErrC_ok);
    list();
    auto* reminders = m_list->findChild<QTreeWidget*>("reminderList");
    auto* time = m_list->findChild<TVTimeSelectQt*>("reminderField");
    ASSERT_EQ(reminders->topLevelItemCount(), 2);

    m_list->edit_reminder(0);
    EXPECT_TRUE(m_list->findChild<QGroupBox*>("reminderGroup")->isVisible());
    time->clear();
    m_list->confirm_reminder();
    ASSERT_EQ(m_db->get_reminders().size(), 1u);
    EXPECT_EQ(m_db->get_reminders()[0], TVDuration(16 * 3600L));
    EXPECT_EQ(reminders->topLevelItemCount(), 1);

    m_list->add_reminder(); // a new one left blank adds nothing
    m_list->confirm_reminder();
    EXPECT_EQ(m_db->get_reminders().size(), 1u);
    m_list->add_reminder();
    QTest::keyClicks(time, "7:30");
    m_list->confirm_reminder();
    ASSERT_EQ(m_db->get_reminders().size(), 2u);
    EXPECT_EQ(m_db->get_reminders()[1], TVDuration(7 * 3600L + 1800));
}
