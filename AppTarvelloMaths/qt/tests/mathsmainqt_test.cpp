// The main window end to end on a new file: the welcome page, a times
// table set up, run with a wrong answer among the right ones, closed, run
// again faster for a record, the session's end, and the reminders. Time
// moves only on the test's clock.

#include "AppTarvelloMaths/qt/mathsmainqt.h"

#include "AppTarvelloMaths/maths/session.h"
#include "AppTarvelloMaths/qt/exerciseeditqt.h"
#include "AppTarvelloMaths/qt/exerciselistqt.h"
#include "AppTarvelloMaths/qt/goexerciseqt.h"
#include "AppTarvelloMaths/qt/tests/mathsqttest.h"
#include "LibGui/base/tvnotifyitem.h"
#include "LibGui/base/tvnotifylist.h"
#include "LibGui/base/tvnotifyscheme.h"
#include "LibGui/qt/tvfileselectqt.h"
#include "LibGui/qt/tvguideqt.h"
#include "LibGui/qt/tvimageviewerqt.h"
#include "LibGui/qt/tvlineeditqt.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "LibGui/qt/tvnotifybarqt.h"
#include "LibGui/qt/tvtreewidgetqt.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>

#include <set>

namespace {

class MathsMainQtTest : public MathsQtTest
{
protected:
    void SetUp() override
    {
        MathsQtTest::SetUp();
        GoExerciseQt::set_beep([this] { ++m_beeps; });
        m_window = new MathsMainQt(*m_db, nullptr);
        // As after a load: the window shows, then the first update draws it.
        m_window->show_dialog();
        m_window->update_display();
    }
    void TearDown() override
    {
        delete m_run.data();
        delete m_window.data();
        GoExerciseQt::set_beep(nullptr);
        MathsQtTest::TearDown();
    }

