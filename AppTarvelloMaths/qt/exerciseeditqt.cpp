#include "AppTarvelloMaths/qt/exerciseeditqt.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/qt/art/mathsimages.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibGui/qt/tvhelpqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotcall.h"
#include "LibGui/qt/tvwidgetmgrqt.h"
#include "LibObject/core/tvid.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <vector>

using tvslotcall::call;

namespace {

constexpr int C_RangeLimit = 10000;

// The code of a combo's current row, as load_combo keeps it.
int combo_code(const QComboBox* combo)
{
    return TVId::from_string(TVWindowQt::combo_id(combo)).get_id();
}

void set_spin(QSpinBox* spin, int value)
{
    const QSignalBlocker blocker(spin);
    spin->setValue(value);
}

} // namespace

struct ExerciseEditQt::ExerciseEditImpl {
    ExerciseEditImpl(MathsDB& db, int exerciseId) : m_db(db), m_exerciseId(exerciseId) {}

    MathsDB& m_db;
    Exercise m_exercise;
    // The edited exercise by id, -1 for a new one: a pointer could outlive
    // the object while the dialog is open.
    int m_exerciseId;
    bool m_autoName = true;

    QComboBox* m_type = nullptr;
    QListWidget* m_tables = nullptr;
    QLineEdit* m_name = nullptr;
    QPushButton* m_reset = nullptr;
    QLabel* m_rangeLabel = nullptr;
    QSpinBox* m_minimum = nullptr;
    QLabel* m_maximumLabel = nullptr;
    QSpinBox* m_maximum = nullptr;
    QComboBox* m_sequence = nullptr;
    QLabel* m_numberLabel = nullptr;
    QSpinBox* m_number = nullptr;
};

int ExerciseEditQt::start_edit(MathsDB& db, int exerciseId, QWidget* parent, ExerciseEditQt** window)
{
    auto* edit = new ExerciseEditQt(db, exerciseId, parent);
    edit->set_delete_close(true);
    if (TVWidgetMgrQt* manager = edit->get_widgetmgr())
        manager->embed(*edit, false, false);
    edit->show_dialog();
    if (window != nullptr)
        *window = edit;
    return TVErrC_ok;
}

ExerciseEditQt::ExerciseEditQt(MathsDB& db, int exerciseId, QWidget* parent)
    : TVDialogQt(parent), d(std::make_unique<ExerciseEditImpl>(db, exerciseId))
{
    if (const Exercise* original = db.get_exercise_id(exerciseId))
        d->m_exercise = *original;
    else
        d->m_exerciseId = -1;
    maths_init_images();
    build_form();
    set_manual("SetExercise.html", "This window lets you edit the details of an exercise.");
    update_display();
}

ExerciseEditQt::~ExerciseEditQt() = default;

void ExerciseEditQt::build_form()
{
    setObjectName("ExerciseEditQt");
    setWindowTitle("Exercise");
    setStyleSheet("QDialog\n{\nbackground-color: white;\n}");

    d->m_type = new QComboBox(this);
    d->m_type->setObjectName("typeCombo");
    d->m_tables = new QListWidget(this);
    d->m_tables->setObjectName("timesTablesList");
    d->m_name = new QLineEdit(this);
    d->m_name->setObjectName("nameField");
    d->m_reset = new QPushButton(QIcon(":/TarvelloMathsImages/images/16/Undo.png"), QString(), this);
    d->m_reset->setObjectName("resetButton");
    d->m_reset->setToolTip("Name the exercise from its settings.");
    d->m_rangeLabel = new QLabel(this);
    d->m_rangeLabel->setObjectName("rangeLabel");
    d->m_minimum = new QSpinBox(this);
    d->m_minimum->setObjectName("minimumField");
    d->m_minimum->setRange(-C_RangeLimit, C_RangeLimit);
    d->m_maximumLabel = new QLabel("and", this);
    d->m_maximumLabel->setObjectName("maximumLabel");
    d->m_maximum = new QSpinBox(this);
    d->m_maximum->setObjectName("maximumField");
    d->m_maximum->setRange(-C_RangeLimit, C_RangeLimit);
    d->m_sequence = new QComboBox(this);
    d->m_sequence->setObjectName("sequenceCombo");
    d->m_numberLabel = new QLabel("Number of questions", this);
    d->m_numberLabel->setObjectName("numberLabel");
    d->m_number = new QSpinBox(this);
    d->m_number->setObjectName("numberField");
    d->m_number->setRange(0, C_RangeLimit);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Help,
                                         this);
    buttons->setObjectName("buttonBox");
    connect(buttons->button(QDialogButtonBox::Ok), &QPushButton::clicked, this, &ExerciseEditQt::ok_pressed);
    connect(buttons->button(QDialogButtonBox::Cancel), &QPushButton::clicked, this,
            &ExerciseEditQt::cancel_pressed);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] { TVHelpQt::show_manual(this); });

    auto* grid = new QGridLayout;
    int row = 0;
    grid->addWidget(new QLabel("Type", this), row, 0);
    grid->addWidget(d->m_type, row++, 1, 1, 3);
    grid->addWidget(new QLabel("Name", this), row, 0);
    grid->addWidget(d->m_name, row, 1, 1, 2);
    grid->addWidget(d->m_reset, row++, 3);
    grid->addWidget(d->m_rangeLabel, row, 0);
    grid->addWidget(d->m_minimum, row, 1);
    grid->addWidget(d->m_maximumLabel, row, 2);
    grid->addWidget(d->m_maximum, row++, 3);
    grid->addWidget(new QLabel("Order", this), row, 0);
    grid->addWidget(d->m_sequence, row++, 1, 1, 3);
    grid->addWidget(d->m_numberLabel, row, 0);
    grid->addWidget(d->m_number, row++, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(d->m_tables, 1);
    layout->addWidget(buttons);

    connect(d->m_tables, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        table_checked(item->data(Qt::UserRole).toInt(), item->checkState() == Qt::Checked);
    });
    QMetaObject::connectSlotsByName(this);
}

