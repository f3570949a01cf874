#include "AppTarvelloMaths/qt/exerciselistqt.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/qt/art/mathsimages.h"
#include "AppTarvelloMaths/qt/exerciseeditqt.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateutils.h"
#include "LibGui/base/tvmessagebox.h"
#include "LibGui/qt/tvguideqt.h"
#include "LibGui/qt/tvhelpqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"
#include "LibGui/qt/tvtimeselectqt.h"
#include "LibGui/qt/tvwidgetmgrqt.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <ostream>
#include <vector>

using tvslotcall::call;

namespace {

std::string yes_label()
{
    return TVMessageBox::parse_key(TVMessageBox::C_Yes).label;
}

int selected_data(const QTreeWidget* list)
{
    const QList<QTreeWidgetItem*> items = list->selectedItems();
    return items.isEmpty() ? -1 : items.first()->data(0, Qt::UserRole).toInt();
}

} // namespace

struct ExerciseListQt::ExerciseListImpl {
    explicit ExerciseListImpl(MathsDB& db) : m_db(db) {}

    MathsDB& m_db;
    int m_reminderIndex = -1;

    TVGuideQt* m_guide = nullptr;
    QTreeWidget* m_exercises = nullptr;
    QTreeWidget* m_reminders = nullptr;
    QGroupBox* m_reminderGroup = nullptr;
    TVTimeSelectQt* m_reminderField = nullptr;
};

int ExerciseListQt::start_edit(MathsDB& db, QWidget* parent, ExerciseListQt** window)
{
    auto* list = new ExerciseListQt(db, parent);
    list->set_delete_close(true);
    list->show_dialog();
    if (window != nullptr)
        *window = list;
    return TVErrC_ok;
}

ExerciseListQt::ExerciseListQt(MathsDB& db, QWidget* parent)
    : TVDialogQt(parent), d(std::make_unique<ExerciseListImpl>(db))
{
    maths_init_images();
    build_form();
    set_manual("SetExercise.html", "This window lets you add and edit exercises.");
    update_display();
}

ExerciseListQt::~ExerciseListQt() = default;

void ExerciseListQt::build_form()
{
    setObjectName("ExerciseListQt");
    setWindowTitle("Exercises");

    d->m_guide = new TVGuideQt(this);
    d->m_guide->setObjectName("guideForm");
    d->m_guide->hide();

    d->m_exercises = new QTreeWidget(this);
    d->m_exercises->setObjectName("exerciseList");
    d->m_exercises->setColumnCount(2);
    d->m_exercises->setHeaderLabels({"Exercise", "Schedule"});
    d->m_exercises->setRootIsDecorated(false);
    d->m_exercises->header()->setSectionResizeMode(C_ColName, QHeaderView::Stretch);
    d->m_exercises->header()->setSectionResizeMode(C_ColSchedule, QHeaderView::ResizeToContents);
    d->m_exercises->header()->setStretchLastSection(false);

    d->m_reminders = new QTreeWidget(this);
    d->m_reminders->setObjectName("reminderList");
    d->m_reminders->setColumnCount(1);
    d->m_reminders->setHeaderLabels({"Reminders"});
    d->m_reminders->setRootIsDecorated(false);
    d->m_reminders->setMaximumHeight(120);

    // Selecting in one list deselects the other: Edit and Delete act on
    // whichever was chosen last.
    connect(d->m_exercises, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (!d->m_exercises->selectedItems().isEmpty())
            d->m_reminders->clearSelection();
    });
    connect(d->m_reminders, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (!d->m_reminders->selectedItems().isEmpty())
            d->m_exercises->clearSelection();
    });

    d->m_reminderGroup = new QGroupBox("Reminder time", this);
    d->m_reminderGroup->setObjectName("reminderGroup");
    d->m_reminderField = new TVTimeSelectQt(d->m_reminderGroup);
    d->m_reminderField->setObjectName("reminderField");
    auto* confirm = new QPushButton("Ok", d->m_reminderGroup);
    confirm->setObjectName("confirmReminderButton");
    auto* cancel = new QPushButton("Cancel", d->m_reminderGroup);
    cancel->setObjectName("cancelReminderButton");
    auto* groupLayout = new QHBoxLayout(d->m_reminderGroup);
    groupLayout->addWidget(d->m_reminderField, 1);
    groupLayout->addWidget(confirm);
    groupLayout->addWidget(cancel);
    d->m_reminderGroup->hide();
    connect(confirm, &QPushButton::clicked, this, &ExerciseListQt::confirm_reminder);
    connect(d->m_reminderField, &QLineEdit::returnPressed, this, &ExerciseListQt::confirm_reminder);
    connect(cancel, &QPushButton::clicked, this, &ExerciseListQt::cancel_reminder);

    auto* addReminder = new QPushButton("Add Reminder", this);
    addReminder->setObjectName("addReminderButton");
    connect(addReminder, &QPushButton::clicked, this, &ExerciseListQt::add_reminder);

    auto* buttons = new QDialogButtonBox(this);
    buttons->setObjectName("buttonBox");
    auto add_button = [&](const char* text, const char* name, void (ExerciseListQt::*slot)()) {
        QPushButton* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
        button->setObjectName(name);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, slot);
    };
    add_button("Add", "addButton", &ExerciseListQt::add_pressed);
    add_button("Edit", "editButton", &ExerciseListQt::edit_pressed);
    add_button("Delete", "deleteButton", &ExerciseListQt::delete_pressed);
    QPushButton* close = buttons->addButton(QDialogButtonBox::Close);
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &ExerciseListQt::close_pressed);
    buttons->addButton(QDialogButtonBox::Help);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { TVHelpQt::show_manual(this); });

    auto* reminderRow = new QHBoxLayout;
    reminderRow->addWidget(d->m_reminders, 1);
    reminderRow->addWidget(addReminder, 0, Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(d->m_guide, 1);
    layout->addWidget(d->m_exercises, 2);
    layout->addLayout(reminderRow);
    layout->addWidget(d->m_reminderGroup);
    layout->addWidget(buttons);
    resize(520, 480);

    QMetaObject::connectSlotsByName(this);
}