    std::string status() const { return m_window->sessionStatus->text().toStdString(); }
    int rows() const { return m_window->sessionTree->topLevelItemCount(); }
    std::string cell(int row, int column) const
    {
        return m_window->sessionTree->topLevelItem(row)->text(column).toStdString();
    }
    // Presses the row's button and takes the run window it opens.
    void press(int row)
    {
        QPushButton* button = m_window->row_button(row);
        ASSERT_NE(button, nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
        m_run = m_window->findChild<GoExerciseQt*>();
        if (m_run == nullptr)
            for (QWidget* top : QApplication::topLevelWidgets())
                if (auto* run = qobject_cast<GoExerciseQt*>(top); run != nullptr && !run->is_closing())
                    m_run = run;
        ASSERT_NE(m_run, nullptr);
        QApplication::setActiveWindow(m_run);
    }
    // The parent's way: the set-up button, Add, a table ticked in the
    // editor, Ok, and the list closed.
    void set_up_tables(int table)
    {
        QToolButton* setUp = nullptr;
        for (QToolButton* button : m_window->mButtonBox->findChildren<QToolButton*>())
            if (button->toolTip() == "Set up the maths exercises.")
                setUp = button;
        ASSERT_NE(setUp, nullptr);
        QTest::mouseClick(setUp, Qt::LeftButton);
        auto* list = m_window->findChild<ExerciseListQt*>();
        ASSERT_NE(list, nullptr);
        QTest::mouseClick(list->findChild<QPushButton*>("addButton"), Qt::LeftButton);
        auto* edit = list->findChild<ExerciseEditQt*>();
        ASSERT_NE(edit, nullptr);
        auto* tables = edit->findChild<QListWidget*>("timesTablesList");
        QListWidgetItem* item = nullptr;
        for (int i = 0; i < tables->count(); ++i)
            if (tables->item(i)->data(Qt::UserRole).toInt() == table)
                item = tables->item(i);
        ASSERT_NE(item, nullptr);
        tables->scrollToItem(item);
        QTest::mouseClick(tables->viewport(), Qt::LeftButton, Qt::NoModifier,
                          tables->visualItemRect(item).center());
        QTest::keyClick(tables, Qt::Key_Space);
        ASSERT_EQ(item->checkState(), Qt::Checked);
        QTest::mouseClick(edit->findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
        flush_deletes();
        QTest::mouseClick(list->findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Close),
                          Qt::LeftButton);
        flush_deletes();
        EXPECT_EQ(m_window->findChild<ExerciseListQt*>(), nullptr);
    }
    const Go& go() const { return *m_run->get_go(); }
    std::string answer(int row) const { return go().get_question_no(row)->solution_text(); }
    void type(int row, const std::string& text)
    {
        QTest::keyClicks(m_run->input_field(row), QString::fromStdString(text));
    }
    // Answers every question, the first at the present and the rest
    // seconds later.
    void run_all(long seconds)
    {
        type(0, answer(0));
        m_clock.advance(seconds);
        for (int i = 1; i < go().get_nquestions(); ++i)
            type(i, answer(i));
        ASSERT_TRUE(go().is_complete());
    }
    void close_run()
    {
        m_run->close_pressed();
        QCoreApplication::processEvents();
        flush_deletes();
    }

    QPointer<MathsMainQt> m_window;
    QPointer<GoExerciseQt> m_run;
    int m_beeps = 0;
};

} // namespace

TEST_F(MathsMainQtTest, NewFileWelcomesThenRunsSevenTimesTablesToARecordAndFinishes)
{
    EXPECT_FALSE(m_window->guideForm->isHidden());
    EXPECT_EQ(m_window->guideForm->get_page(), "maths_welcome.html");
    EXPECT_EQ(status(), "\n    Finished");
    EXPECT_FALSE(m_window->finishedButton->isHidden());
    EXPECT_EQ(rows(), 0);

    set_up_tables(7);
    EXPECT_TRUE(m_window->guideForm->isHidden());
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(cell(0, 1), "7 times tables");
    EXPECT_EQ(m_window->row_button(0)->text(), "Go");
    EXPECT_EQ(status(), "\n    1 Exercise to go");
    EXPECT_TRUE(m_window->finishedButton->isHidden());

    const std::string picture = m_window->get_viewer().get_path();
    EXPECT_FALSE(picture.empty());
    press(0);
    // A wrong answer is emptied with a beep and counted.
    const std::string wrong = answer(0) == "1" ? "2" : "1";
    type(0, wrong);
    EXPECT_EQ(m_run->input_field(0)->text(), "");
    EXPECT_EQ(m_beeps, 1);
    // A right one moves the focus on by itself.
    type(0, answer(0));
    EXPECT_EQ(QApplication::focusWidget(), static_cast<QWidget*>(m_run->input_field(1)));
    m_clock.advance(30);
    for (int i = 1; i < go().get_nquestions(); ++i)
        type(i, answer(i));
    ASSERT_TRUE(go().is_complete());
    close_run();
    // A finished run brings the next picture.
    EXPECT_NE(m_window->get_viewer().get_path(), picture);
    EXPECT_FALSE(m_window->get_viewer().get_path().empty());
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(m_window->row_button(0)->text(), "Again");
    EXPECT_EQ(cell(0, 2), "30.0");
    EXPECT_EQ(cell(0, 3), "30.0");
    EXPECT_EQ(status(), "\n    Finished");

    // Again: a new row, and a faster run holds the record.
    press(0);
    ASSERT_EQ(rows(), 2);
    EXPECT_EQ(m_window->row_button(0)->text(), "Again");
    EXPECT_EQ(m_window->row_button(1)->text(), "Go");
    run_all(20);
    EXPECT_NE(m_run->status_field()->toPlainText().toStdString().find("Record Time!!"),
              std::string::npos);
    close_run();
    EXPECT_EQ(cell(1, 2), "20.0");
    EXPECT_EQ(cell(1, 3), "20.0");
    EXPECT_EQ(m_window->sessionTree->topLevelItem(1)->background(2).color().alpha(), 0x80);
    EXPECT_EQ(m_window->sessionTree->topLevelItem(0)->background(2).color(), QColor(Qt::transparent));
    EXPECT_EQ(status(), "\n    Finished");
    EXPECT_FALSE(m_window->finishedButton->isHidden());

    // Finished: a new session with the exercise to do again.
    m_window->exercise_finished();
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(m_window->row_button(0)->text(), "Go");
    EXPECT_EQ(status(), "\n    1 Exercise to go");
}

TEST_F(MathsMainQtTest, RemindersAreLateUntilASessionStartsAfterThemAndTheNextIsScheduled)
{
    // 07:00, a session starts; reminders at 08:00 and 16:00; now 12:00.
    m_clock.set(C_Start - 5 * 3600, 0);
    ASSERT_EQ(m_db->start(), TVErrC_ok);
    add_tables({7}, 1, 12, 12);
    ASSERT_EQ(m_db->update(), TVErrC_ok);
    m_db->edit_reminders() = {TVDuration(8 * 3600L), TVDuration(16 * 3600L)};
    m_clock.set(C_Start, 0);
    TVNotifyList list;
    list.add_scheme(new TVNotifyScheme(MathsMainQt::C_NotifySession, "Maths",
                                       TVNotifyScheme::C_ResponseBadge, "", true, TVColour()));
    ASSERT_EQ(m_window->generate_notify(list), TVErrC_ok);
    std::string text;
    EXPECT_EQ(list.get_notify_state(text), MathsMainQt::C_NotifySession);
    EXPECT_EQ(text.rfind("Reminder: ", 0), 0u) << text;
    EXPECT_NE(text.find(" Maths Session"), std::string::npos);
    // The late one is due now; the next waits for 16:00 today.
    ASSERT_EQ(list.get_nitems(), 2);
    const TVDate sixteen = TVDateUtils::start_day(TVDateUtils::now()) + TVDuration(16 * 3600L);
    int scheduled = 0;
    for (int i = 0; i < list.get_nitems(); ++i) {
        const TVDate& when = list.get_item(i).get_schedule();
        if (when.is_ok()) {
            EXPECT_EQ(when, sixteen);
            ++scheduled;
        }
    }
    EXPECT_EQ(scheduled, 1);
}

// The reminder bar's items from the database's reminder times, with no
// window: a fresh file for each row.
class MathsRemindersTest : public MathsQtTest
{
protected:
    static constexpr long C_Day = 86400;

