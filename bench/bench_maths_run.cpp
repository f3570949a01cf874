// The run window's answer to a keystroke: from the key that completes an
// answer to the row judged, the focus moved and the window repainted, in a
// run of 100 questions. The target is under 4 ms, well inside the gap
// between two keys of a fast typist.

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/maths/question.h"
#include "AppTarvelloMaths/qt/goexerciseqt.h"
#include "LibCore/error/tverror.h"
#include "LibGui/qt/tvlineeditqt.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr int C_Questions = 100;
constexpr double C_TargetMs = 4.0;

struct Keystrokes {
    double seconds = 0;
    long count = 0;
};
Keystrokes g_total;

class RunFixture
{
public:
    RunFixture()
    {
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(m_dir.path().toStdString() + "/data"));
        qputenv("XDG_CACHE_HOME", QByteArray::fromStdString(m_dir.path().toStdString() + "/cache"));
        (void)m_db.load(m_dir.path().toStdString() + "/bench" + MathsDB::C_FileExtension, true, std::string(),
                        true, true, true);
        Exercise* exercise = nullptr;
        (void)m_db.create_exercise(exercise);
        for (int table = 2; table <= 11; ++table) // ten tables of ten: 100 questions
            exercise->set_value(table, true);
        exercise->set_maximum(10);
        exercise->set_number(C_Questions);
        exercise->set_name(exercise->generate_name());
        m_exercise = exercise->get_id();
    }
    ~RunFixture() { delete m_window; }

    // The field of the next open row, opening a new run when one is done.
    TVLineEditQt* next_field()
    {
        if (m_window == nullptr || m_row == C_Questions) {
            delete m_window;
            int goId = -1;
            (void)m_db.add_go(m_exercise, goId);
            (void)GoExerciseQt::start_exercise(m_db, goId, nullptr, &m_window);
            m_go = m_db.get_go_id(goId);
            m_row = 0;
            QCoreApplication::processEvents(); // the first paint is no keystroke's
        }
        return m_window->input_field(m_row);
    }
    std::string answer() const { return m_go->get_question_no(m_row)->solution_text(); }
    void answered() { ++m_row; }

private:
    QTemporaryDir m_dir;
    MathsDB m_db;
    int m_exercise = -1;
    GoExerciseQt* m_window = nullptr;
    Go* m_go = nullptr;
    int m_row = 0;
};

void BM_KeystrokeToRedrawnRow(benchmark::State& state)
{
    RunFixture run;
    for (auto _ : state) {
        TVLineEditQt* field = run.next_field();
        const std::string text = run.answer();
        QTest::keyClicks(field, QString::fromStdString(text.substr(0, text.size() - 1)));
        const auto start = std::chrono::steady_clock::now();
        QTest::keyClick(field, text.back());
        QCoreApplication::processEvents(); // the repaint the change asked for
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        g_total.seconds += seconds;
        ++g_total.count;
        run.answered();
    }
}
BENCHMARK(BM_KeystrokeToRedrawnRow)->UseManualTime()->Iterations(1000)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    get_tverror()->set_stream(nullptr, TVSevAll);
    GoExerciseQt::set_beep([] {});

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    if (g_total.count > 0) {
        const double ms = g_total.seconds * 1000.0 / static_cast<double>(g_total.count);
        std::printf("keystroke to judged, redrawn row (%d questions): %.3f ms mean over %ld keys; "
                    "target under %.0f ms: %s\n",
                    C_Questions, ms, g_total.count, C_TargetMs, ms < C_TargetMs ? "reached" : "NOT reached");
    }
    return 0;
}