int ExerciseListQt::get_reminder_index() const { return d->m_reminderIndex; }

void ExerciseListQt::update_display()
{
    MathsDB& db = d->m_db;
    tvhandle_error(call([&] { return db.update(); }), TVSevWarning);

    const bool empty = db.get_nexercises() == 0;
    if (empty && d->m_guide->get_page().empty())
        d->m_guide->set_page("guide_exercise_list.html");
    d->m_guide->setVisible(empty);

    const int selected = selected_exercise();
    {
        const QSignalBlocker blocker(d->m_exercises);
        d->m_exercises->clear();
        const TVIdString schedules = Exercise::get_schedules();
        for (int i = 0; i < db.get_nexercises(); ++i) {
            const Exercise* exercise = db.get_exercise_no(i);
            if (!exercise->get_active())
                continue;
            auto* item = new QTreeWidgetItem(d->m_exercises);
            item->setText(C_ColName, QString::fromStdString(exercise->get_name()));
            item->setData(0, Qt::UserRole, exercise->get_id());
            auto* combo = new QComboBox;
            load_combo(combo, schedules, schedules.get_id_row(TVId(exercise->get_schedule(), -1, -1)));
            combo->setProperty("ID", exercise->get_id());
            connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                    &ExerciseListQt::schedule_changed);
            d->m_exercises->setItemWidget(item, C_ColSchedule, combo);
            if (exercise->get_id() == selected)
                item->setSelected(true);
        }
    }

    const int reminder = selected_reminder();
    {
        const QSignalBlocker blocker(d->m_reminders);
        d->m_reminders->clear();
        const TVDate day = TVDateUtils::start_day(TVDateUtils::now());
        const std::vector<TVDuration>& reminders = db.get_reminders();
        for (size_t i = 0; i < reminders.size(); ++i) {
            auto* item = new QTreeWidgetItem(d->m_reminders);
            item->setText(0, QString::fromStdString((day + reminders[i]).to_string("%t")));
            item->setData(0, Qt::UserRole, static_cast<int>(i));
            if (static_cast<int>(i) == reminder)
                item->setSelected(true);
        }
    }
}

int ExerciseListQt::selected_exercise() const { return selected_data(d->m_exercises); }
int ExerciseListQt::selected_reminder() const { return selected_data(d->m_reminders); }

void ExerciseListQt::open_editor(int exerciseId)
{
    ExerciseEditQt* edit = nullptr;
    tvhandle_error(call([&] { return ExerciseEditQt::start_edit(d->m_db, exerciseId, this, &edit); }),
                   TVSevWarning);
    if (edit != nullptr)
        connect(edit, &TVDialogQt::sig_closed, this, [this] { update_display(); });
}

void ExerciseListQt::add_pressed()
{
    open_editor(-1);
}

void ExerciseListQt::edit_pressed()
{
    const int exercise = selected_exercise();
    if (exercise >= 0) {
        open_editor(exercise);
        return;
    }
    const int reminder = selected_reminder();
    if (reminder >= 0)
        edit_reminder(reminder);
}

void ExerciseListQt::on_exerciseList_itemActivated(QTreeWidgetItem* item, int)
{
    if (item != nullptr)
        open_editor(item->data(0, Qt::UserRole).toInt());
}

void ExerciseListQt::on_reminderList_itemActivated(QTreeWidgetItem* item, int)
{
    if (item != nullptr)
        edit_reminder(item->data(0, Qt::UserRole).toInt());
}