    void reopen_empty()
    {
        const std::string file = m_db->get_filename();
        m_db.reset();
        ASSERT_TRUE(QFile::remove(QString::fromStdString(file)));
        m_db = std::make_unique<MathsDB>();
        ASSERT_EQ(m_db->load(file, true, std::string(), true, true, true), TVErrC_ok);
    }
};

TEST_F(MathsRemindersTest, RemindersAroundMidnight)
{
    struct Row {
        const char* name;
        std::vector<long> reminders; // seconds after midnight
        long now;                    // seconds after today's midnight
        long sessionStart;           // the same; -1 for no session
        long late;                   // -1 for none
        long next;                   // -1 for none
    };
    const long h = 3600;
    const std::vector<Row> rows = {
        {"NoRemindersNothing", {}, 12 * h, 7 * h, -1, -1},
        {"MorningSessionMissedEight", {8 * h, 16 * h}, 12 * h, 7 * h, 8 * h, 16 * h},
        {"SessionAfterEightIsOnTime", {8 * h, 16 * h}, 12 * h, 9 * h, -1, 16 * h},
        {"NoSessionNoLateOne", {8 * h, 16 * h}, 12 * h, -1, -1, 16 * h},
        {"AllPastNextIsTomorrow", {8 * h, 16 * h}, 23 * h + 3599, 7 * h, 16 * h, C_Day + 8 * h},
        {"JustAfterMidnightYesterdayIsNotLate", {23 * h}, 60, -C_Day + 22 * h, -1, 23 * h},
        {"ReminderAtMidnightFallsDueAtOnce", {0}, 0, -C_Day, 0, C_Day},
        {"ExactlyNowIsLateAndTomorrowNext", {10 * h}, 10 * h, 9 * h, 10 * h, C_Day + 10 * h},
    };
    const TVDate midnight = TVDateUtils::start_day(TVDateUtils::now());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        reopen_empty();
        for (long reminder : row.reminders)
            m_db->edit_reminders().push_back(TVDuration(reminder));
        if (row.sessionStart != -1) {
            auto* session = new Session;
            session->set_start(midnight + TVDuration(row.sessionStart));
            ASSERT_EQ(m_db->add_object(session, m_db.get(), MathsDB::C_SessionTag, "", -1, ""),
                      TVErrC_ok);
        }
        const TVDuration toNow = midnight + TVDuration(row.now) - TVDateUtils::now();
        m_clock.advance(toNow.get_days() * C_Day + toNow.get_seconds());

        std::vector<TVNotifyItem> expected;
        const auto item = [&](long at, bool scheduled) {
            const TVDate t = midnight + TVDuration(at);
            expected.emplace_back("Reminder: " + t.to_string("%t") + " Maths Session",
                                  TVId(800, -1, -1), 800, 50.0,
                                  scheduled ? t : TVDate(TVDate::E_DateBlank));
        };
        if (row.late != -1)
            item(row.late, false);
        if (row.next != -1)
            item(row.next, true);
        EXPECT_EQ(MathsMainQt::reminder_notifications(*m_db), expected);
        m_clock.set(C_Start, 0);
    }
}