const Exercise& ExerciseEditQt::get_exercise() const { return d->m_exercise; }
bool ExerciseEditQt::is_auto_name() const { return d->m_autoName; }

void ExerciseEditQt::update_display()
{
    Exercise& exercise = d->m_exercise;
    const int type = exercise.get_type();
    const TVIdString types = Exercise::get_types();
    load_combo(d->m_type, types, types.get_id_row(TVId(type, -1, -1)));

    const QString name = QString::fromStdString(exercise.get_name());
    if (d->m_name->text() != name) { // a same-text reset would move the cursor
        const QSignalBlocker blocker(d->m_name);
        d->m_name->setText(name);
    }
    d->m_autoName = exercise.get_name().empty() || exercise.get_name() == exercise.generate_name();

    switch (type) {
    case Exercise::C_TypeTimesTables:
        d->m_rangeLabel->setText("Multiply between");
        break;
    case Exercise::C_TypeDivision:
        d->m_rangeLabel->setText("Division by numbers between");
        break;
    case Exercise::C_TypeSubtraction:
        d->m_rangeLabel->setText("Subtracting from numbers between");
        break;
    default:
        d->m_rangeLabel->setText("Addition between");
        break;
    }
    const bool ranged = type != Exercise::C_TypeRepeatIncorrect;
    for (QWidget* widget : {static_cast<QWidget*>(d->m_rangeLabel), static_cast<QWidget*>(d->m_minimum),
                            static_cast<QWidget*>(d->m_maximumLabel), static_cast<QWidget*>(d->m_maximum)})
        widget->setVisible(ranged);

    set_spin(d->m_minimum, exercise.get_minimum());
    set_spin(d->m_maximum, exercise.get_maximum());
    set_spin(d->m_number, exercise.get_number());
    const TVIdString sequences = Exercise::get_sequences();
    load_combo(d->m_sequence, sequences, sequences.get_id_row(TVId(exercise.get_sequence(), -1, -1)));

    const bool tables = type == Exercise::C_TypeTimesTables || type == Exercise::C_TypeDivision;
    d->m_tables->setVisible(tables);
    if (tables)
        load_tables();
}

void ExerciseEditQt::load_tables()
{
    std::vector<int> candidates;
    for (int table = C_FirstTable; table <= C_LastTable; ++table)
        candidates.push_back(table);
    for (int value : d->m_exercise.get_value_list())
        if (std::find(candidates.begin(), candidates.end(), value) == candidates.end())
            candidates.push_back(value);
    std::sort(candidates.begin(), candidates.end());

    // Items are changed in place: this runs inside their own itemChanged.
    const QSignalBlocker blocker(d->m_tables);
    for (size_t i = 0; i < candidates.size(); ++i) {
        QListWidgetItem* item = d->m_tables->item(static_cast<int>(i));
        if (item == nullptr) {
            item = new QListWidgetItem(d->m_tables);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        }
        item->setText(QString("%1 times table").arg(candidates[i]));
        item->setData(Qt::UserRole, candidates[i]);
        item->setCheckState(d->m_exercise.value_used(candidates[i]) ? Qt::Checked : Qt::Unchecked);
    }
}

