// The screenshots of `make screenshots`: the real program (AppMaths, its
// load and its main window) on a file in a temporary home, driven with key
// and mouse events as a family would use it, each window grabbed to a PNG;
// last the cloud button and the cloud settings page.
//
//   tarvello-maths-screenshots <folder>
//
// Time comes from a clock of our own, so the history, the times shown and
// the pace marker come out the same on every run. Any question the program
// asks is answered with no button and listed at the end.

#include "AppTarvelloMaths/main/appmaths.h"
#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/maths/question.h"
#include "AppTarvelloMaths/maths/session.h"
#include "AppTarvelloMaths/qt/exerciseeditqt.h"
#include "AppTarvelloMaths/qt/exerciselistqt.h"
#include "AppTarvelloMaths/qt/goexerciseqt.h"
#include "AppTarvelloMaths/qt/mathsmainqt.h"
#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvgcloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/error/tverror.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/qt/tvcloudbuttonqt.h"
#include "LibDate/core/tvdateutils.h"
#include "LibGui/qt/tvlineeditqt.h"
#include "LibGui/qt/tvmessageboxscript.h"
#include "LibGui/qt/tvqtapp.h"
#include "LibGui/qt/tvsettingsformqt.h"
#include "LibGui/qt/tvsettingsqt.h"
#include "LibGui/qt/tvtreewidgetqt.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <atomic>
#include <cstdio>
#include <string>
#include <vector>

