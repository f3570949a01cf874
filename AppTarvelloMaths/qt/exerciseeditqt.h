#ifndef EXERCISEEDITQT_H
#define EXERCISEEDITQT_H

// ExerciseEditQt: edits one exercise on a private copy; Ok writes it back.
//
// The name follows the settings (tables, maximum, type) until the user
// types one of their own; the reset button brings the automatic name back.
// The number of questions follows the range and tables as they change.
//
// An exercise with runs that is changed in what it asks (anything but its
// name and sequencing) is not changed: a new exercise is made from the
// copy and the old one is left inactive, so that best times are never
// compared across different questions.
//
// The dialog opens without waiting and deletes itself once closed;
// sig_closed says when. Main thread only.

#include "LibGui/qt/tvdialogqt.h"

#include <iosfwd>
#include <memory>
#include <string>

class Exercise;
class MathsDB;

class ExerciseEditQt : public TVDialogQt
{
    Q_OBJECT

public:
    // The tables offered; tables outside these that an exercise already
    // has are listed too.
    static constexpr int C_FirstTable = 1;
    static constexpr int C_LastTable = 12;

    // exerciseId -1, or one that names no exercise, edits a new one. The
    // window opens behind the others of the parent's manager, or as a window
    // of its own; window, if given, gets it.
    [[nodiscard]] static int start_edit(MathsDB& db, int exerciseId, QWidget* parent,
                                        ExerciseEditQt** window = nullptr);

    ExerciseEditQt(MathsDB& db, int exerciseId, QWidget* parent);
    ~ExerciseEditQt() override;
    ExerciseEditQt(const ExerciseEditQt&) = delete;
    ExerciseEditQt& operator=(const ExerciseEditQt&) = delete;

    void dump(std::ostream& out, int indent) const;
    void update_display() override;

    // The working copy.
    const Exercise& get_exercise() const;
    // Whether the name still follows the settings.
    bool is_auto_name() const;

public slots:
    void ok_pressed();
    void cancel_pressed();
    void table_checked(int value, bool checked);
    void on_typeCombo_currentIndexChanged(int index);
    void on_nameField_textChanged(const QString& text);
    void on_resetButton_pressed();
    void on_minimumField_valueChanged(int value);
    void on_maximumField_valueChanged(int value);
    void on_numberField_valueChanged(const QString& text);
    void on_sequenceCombo_currentIndexChanged(int index);

private:
    void build_form();
    void load_tables();
    // Ok's chain: false while the exercise can't be saved.
    [[nodiscard]] int save(bool& saved);

    struct ExerciseEditImpl;
    std::unique_ptr<ExerciseEditImpl> d;
};

std::ostream& operator<<(std::ostream& out, const ExerciseEditQt& window);

#endif // EXERCISEEDITQT_H
