#ifndef GOEXERCISEQT_H
#define GOEXERCISEQT_H

// GoExerciseQt: the run window, where one Go of an exercise is answered.
//
// One row per question, each with its own input field. A field is judged
// as it is typed, with no key to end it: a right answer moves the focus to
// the next row (wrapping round), a wrong one empties the field with a
// beep. The clock starts at the first judged input and runs on a 100 ms
// timer until every question is right; a runner icon paces the run
// against the exercise's best time. Finished, the window shows the time,
// any record and a chart of all the exercise's times.
//
// The window holds the Go by id and looks it up on every use, so a Go that
// vanishes from the file under it leaves a window that does nothing.
// Closing an unfinished run clears it (no trace, no time); closing a
// finished one collates the wrong answers, updates the session and moves
// the background image on. The window deletes itself once closed.
// Main thread only.

#include "LibGui/qt/tvdialogqt.h"

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

class Go;
class MathsDB;
class QLineEdit;
class QPushButton;
class QResizeEvent;
class QTextBrowser;
class QTreeWidget;
class TVLineEditQt;

class GoExerciseQt : public TVDialogQt
{
    Q_OBJECT

public:
    static constexpr int C_RefreshMs = 100;
    static constexpr int C_ColNumber = 0;
    static constexpr int C_ColQuestion = 1;
    static constexpr int C_ColInput = 2;
    static constexpr int C_ColTick = 3;
    static constexpr int C_ColMarker = 4;
    static constexpr int C_ColWrong = 5;
    static constexpr int C_NColumns = 6;

    static constexpr const char* C_TickIcon = ":/TarvelloMathsImages/images/16/Tick.png";
    static constexpr const char* C_CrossIcon = ":/TarvelloMathsImages/images/16/Cross.png";
    static constexpr const char* C_RunnerIcon = ":/TarvelloMathsImages/images/16/Runner.png";

    // The sound of a wrong answer; tests put a counter here. Null gives
    // QApplication::beep back.
    using BeepFn = std::function<void()>;
    static void set_beep(BeepFn beep);

    // Fills the Go's questions if it has none, restarts it and opens the
    // window in front of the parent's others (or as a window of its own
    // when the parent has no manager). window, if given, gets the window.
    // TVErrC_Assert if goId names no Go.
    [[nodiscard]] static int start_exercise(MathsDB& db, int goId, QWidget* parent,
                                            GoExerciseQt** window = nullptr);

    GoExerciseQt(MathsDB& db, int goId, QWidget* parent);
    ~GoExerciseQt() override;
    GoExerciseQt(const GoExerciseQt&) = delete;
    GoExerciseQt& operator=(const GoExerciseQt&) = delete;

    void dump(std::ostream& out, int indent) const;

    // Rebuilds the rows from the Go's questions.
    void update_display() override;
    void open_complete() override;
    // However the window is ended (Escape, its title bar, the manager
    // closing all), the run ends as Close ends it.
    void dialog_done(int result, bool immediate) override;
    // Everything that changes during a run: the Go's completion and (with
    // stamp) its clock, the focus, the status text, the marker and the
    // rows' marks.
    [[nodiscard]] int refresh(bool stamp);
    // Judges edit's text against its row's question.
    [[nodiscard]] int handle_input(QLineEdit* edit, bool final);
    // Puts each input field back over its row after a scroll.
    void adjust_widgets();
    // The chart of the exercise's times, drawn over the list once two
    // exist.
    void display_stats();

    // ---- What the window shows, for its users and tests ---------------------

    int get_goid() const;
    // Null once the Go has left the file.
    Go* get_go() const;
    QTreeWidget* question_list() const;
    QTextBrowser* status_field() const;
    QPushButton* close_button() const;
    // The input field of a row, or null.
    TVLineEditQt* input_field(int row) const;
    // The row of the pace marker; -1 without one.
    int marker_row() const;
    // Whether the chart holds a drawing.
    bool has_chart() const;

public slots:
    void field_changed(const QString& text);
    void close_pressed();
    void do_refresh();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void build_form();
    void set_defaults();
    int pace_row(double elapsedSecs) const;
    void help_pressed();

    struct GoExerciseImpl;
    std::unique_ptr<GoExerciseImpl> d;
};

std::ostream& operator<<(std::ostream& out, const GoExerciseQt& window);

#endif // GOEXERCISEQT_H