namespace {

// Saturday 21 November 2026, 16:25 GMT: after school.
constexpr long C_Now = 1795278300;
constexpr long C_Day = 86400;
const QSize C_WindowSize(1024, 700);

std::atomic<long long> g_micros{static_cast<long long>(C_Now) * 1000000};

void read_clock(long& seconds, int& micro)
{
    const long long now = g_micros;
    seconds = static_cast<long>(now / 1000000);
    micro = static_cast<int>(now % 1000000);
}

void set_clock(long seconds) { g_micros = static_cast<long long>(seconds) * 1000000; }
void advance(double seconds) { g_micros += static_cast<long long>(seconds * 1e6); }

// Lets the event loop run for a while: layouts, paints, timers.
void settle(int ms = 150)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

bool ok(int result, const char* what)
{
    if (istvwarn(result)) {
        std::fprintf(stderr, "screenshots: %s failed (%d)\n", what, result);
        return false;
    }
    return true;
}

// ---- The family's history ------------------------------------------------

int add_exercise(MathsDB& db, int type, std::vector<int> tables, int minimum, int maximum, int number)
{
    Exercise* exercise = nullptr;
    if (!ok(db.create_exercise(exercise), "create_exercise"))
        return -1;
    exercise->set_type(type);
    for (int table : tables)
        exercise->set_value(table, true);
    exercise->set_minimum(minimum);
    exercise->set_maximum(maximum);
    exercise->set_number(number);
    exercise->set_sequence(Exercise::C_SequenceRandom);
    exercise->set_name(exercise->generate_name());
    return exercise->get_id();
}

// One finished run as the run window makes it: the clock starts at the
// first answer and stops at the last.
void run(MathsDB& db, int goId, double seconds)
{
    Go* go = db.get_go_id(goId);
    if (go == nullptr || go->is_complete())
        return;
    if (go->get_nquestions() == 0 && !ok(db.fill_questions(*go), "fill_questions"))
        return;
    go->restart();
    const int n = go->get_nquestions();
    for (int i = 0; i < n; ++i) {
        if (i == 1)
            advance(seconds);
        Question* question = go->get_question_no(i);
        (void)question->set_answer(question->solution_text(), true);
        go->update(true);
    }
    db.collate_incorrect(*go);
    std::string image;
    (void)db.next_image(image);
    (void)db.complete_operation("Run");
}

// Runs the session's Go of that exercise.
void run_exercise(MathsDB& db, int exercise, double seconds)
{
    const Session* session = db.current_session();
    for (int i = 0; session != nullptr && i < session->get_ngos(); ++i) {
        const Go* go = db.get_go_id(session->get_go_no(i));
        if (go != nullptr && go->get_exercise() == exercise && !go->is_complete()) {
            run(db, go->get_id(), seconds);
            return;
        }
    }
}

// Four exercises done most afternoons of the last week, getting quicker;
// today two are done and two wait.
int make_history(MathsDB& db)
{
    const int sevens = add_exercise(db, Exercise::C_TypeTimesTables, {7}, 1, 12, 12);
    const int threesFours = add_exercise(db, Exercise::C_TypeTimesTables, {3, 4}, 1, 12, 12);
    const int addition = add_exercise(db, Exercise::C_TypeAddition, {}, 1, 20, 10);
    const int division = add_exercise(db, Exercise::C_TypeDivision, {2, 5}, 1, 10, 10);
    db.edit_reminders() = {TVDuration(8 * 3600L + 1800), TVDuration(18 * 3600L)};
    if (!ok(db.complete_operation("Exercises"), "complete_operation"))
        return -1;

    const double sevensTimes[] = {64.2, 58.7, 60.1, 51.4, 47.9, 44.6, 41.3};
    const double mixedTimes[] = {82.5, 77.0, 71.8, 74.2, 66.3, 63.9, 61.0};
    const double additionTimes[] = {48.0, 45.5, 41.2, 43.8, 39.6, 37.1, 36.4};
    const double divisionTimes[] = {55.0, 52.3, 49.9, 47.2, 46.8, 44.0, 42.5};
    for (int day = 7; day >= 1; --day) {
        set_clock(C_Now - day * C_Day - 3600);
        if (!ok(db.start(), "start"))
            return -1;
        const int k = 7 - day;
        run_exercise(db, sevens, sevensTimes[k]);
        advance(120);
        run_exercise(db, threesFours, mixedTimes[k]);
        advance(90);
        run_exercise(db, addition, additionTimes[k]);
        advance(60);
        run_exercise(db, division, divisionTimes[k]);
    }
    // Today: a new best at addition, the threes and fours a little slow.
    set_clock(C_Now - 900);
    if (!ok(db.start(), "start"))
        return -1;
    run_exercise(db, addition, 34.8);
    advance(120);
    run_exercise(db, threesFours, 64.5);
    set_clock(C_Now);
    return sevens;
}

// ---- Driving the windows ---------------------------------------------------

class Driver
{
public:
    Driver(AppMaths& maths, const QString& folder) : m_maths(maths), m_folder(folder) {}

    // Waits for the window and its file, then takes every picture and ends
    // the program.
    void poll()
    {
        MathsMainQt* window = m_maths.get_main_window();
        // The first update after the load has drawn the window: until then
        // the load is still on the stack.
        if (m_started || window == nullptr || m_maths.get_db() == nullptr || !m_maths.get_db()->is_loaded() ||
            !window->isVisible() || !window->get_last_update().is_ok())
            return;
        m_started = true;
        shoot_all(*window, *m_maths.get_db());
        m_done = true;
        QCoreApplication::exit(0);
    }

    bool succeeded() const { return m_done && !m_failed; }

private:
    void save(QWidget* widget, const char* name)
    {
        if (widget == nullptr) {
            std::fprintf(stderr, "screenshots: nothing to grab for %s\n", name);
            m_failed = true;
            return;
        }
        widget->raise();
        settle();
        const QString file = m_folder + "/" + name;
        if (!widget->grab().save(file, "PNG")) {
            std::fprintf(stderr, "screenshots: could not write %s\n", qPrintable(file));
            m_failed = true;
            return;
        }
        std::printf("%s\n", qPrintable(file));
    }

    template <class T>
    static T* find_window()
    {
        for (QWidget* top : QApplication::allWidgets())
            if (auto* found = qobject_cast<T*>(top); found != nullptr && found->isVisible())
                return found;
        return nullptr;
    }

