#include "AppTarvelloMaths/tools/mathsreportcommand.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/maths/session.h"
#include "LibDate/core/tvlocale.h"
#include "LibObject/core/tvid.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const char* C_NoTime = "-";
constexpr const char* C_ColumnGap = "  ";

// Columns count characters, not bytes: a child's name may well be "Zoë".
size_t display_width(const std::string& text)
{
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

// Rows of cells printed under a header, each column as wide as its widest
// cell; text columns lean left, numbers right. Nothing trails a line.
class Table
{
public:
    Table(std::vector<std::string> header, std::vector<bool> rightAligned)
        : m_rightAligned(std::move(rightAligned))
    {
        m_rows.push_back(std::move(header));
    }

    void add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }

    void print(std::ostream& out) const
    {
        std::vector<size_t> widths(m_rightAligned.size(), 0);
        for (const auto& row : m_rows)
            for (size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], display_width(row[i]));
        for (const auto& row : m_rows) {
            std::string line;
            for (size_t i = 0; i < row.size(); ++i) {
                const std::string pad(widths[i] - display_width(row[i]), ' ');
                if (i > 0)
                    line += C_ColumnGap;
                line += m_rightAligned[i] ? pad + row[i] : row[i] + pad;
            }
            out << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
        }
    }

private:
    std::vector<bool> m_rightAligned;
    std::vector<std::vector<std::string>> m_rows;
};

std::string seconds_text(const TVDuration& duration)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", duration.get_as_dseconds());
    return text;
}

// The finished runs of one exercise, summed up.
struct Progress
{
    int m_finished = 0;
    TVDuration m_best;   // zero: no finished run took any time
    const Go* m_latest = nullptr;
};

Progress progress_of(const MathsDB& db, int exercise)
{
    Progress progress;
    for (int i = 0; i < db.get_ngos(); ++i) {
        const Go* go = db.get_go_no(i);
        if (go->get_exercise() != exercise || !go->is_complete())
            continue;
        ++progress.m_finished;
        Go::fold_best_time(progress.m_best, *go, exercise, -1);
        // A later end wins; on a tie, the later run in the file.
        if (progress.m_latest == nullptr ||
            !(go->get_time().get_end() < progress.m_latest->get_time().get_end()))
            progress.m_latest = go;
    }
    return progress;
}

void print_exercises(const MathsDB& db, std::ostream& out)
{
    Table table({"Exercise", "Type", "Active", "Runs", "Best (s)", "Latest (s)"},
                {false, false, false, true, true, true});
    const TVIdString types = Exercise::get_types();
    for (const bool active : {true, false}) {
        for (int i = 0; i < db.get_nexercises(); ++i) {
            const Exercise* exercise = db.get_exercise_no(i);
            if (exercise->get_active() != active)
                continue;
            const Progress progress = progress_of(db, exercise->get_id());
            table.add({exercise->get_name(),
                       types.get_id_name(TVId(exercise->get_type(), -1, -1)),
                       active ? "yes" : "no", std::to_string(progress.m_finished),
                       progress.m_best == 0 ? C_NoTime : seconds_text(progress.m_best),
                       progress.m_latest == nullptr
                           ? C_NoTime
                           : seconds_text(progress.m_latest->get_duration())});
        }
    }
    table.print(out);
}

void print_session(const MathsDB& db, std::ostream& out)
{
    const Session* session = db.current_session();
    if (session == nullptr) {
        out << "No session yet.\n";
        return;
    }
    // A deleted run leaves -1 behind in the list; it is no run at all.
    std::vector<const Go*> gos;
    for (int i = 0; i < session->get_ngos(); ++i)
        if (session->get_go_no(i) >= 0)
            gos.push_back(db.get_go_id(session->get_go_no(i)));
    // As the program counts: a run that can't be found is still to do.
    const auto toDo = std::count_if(gos.begin(), gos.end(),
                                    [](const Go* go) { return go == nullptr || !go->is_complete(); });
    // Shown in the reader's own zone, which then goes without saying.
    TVDate start = session->get_start();
    start.set_timezone(tvlocale()->get_local_timezone());
    out << "Session started " << start.to_string("%Y-%m-%d %H:%M") << ": " << toDo << " of "
        << gos.size() << (gos.size() == 1 ? " run" : " runs") << " to do\n";
    if (gos.empty())
        return;
    Table table({"Exercise", "State"}, {false, false});
    for (const Go* go : gos) {
        const Exercise* exercise = go != nullptr ? db.get_exercise_id(go->get_exercise()) : nullptr;
        const char* state = "to do";
        if (go != nullptr && go->is_complete())
            state = "done";
        else if (go != nullptr && go->is_started())
            state = "started";
        table.add({exercise != nullptr ? exercise->get_name() : "?", state});
    }
    table.print(out);
}

} // namespace

void MathsReportCommand::usage(std::ostream& out) const
{
    out << "Usage: tvdb report [--app NAME] FILE\n"
           "\n"
           "Loads the maths file FILE read-only, with its partial file, and prints\n"
           "each exercise (active ones first) with its finished runs and its best\n"
           "and latest times in seconds, then the current session and what is\n"
           "still to do in it.\n"
           "\n"
           "  --app NAME  the application whose folders hold the side files\n"
           "              (default for a maths file: the maths program's)\n"
           "\n"
           "Exit status: 0 done, 1 the load failed or FILE is no maths file,\n"
           "2 a wrong command line.\n";
}

int MathsReportCommand::run_loaded(TVDatabase& db, const std::vector<std::string>& /*extra*/,
                                  std::ostream& out, std::ostream& err)
{
    const auto* maths = dynamic_cast<const MathsDB*>(&db);
    if (maths == nullptr) {
        err << "tvdb report: " << db.get_filename() << " is not a maths file (it is a "
            << (db.get_app_type().empty() ? "plain" : db.get_app_type()) << " data file)\n";
        return C_ExitFailed;
    }
    print_exercises(*maths, out);
    out << "\n";
    print_session(*maths, out);
    return C_ExitOk;
}