void ExerciseEditQt::table_checked(int value, bool checked)
{
    Exercise& exercise = d->m_exercise;
    exercise.set_value(value, checked);
    if (d->m_autoName)
        exercise.set_name(exercise.generate_name());
    exercise.set_number(exercise.standard_number());
    update_display();
}

void ExerciseEditQt::on_typeCombo_currentIndexChanged(int)
{
    Exercise& exercise = d->m_exercise;
    exercise.set_type(combo_code(d->m_type));
    exercise.set_name(exercise.generate_name());
    update_display();
}

void ExerciseEditQt::on_nameField_textChanged(const QString& text)
{
    d->m_exercise.set_name(text.toStdString());
    update_display();
}

void ExerciseEditQt::on_resetButton_pressed()
{
    d->m_exercise.set_name(d->m_exercise.generate_name());
    update_display();
}

void ExerciseEditQt::on_minimumField_valueChanged(int value)
{
    Exercise& exercise = d->m_exercise;
    exercise.set_minimum(value);
    exercise.set_number(exercise.standard_number());
    update_display();
}

void ExerciseEditQt::on_maximumField_valueChanged(int value)
{
    Exercise& exercise = d->m_exercise;
    exercise.set_maximum(value);
    if (d->m_autoName)
        exercise.set_name(exercise.generate_name());
    exercise.set_number(exercise.standard_number());
    update_display();
}

void ExerciseEditQt::on_numberField_valueChanged(const QString& text)
{
    Exercise& exercise = d->m_exercise;
    const std::string typed = text.trimmed().toStdString();
    exercise.set_number(typed.empty() || typed == "0" ? exercise.standard_number() : std::atoi(typed.c_str()));
    update_display();
}

void ExerciseEditQt::on_sequenceCombo_currentIndexChanged(int)
{
    Exercise& exercise = d->m_exercise;
    exercise.set_sequence(combo_code(d->m_sequence));
    if (d->m_autoName)
        exercise.set_name(exercise.generate_name());
    update_display();
}

void ExerciseEditQt::ok_pressed()
{
    bool saved = false;
    const int result = call([&] { return save(saved); });
    if (tvhandle_error(result, TVSevWarning) == 0 && saved)
        dialog_done(TVErrC_ok, false);
}

int ExerciseEditQt::save(bool& saved)
{
    saved = false;
    try {
        Exercise& exercise = d->m_exercise;
        // The type first: the fields below overrule its presets.
        exercise.set_type(combo_code(d->m_type));
        exercise.set_name(d->m_name->text().toStdString());
        exercise.set_minimum(d->m_minimum->value());
        exercise.set_maximum(d->m_maximum->value());
        exercise.set_number(d->m_number->value());
        exercise.set_sequence(combo_code(d->m_sequence));

        std::string message;
        if (!exercise.sanity_check(message)) {
            TVMessageBoxQt::information("Exercise Problem", message, this);
            return TVErrC_ok;
        }

        MathsDB& db = d->m_db;
        Exercise* original = db.get_exercise_id(d->m_exerciseId);
        if (original != nullptr &&
            (exercise.equivalent(*original) || !db.exercise_referenced(original->get_id()))) {
            *original = exercise;
            TV_PASS_ON(db.complete_operation("Edit exercise"));
        } else {
            // Its runs keep meaning what they meant: the old exercise stays
            // for them, inactive, and the changed one starts afresh.
            TV_PASS_ON(db.add_exercise(new Exercise(exercise)));
            if (original != nullptr)
                TV_PASS_ON(db.delete_exercise(d->m_exerciseId));
            TV_PASS_ON(db.complete_operation("Add exercise"));
        }
        saved = true;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void ExerciseEditQt::cancel_pressed()
{
    dialog_done(QDialog::Rejected, false);
}

void ExerciseEditQt::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "ExerciseEditQt exercise " << d->m_exerciseId << " autoName "
        << d->m_autoName << "\n"
        << d->m_exercise;
}

std::ostream& operator<<(std::ostream& out, const ExerciseEditQt& window)
{
    window.dump(out, 0);
    return out;
}