    static QToolButton* tool_button(MathsMainQt& window, const char* tip)
    {
        for (QToolButton* button : window.mButtonBox->findChildren<QToolButton*>())
            if (button->toolTip() == tip)
                return button;
        return nullptr;
    }

    void shoot_all(MathsMainQt& window, MathsDB& db)
    {
        window.resize(C_WindowSize);
        window.showNormal();
        settle(400);
        save(&window, "1-welcome.png");

        const int sevens = make_history(db);
        if (sevens < 0 || !ok(window.on_db_changed(), "update")) {
            m_failed = true;
            return;
        }
        (void)window.display_image(current_image(db));
        settle(300);
        save(&window, "2-session.png");

        // The sevens: half the questions at a little under the best pace.
        int row = -1;
        for (int i = 0; i < window.sessionTree->topLevelItemCount(); ++i)
            if (window.sessionTree->topLevelItem(i)->text(1) == "7 times tables")
                row = i;
        QPushButton* go = row >= 0 ? window.row_button(row) : nullptr;
        if (go == nullptr) {
            std::fprintf(stderr, "screenshots: no row for 7 times tables\n");
            m_failed = true;
            return;
        }
        QTest::mouseClick(go, Qt::LeftButton);
        settle(300);
        auto* runWindow = find_window<GoExerciseQt>();
        if (runWindow == nullptr) {
            save(nullptr, "3-run.png");
            return;
        }
        runWindow->resize(733, 560);
        settle();
        const Go* run = runWindow->get_go();
        const int n = run->get_nquestions();
        for (int i = 0; i < n / 2 + 1; ++i) {
            QTest::keyClicks(runWindow->input_field(i),
                             QString::fromStdString(run->get_question_no(i)->solution_text()));
            advance(3.1);
            settle(30);
        }
        // One slip, to show its mark: the right answer with its last digit
        // moved on.
        std::string slip = run->get_question_no(n / 2 + 1)->solution_text();
        slip.back() = slip.back() == '9' ? '0' : static_cast<char>(slip.back() + 1);
        QTest::keyClicks(runWindow->input_field(n / 2 + 1), QString::fromStdString(slip));
        settle(300);
        save(runWindow, "3-run.png");

        for (int i = n / 2 + 1; i < n; ++i) {
            QTest::keyClicks(runWindow->input_field(i),
                             QString::fromStdString(run->get_question_no(i)->solution_text()));
            advance(2.9);
            settle(30);
        }
        settle(300);
        save(runWindow, "4-finished.png");
        QTest::mouseClick(runWindow->close_button(), Qt::LeftButton);
        settle(300);

        // The parent's side: the list, then an exercise in the editor.
        QTest::mouseClick(tool_button(window, "Set up the maths exercises."), Qt::LeftButton);
        settle(300);
        auto* list = find_window<ExerciseListQt>();
        if (list == nullptr) {
            save(nullptr, "5-editor.png");
            return;
        }
        save(list, "5-list.png");
        auto* exercises = list->findChild<QTreeWidget*>("exerciseList");
        if (exercises != nullptr && exercises->topLevelItemCount() > 1) {
            exercises->setCurrentItem(exercises->topLevelItem(1));
            QTest::mouseClick(list->findChild<QPushButton*>("editButton"), Qt::LeftButton);
        }
        settle(300);
        save(find_window<ExerciseEditQt>(), "5-editor.png");
        if (auto* edit = find_window<ExerciseEditQt>())
            edit->cancel_pressed();
        list->close_pressed();
        settle(300);

        window.preferences_selected();
        settle(300);
        auto* settings = find_window<TVSettingsQt>();
        if (settings != nullptr)
            settings->select_form(settings->get_nforms() - 1);
        save(settings, "6-preferences.png");
        if (settings != nullptr)
            settings->cancel_pressed();
        settle();
        shoot_cloud(window, db);
    }