TEST_F(MathsMainQtTest, ChoosingAReminderStartsANewSessionOnlyWhenNothingIsLeft)
{
    add_tables({7}, 1, 3, 3);
    m_db->edit_reminders() = {TVDuration(13 * 3600L)};
    ASSERT_EQ(m_db->complete_operation("Test"), TVErrC_ok);
    ASSERT_EQ(m_db->update(), TVErrC_ok);
    m_clock.set(C_Start + 2 * 3600, 0); // 14:00: the 13:00 reminder is late
    ASSERT_EQ(m_window->on_db_changed(), TVErrC_ok);
    const QLabel* message = m_window->notifyBar->get_message();
    ASSERT_NE(message->text().indexOf("Reminder: "), -1) << message->text().toStdString();

    // With a run still to do the session goes on.
    const Session* session = m_db->current_session();
    QTest::mouseClick(const_cast<QLabel*>(message), Qt::LeftButton);
    EXPECT_EQ(m_db->current_session(), session);
    ASSERT_EQ(rows(), 1);

    press(0);
    run_all(10);
    close_run();
    ASSERT_EQ(status(), "\n    Finished");
    QTest::mouseClick(const_cast<QLabel*>(message), Qt::LeftButton);
    EXPECT_TRUE(session->get_complete());
    EXPECT_NE(m_db->current_session(), session);
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(m_window->row_button(0)->text(), "Go");
    EXPECT_EQ(status(), "\n    1 Exercise to go");
}

TEST_F(MathsMainQtTest, ImportMergeBringsAnotherFilesExercisesIntoTheSession)
{
    set_up_tables(7);
    const std::string other = m_dir.path().toStdString() + "/other" + MathsDB::C_FileExtension;
    {
        MathsDB db;
        ASSERT_EQ(db.load(other, true, std::string(), true, true, true), TVErrC_ok);
        Exercise* exercise = nullptr;
        ASSERT_EQ(db.create_exercise(exercise), TVErrC_ok);
        exercise->set_value(3, true);
        exercise->set_name(exercise->generate_name());
        ASSERT_EQ(db.complete_operation("Three"), TVErrC_ok);
        ASSERT_EQ(db.save(true, true, false), TVErrC_ok);
        ASSERT_EQ(db.unload(), TVErrC_ok);
    }
    TVFileSelectQt::Scoped chooser(
        [&](TVFileSelectQt::Kind, const std::string&, const std::string&, const std::string&) {
            return other;
        });
    TVMessageBoxScript script({"Merge", "Ok"});
    m_window->import_selected();
    QTRY_VERIFY(script.boxes().size() == 2);
    EXPECT_EQ(script.titles(), (std::vector<std::string>{"Import Type", "Import"}));
    EXPECT_EQ(script.texts()[1], "Merged 1 object from " + other + ".");
    QTRY_COMPARE(rows(), 2);
    std::set<std::string> names;
    for (int row = 0; row < rows(); ++row)
        names.insert(cell(row, 1));
    EXPECT_EQ(names, (std::set<std::string>{"7 times tables", "3 times tables"}));
}
