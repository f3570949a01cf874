#ifndef EXERCISELISTQT_H
#define EXERCISELISTQT_H

// ExerciseListQt: the active exercises with their schedules, and the
// reminder times of the day. Exercises open in ExerciseEditQt; reminders
// are edited in place in the reminder group below the list.
//
// Deletes ask first. An exercise with runs is only made inactive (its runs
// keep their history); emptying a reminder's time and confirming removes
// the reminder.
//
// The window opens without waiting and deletes itself once closed; its
// sig_closed is the moment to bring the session up to date. Main thread
// only.

#include "LibGui/qt/tvdialogqt.h"
#include "LibObject/core/tvid.h"

#include <iosfwd>
#include <memory>
#include <string>

class MathsDB;
class QTreeWidgetItem;

class ExerciseListQt : public TVDialogQt
{
    Q_OBJECT

public:
    // Columns of exerciseList.
    static constexpr int C_ColName = 0;
    static constexpr int C_ColSchedule = 1;

    // window, if given, gets the window opened.
    [[nodiscard]] static int start_edit(MathsDB& db, QWidget* parent, ExerciseListQt** window = nullptr);

    ExerciseListQt(MathsDB& db, QWidget* parent);
    ~ExerciseListQt() override;
    ExerciseListQt(const ExerciseListQt&) = delete;
    ExerciseListQt& operator=(const ExerciseListQt&) = delete;

    void dump(std::ostream& out, int indent) const;
    void update_display() override;

    // The reminder under edit: -1 for a new one.
    int get_reminder_index() const;

public slots:
    void add_pressed();
    void edit_pressed();
    void delete_pressed();
    void confirm_delete(std::string key, TVId id);
    void close_pressed();
    void schedule_changed(int index);
    void add_reminder();
    void edit_reminder(int index);
    void confirm_reminder();
    void cancel_reminder();
    void confirm_delete_reminder(std::string key, TVId id);
    void on_exerciseList_itemActivated(QTreeWidgetItem* item, int column);
    void on_reminderList_itemActivated(QTreeWidgetItem* item, int column);
    // Escape and the window's own close button close as Close does.
    void reject() override;

private:
    void build_form();
    void open_editor(int exerciseId);
    // The exercise or reminder selected, -1 if none.
    int selected_exercise() const;
    int selected_reminder() const;

    struct ExerciseListImpl;
    std::unique_ptr<ExerciseListImpl> d;
};

std::ostream& operator<<(std::ostream& out, const ExerciseListQt& window);

#endif // EXERCISELISTQT_H