    // The button row with the cloud button in two states, then the cloud
    // page with every group this computer has: the program registered with
    // Google (no sign-in, nothing leaves the machine) and a shared folder.
    void shoot_cloud(MathsMainQt& window, MathsDB& db)
    {
        const std::string share = QDir::home().filePath("share").toStdString();
        const std::string name = tv_basename(db.get_filename());
        TVExternalDB* link = nullptr;
        if (!QDir().mkpath(QString::fromStdString(share)) ||
            !ok(TVLocalService::set_syncdir(share), "shared folder") ||
            !ok(db.add_external(TVCloudInstance::E_LocalShare, name, 0, link), "link")) {
            m_failed = true;
            return;
        }
        // Linked, with the link's own record still to go out.
        window.cloudButton->update_state();
        save(window.mButtonBox, "7-cloud-button-push.png");
        // A Drive link on a computer where the program has no registration
        // with Google is off, and off shows over everything else.
        if (!ok(db.add_external(TVCloudInstance::E_GDrive, name, 0, link), "Drive link")) {
            m_failed = true;
            return;
        }
        window.cloudButton->update_state();
        save(window.mButtonBox, "8-cloud-button-off.png");
        db.remove_external(TVCloudInstance::E_GDrive);

        TVGoogleService::instance()->initialise(TVGCloudService::google_dir(), "screenshots",
                                                "screenshots");
        window.preferences_selected();
        settle(300);
        auto* settings = find_window<TVSettingsQt>();
        for (int i = 0; settings != nullptr && i < settings->get_nforms(); ++i)
            if (settings->get_form(i)->get_title() == "Cloud")
                settings->select_form(i);
        save(settings, "9-cloud-settings.png");
        if (settings != nullptr)
            settings->cancel_pressed();
        settle();
    }

    static std::string current_image(MathsDB& db)
    {
        std::string image;
        (void)db.get_current_image(image);
        return image;
    }

    AppMaths& m_maths;
    QString m_folder;
    bool m_started = false;
    bool m_done = false;
    bool m_failed = false;
};

} // namespace

int main(int argc, char** argv)
{
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString("screenshots");
    QTemporaryDir home;
    if (!home.isValid() || !QDir().mkpath(folder)) {
        std::fprintf(stderr, "screenshots: no temporary home or no folder %s\n", qPrintable(folder));
        return 1;
    }
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.filePath("config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath("data").toLocal8Bit());
    qputenv("XDG_CACHE_HOME", home.filePath("cache").toLocal8Bit());
    TVDateUtils::set_clock(&read_clock);

    bool succeeded = false;
    {
        // The file is named on the command line, as a parent opening it would.
        const std::string file = home.filePath("family.tvmaths").toStdString();
        std::string arg0 = "tarvello-maths";
        std::string arg1 = file;
        char* args[] = {arg0.data(), arg1.data(), nullptr};
        int count = 2;
        TVQtApp app(count, args);
        AppMaths maths(count, args, app);
        {
            // An empty file of our own: a first start would ask how to begin.
            MathsDB db;
            if (!ok(db.load(file, true, std::string(), true, true, true), "create") ||
                !ok(db.save(true, true, true), "save") || !ok(db.unload(), "unload"))
                return 1;
        }
        TVMessageBoxScript script;
        Driver driver(maths, folder);
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] { driver.poll(); });
        poll.start(50);
        QTimer::singleShot(60000, [] {
            std::fprintf(stderr, "screenshots: the program did not come up in time\n");
            QCoreApplication::exit(1);
        });
        (void)maths.TVApplicationQt::start();
        for (const TVMessageBoxScript::Box& box : script.boxes())
            std::fprintf(stderr, "screenshots: the program asked \"%s\": %s\n", box.title.c_str(),
                         box.text.c_str());
        succeeded = driver.succeeded();
    }
    TVDateUtils::set_clock(nullptr);
    return succeeded ? 0 : 1;
}