void ExerciseListQt::delete_pressed()
{
    const std::string yes = TVMessageBox::C_Yes;
    const std::string no = TVMessageBox::C_No;
    const int exerciseId = selected_exercise();
    if (const Exercise* exercise = d->m_db.get_exercise_id(exerciseId)) {
        TVMessageBoxQt::open_id(this, "Delete Exercise",
                                "Are you sure you want to delete " + exercise->get_name() + "?", yes, no, "", "",
                                TVId(exerciseId, -1, -1), this, SLOT(confirm_delete(std::string, TVId)));
        return;
    }
    const int reminder = selected_reminder();
    const std::vector<TVDuration>& reminders = d->m_db.get_reminders();
    if (reminder < 0 || reminder >= static_cast<int>(reminders.size()))
        return;
    const TVDate time = TVDateUtils::start_day(TVDateUtils::now()) + reminders[static_cast<size_t>(reminder)];
    TVMessageBoxQt::open_id(this, "Delete Reminder",
                            "Are you sure you want to delete the " + time.to_string("%t") + " reminder?", yes, no,
                            "", "", TVId(reminder, -1, -1), this,
                            SLOT(confirm_delete_reminder(std::string, TVId)));
}

void ExerciseListQt::confirm_delete(std::string key, TVId id)
{
    if (key != yes_label())
        return;
    tvhandle_error(call([&] { return d->m_db.delete_exercise(id.get_id()); }), TVSevWarning);
    update_display();
}

void ExerciseListQt::confirm_delete_reminder(std::string key, TVId id)
{
    if (key != yes_label())
        return;
    const int index = id.get_id();
    const int result = call([&] {
        if (index < 0 || index >= static_cast<int>(d->m_db.get_reminders().size()))
            return TVErrC_ok;
        std::vector<TVDuration>& reminders = d->m_db.edit_reminders();
        reminders.erase(reminders.begin() + index);
        return d->m_db.complete_operation("Remove reminder");
    });
    tvhandle_error(result, TVSevWarning);
    update_display();
}

void ExerciseListQt::schedule_changed(int)
{
    auto* combo = qobject_cast<QComboBox*>(sender());
    if (combo == nullptr)
        return;
    const int result = call([&] {
        Exercise* exercise = d->m_db.get_exercise_id(combo->property("ID").toInt());
        if (exercise == nullptr)
            return TVErrC_ok;
        exercise->set_schedule(TVId::from_string(combo_id(combo)).get_id());
        return d->m_db.complete_operation("Edit exercise");
    });
    tvhandle_error(result, TVSevWarning);
}

void ExerciseListQt::add_reminder()
{
    edit_reminder(-1);
}

void ExerciseListQt::edit_reminder(int index)
{
    const std::vector<TVDuration>& reminders = d->m_db.get_reminders();
    const bool known = index >= 0 && index < static_cast<int>(reminders.size());
    d->m_reminderIndex = known ? index : -1;
    d->m_reminderGroup->show();
    // A new reminder starts blank: one second past the day.
    d->m_reminderField->set_duration(
        known ? static_cast<int>(reminders[static_cast<size_t>(index)].get_as_seconds()) : TVTimeSelectQt::C_Blank);
    d->m_reminderField->setFocus();
}

void ExerciseListQt::confirm_reminder()
{
    const int seconds = d->m_reminderField->get_duration();
    const int index = d->m_reminderIndex;
    const int result = call([&] {
        const bool inDay = seconds >= 0 && seconds < TVDate::C_DaySecs;
        const bool known = index >= 0 && index < static_cast<int>(d->m_db.get_reminders().size());
        if (!inDay && !known)
            return TVErrC_ok; // a blank new reminder is no reminder
        std::vector<TVDuration>& reminders = d->m_db.edit_reminders();
        if (inDay && known)
            reminders[static_cast<size_t>(index)] = TVDuration(static_cast<long>(seconds));
        else if (inDay)
            reminders.push_back(TVDuration(static_cast<long>(seconds)));
        else
            reminders.erase(reminders.begin() + index); // an emptied time deletes the reminder
        return d->m_db.complete_operation("Edit reminder");
    });
    tvhandle_error(result, TVSevWarning);
    cancel_reminder();
    update_display();
}

void ExerciseListQt::cancel_reminder()
{
    d->m_reminderIndex = -1;
    d->m_reminderGroup->hide();
}

void ExerciseListQt::close_pressed()
{
    tvhandle_error(call([this] { return d->m_db.update(); }), TVSevWarning);
    dialog_done(TVErrC_ok, false);
}

void ExerciseListQt::reject()
{
    close_pressed();
}

void ExerciseListQt::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "ExerciseListQt rows " << d->m_exercises->topLevelItemCount()
        << " reminders " << d->m_reminders->topLevelItemCount() << " reminder under edit " << d->m_reminderIndex
        << "\n";
}

std::ostream& operator<<(std::ostream& out, const ExerciseListQt& window)
{
    window.dump(out, 0);
    return out;
}
