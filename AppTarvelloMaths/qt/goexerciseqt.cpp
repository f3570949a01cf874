#include "AppTarvelloMaths/qt/goexerciseqt.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/maths/question.h"
#include "AppTarvelloMaths/qt/art/mathsimages.h"
#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibGui/qt/tvhelpqt.h"
#include "LibGui/qt/tvlineeditqt.h"
#include "LibGui/qt/tvslotcall.h"
#include "LibGui/qt/tvwidgetmgrqt.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QGraphicsScene>
#include <QGraphicsTextItem>
#include <QGraphicsView>
#include <QHeaderView>
#include <QPushButton>
#include <QResizeEvent>
#include <QSignalBlocker>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <ostream>

using tvslotcall::call;

namespace {

constexpr int C_Widths[] = {30, 100, 50, 30, 30};
const char* const C_StartText = "Start typing your answers to begin...";
const char* const C_RecordText = "\n    Record Time!!";

const QColor C_White(255, 255, 255);
const QColor C_Right(200, 255, 200);
const QColor C_Wrong(255, 200, 200);
const QColor C_Marker(255, 255, 0);

GoExerciseQt::BeepFn& beep_fn()
{
    static GoExerciseQt::BeepFn fn;
    return fn;
}

void beep()
{
    if (beep_fn())
        beep_fn()();
    else
        QApplication::beep();
}

std::string format(const char* fmt, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), fmt, value);
    return buffer;
}

// Characters the answer takes to type, plus one for the move to the next
// field: the unit the pace marker counts in.
int typing_length(const Question& question)
{
    return static_cast<int>(format("%.0f", question.get_solution()).size()) + 1;
}

} // namespace

struct GoExerciseQt::GoExerciseImpl {
    GoExerciseImpl(MathsDB& db, int goId) : m_db(db), m_goId(goId) {}

    MathsDB& m_db;
    int m_goId;
    QGraphicsView* m_view = nullptr;
    QGraphicsScene* m_scene = nullptr;
    TVDuration m_bestTime;
    QTimer m_timer;
    bool m_closing = false;
    QPushButton* m_close = nullptr;

    QDialogButtonBox* m_topButtons = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
    QTextBrowser* m_status = nullptr;
    QTreeWidget* m_list = nullptr;
    QIcon m_tick;
    QIcon m_cross;
    QIcon m_runner;
    QFont m_numberFont;
    int m_markerRow = -1;
    bool m_chart = false;
};

void GoExerciseQt::set_beep(BeepFn beep)
{
    beep_fn() = std::move(beep);
}

int GoExerciseQt::start_exercise(MathsDB& db, int goId, QWidget* parent, GoExerciseQt** window)
{
    if (window != nullptr)
        *window = nullptr;
    try {
        Go* go = db.get_go_id(goId);
        if (go == nullptr)
            return tverror(TVErrC_Assert, TVLOCATION, "Assertion Failed: go != nullptr");
        if (go->get_nquestions() == 0)
            TV_PASS_ON(db.fill_questions(*go));
        go->restart();

        auto* run = new GoExerciseQt(db, goId, parent);
        run->set_delete_close(true);
        if (TVWidgetMgrQt* manager = run->get_widgetmgr())
            manager->embed(*run, true, false);
        run->show_dialog();
        if (window != nullptr)
            *window = run;
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

GoExerciseQt::GoExerciseQt(MathsDB& db, int goId, QWidget* parent)
    : TVDialogQt(parent), d(std::make_unique<GoExerciseImpl>(db, goId))
{
    maths_init_images();
    build_form();
    set_defaults();
    connect(&d->m_timer, &QTimer::timeout, this, &GoExerciseQt::do_refresh);
    d->m_timer.start(C_RefreshMs);
    update_display();
}

GoExerciseQt::~GoExerciseQt() = default;

void GoExerciseQt::build_form()
{
    setObjectName("GoExerciseQt");
    setWindowTitle("Exercise...");
    setWindowIcon(QIcon(":/TarvelloMathsImages/images/original/TarvelloMaths.png"));
    resize(733, 516);

    d->m_topButtons = new QDialogButtonBox(this);
    d->m_topButtons->setObjectName("mButtonBox");
    d->m_topButtons->hide(); // the bar of small screens; the desktop keeps its buttons below

    d->m_status = new QTextBrowser(this);
    d->m_status->setObjectName("statusField");
    QFont statusFont = d->m_status->font();
    statusFont.setPointSize(22);
    d->m_status->setFont(statusFont);
    d->m_status->setMaximumHeight(100);
    d->m_status->setFocusPolicy(Qt::NoFocus);
    d->m_status->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    d->m_status->setFrameShape(QFrame::NoFrame);
    d->m_status->document()->setDocumentMargin(2);
    d->m_status->setStyleSheet("background: #eaf4ff; color: #1d3557;");

    d->m_list = new QTreeWidget(this);
    d->m_list->setObjectName("questionList");
    QFont listFont = d->m_list->font();
    listFont.setPointSize(16);
    d->m_list->setFont(listFont);
    d->m_numberFont = listFont;
    d->m_numberFont.setPointSize(11);
    d->m_list->setFocusPolicy(Qt::StrongFocus);
    d->m_list->setAlternatingRowColors(false);
    d->m_list->setRootIsDecorated(false);
    d->m_list->setItemsExpandable(false);
    d->m_list->setExpandsOnDoubleClick(false);
    // The row being typed in is shown by its field's cursor; a selection bar
    // would hide the row's colour.
    d->m_list->setSelectionMode(QAbstractItemView::NoSelection);
    d->m_list->setColumnCount(C_NColumns);
    d->m_list->setHeaderLabels({"", "Question", "", "", "", ""});
    d->m_list->header()->setStretchLastSection(true);
    // A header minimum above the narrow columns (140 was tried) would
    // overrule the widths refresh sets; the narrowest is the minimum.
    d->m_list->header()->setMinimumSectionSize(C_Widths[C_ColNumber]);

    d->m_buttons = new QDialogButtonBox(this);
    d->m_buttons->setObjectName("buttonBox");

    auto* listLayout = new QVBoxLayout;
    listLayout->setObjectName("listLayout");
    listLayout->setSpacing(0);
    listLayout->setContentsMargins(0, 0, 0, 0);
    listLayout->addWidget(d->m_status);
    listLayout->addWidget(d->m_list, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(d->m_topButtons);
    layout->addLayout(listLayout, 1);
    layout->addWidget(d->m_buttons);
}

void GoExerciseQt::set_defaults()
{
    d->m_close = d->m_buttons->addButton(QDialogButtonBox::Close);
    d->m_close->setObjectName("closeButton");
    d->m_close->setAutoDefault(false);
    connect(d->m_close, &QPushButton::clicked, this, &GoExerciseQt::close_pressed);
    QPushButton* help = d->m_buttons->addButton(QDialogButtonBox::Help);
    help->setAutoDefault(false);
    help->setFocusPolicy(Qt::NoFocus);
    connect(help, &QPushButton::clicked, this, &GoExerciseQt::help_pressed);
    set_manual("Running.html", "This window runs an exercise.");

    if (const Go* go = get_go())
        d->m_bestTime = d->m_db.get_best_time(go->get_exercise(), -1);

    // The marks drawn at 24 pixels, from the larger renders, so that a
    // child sees them at a glance.
    auto mark = [](const char* small) {
        QIcon icon(small);
        icon.addFile(QString(small).replace("/16/", "/32/"));
        return icon;
    };
    d->m_tick = mark(C_TickIcon);
    d->m_cross = mark(C_CrossIcon);
    d->m_runner = mark(C_RunnerIcon);
    d->m_list->setIconSize(QSize(24, 24));

    d->m_scene = new QGraphicsScene(this);
    d->m_view = new QGraphicsView(d->m_scene, this);
    d->m_view->setObjectName("statsView");
    d->m_view->setStyleSheet("background: transparent");
    d->m_view->setFrameShape(QFrame::NoFrame);
    d->m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    d->m_view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    d->m_view->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    d->m_view->setFocusPolicy(Qt::NoFocus);
    // A picture over the list: the list below stays the one that is used.
    d->m_view->setAttribute(Qt::WA_TransparentForMouseEvents);
    d->m_view->hide();
}

void GoExerciseQt::help_pressed()
{
    TVHelpQt::show_manual(this);
}

int GoExerciseQt::get_goid() const { return d->m_goId; }
Go* GoExerciseQt::get_go() const { return d->m_db.get_go_id(d->m_goId); }
QTreeWidget* GoExerciseQt::question_list() const { return d->m_list; }
QTextBrowser* GoExerciseQt::status_field() const { return d->m_status; }
QPushButton* GoExerciseQt::close_button() const { return d->m_close; }
int GoExerciseQt::marker_row() const { return d->m_markerRow; }
bool GoExerciseQt::has_chart() const { return d->m_chart; }

TVLineEditQt* GoExerciseQt::input_field(int row) const
{
    QTreeWidgetItem* item = d->m_list->topLevelItem(row);
    return item == nullptr ? nullptr : qobject_cast<TVLineEditQt*>(d->m_list->itemWidget(item, C_ColInput));
}

void GoExerciseQt::update_display()
{
    d->m_view->setGeometry(d->m_list->geometry());
    const Go* go = get_go();
    {
        const QSignalBlocker blocker(d->m_list);
        d->m_list->clear();
        for (int i = 0; go != nullptr && i < go->get_nquestions(); ++i) {
            const Question* question = go->get_question_no(i);
            auto* item = new QTreeWidgetItem(d->m_list);
            item->setText(C_ColNumber, QString::number(i + 1));
            // Two digits within the narrow number column.
            item->setFont(C_ColNumber, d->m_numberFont);
            item->setForeground(C_ColNumber, QColor(110, 110, 110));
            item->setTextAlignment(C_ColNumber, Qt::AlignRight | Qt::AlignVCenter);
            item->setForeground(C_ColWrong, QColor(190, 40, 40));
            item->setText(C_ColQuestion, QString::fromStdString(question->get_text()));
            item->setData(C_ColNumber, Qt::UserRole, i);
            auto* edit = new TVLineEditQt();
            edit->setInputMethodHints(Qt::ImhDigitsOnly);
            edit->setFocusPolicy(Qt::StrongFocus);
            edit->setProperty("No", i);
            connect(edit, &QLineEdit::textChanged, this, &GoExerciseQt::field_changed);
            d->m_list->setItemWidget(item, C_ColInput, edit);
        }
    }
    tvhandle_error(call([this] { return refresh(false); }), TVSevWarning);
}

void GoExerciseQt::open_complete()
{
    TVDialogQt::open_complete();
    if (TVLineEditQt* first = input_field(0))
        first->setFocus(Qt::OtherFocusReason);
}

void GoExerciseQt::resizeEvent(QResizeEvent* event)
{
    TVDialogQt::resizeEvent(event);
    d->m_view->setGeometry(d->m_list->geometry());
}

void GoExerciseQt::adjust_widgets()
{
    for (int i = 0; i < d->m_list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = d->m_list->topLevelItem(i);
        QWidget* field = d->m_list->itemWidget(item, C_ColInput);
        if (field == nullptr)
            continue;
        const QRect row = d->m_list->visualItemRect(item);
        field->setGeometry(field->x(), row.y(), field->width(), row.height());
    }
}

void GoExerciseQt::field_changed(const QString&)
{
    auto* edit = qobject_cast<QLineEdit*>(sender());
    tvhandle_error(call([&] { return handle_input(edit, false); }), TVSevWarning);
}

int GoExerciseQt::handle_input(QLineEdit* edit, bool final)
{
    try {
        Go* go = get_go();
        if (go == nullptr || edit == nullptr)
            return TVErrC_ok;
        const int index = edit->property("No").toInt();
        Question* question = go->get_question_no(index);
        if (question == nullptr)
            return TVErrC_ok;

        const int result = question->set_answer(edit->text().toStdString(), final);
        if (result == TVErrC_okNotFinished)
            return TVErrC_ok;
        if (result == TVErrC_okFinished) {
            TV_PASS_ON(refresh(true));
            if (go->is_complete()) {
                d->m_close->setDefault(true);
                d->m_close->setFocus();
                return TVErrC_ok;
            }
            // The next row may be answered already (after a wrap); the
            // focus repair in refresh moves on from there.
            QTreeWidgetItem* next = d->m_list->topLevelItem((index + 1) % go->get_nquestions());
            d->m_list->setCurrentItem(next);
            d->m_list->scrollToItem(next, QAbstractItemView::EnsureVisible);
            adjust_widgets();
            if (auto* field = qobject_cast<TVLineEditQt*>(d->m_list->itemWidget(next, C_ColInput)))
                field->setFocus();
            return TVErrC_ok;
        }
        if (result == TVErrC_okFailed) {
            // Emptied without a signal, so the clearing is no new input.
            {
                const QSignalBlocker blocker(edit);
                edit->clear();
            }
            beep();
            TV_PASS_ON(refresh(true));
            return TVErrC_ok;
        }
        return tverror(TVErrC_InvalidValue, TVLOCATION, "Unknown response.");
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void GoExerciseQt::do_refresh()
{
    const Go* go = get_go();
    const bool running = go != nullptr && go->is_started() && !go->is_complete();
    tvhandle_error(call([&] { return refresh(running); }), TVSevWarning);
}

int GoExerciseQt::pace_row(double elapsedSecs) const
{
    const Go* go = get_go();
    const int n = go == nullptr ? 0 : go->get_nquestions();
    if (n == 0 || !(d->m_bestTime > 0))
        return -1;
    const double bestSecs = d->m_bestTime.get_as_dseconds();
    if (elapsedSecs > bestSecs)
        return n - 1;
    int total = 0;
    for (int i = 0; i < n; ++i)
        total += typing_length(*go->get_question_no(i));
    const int target = static_cast<int>(total * (elapsedSecs / bestSecs));
    int count = 0;
    for (int i = 0; i < n; ++i) {
        count += typing_length(*go->get_question_no(i));
        if (count >= target)
            return i;
    }
    return n - 1;
}

int GoExerciseQt::refresh(bool stamp)
{
    Go* go = get_go();
    if (go == nullptr)
        return TVErrC_ok;
    if (!d->m_closing)
        go->update(stamp);

    // Typing must always land in an open field: the first one, or Close.
    // A field of an answered row counts as no field (the move to the next
    // row wraps round onto answered ones).
    if (isVisible()) {
        QWidget* focus = QApplication::focusWidget();
        if (focus == nullptr)
            focus = focusWidget(); // another program is active: ours is where typing goes
        auto* field = qobject_cast<QLineEdit*>(focus);
        if (field != nullptr && field->property("No").isValid()) {
            const Question* question = go->get_question_no(field->property("No").toInt());
            if (question != nullptr && question->get_complete())
                field = nullptr;
        }
        if (field == nullptr) {
            QWidget* target = d->m_close;
            for (int i = 0; i < go->get_nquestions(); ++i) {
                if (!go->get_question_no(i)->get_complete()) {
                    if (TVLineEditQt* field = input_field(i))
                        target = field;
                    break;
                }
            }
            target->setFocus();
        }
    }

    const TVDuration elapsed = go->get_duration();
    const double elapsedSecs = elapsed.get_as_dseconds();
    std::string status;
    if (!go->is_started()) {
        status = C_StartText;
    } else if (!go->is_complete()) {
        status = format("%.1f", elapsedSecs);
    } else {
        status = format("Finished in %.1f seconds.", elapsedSecs);
        const TVDuration best = d->m_db.get_best_time(go->get_exercise(), go->get_id());
        if (best > 0 && elapsed < best) {
            status += C_RecordText;
            d->m_status->setStyleSheet("background: yellow;");
        }
        d->m_timer.stop();
        display_stats();
    }
    d->m_status->setPlainText(QString::fromStdString("\n    " + status));
    // The empty first line is only a gap: kept short, two lines of status
    // fit the box.
    QTextBlockFormat gap;
    gap.setLineHeight(30, QTextBlockFormat::ProportionalHeight);
    QTextCursor(d->m_status->document()->firstBlock()).mergeBlockFormat(gap);

    d->m_markerRow = pace_row(elapsedSecs);
    for (int i = 0; i < d->m_list->topLevelItemCount() && i < go->get_nquestions(); ++i) {
        QTreeWidgetItem* item = d->m_list->topLevelItem(i);
        const Question* question = go->get_question_no(i);
        QColor colour = C_White;
        item->setText(C_ColTick, QString());
        if (question->get_complete()) {
            item->setIcon(C_ColTick, question->get_correct() ? d->m_tick : d->m_cross);
            colour = question->get_correct() ? C_Right : C_Wrong;
        } else {
            item->setIcon(C_ColTick, QIcon());
        }
        item->setText(C_ColMarker, QString());
        const bool marker = i == d->m_markerRow;
        item->setIcon(C_ColMarker, marker ? d->m_runner : QIcon());
        item->setBackground(C_ColMarker, marker ? C_Marker : colour);
        item->setText(C_ColWrong, QString::fromStdString(question->wrong_text()));
        for (int column : {C_ColNumber, C_ColQuestion, C_ColInput, C_ColTick, C_ColWrong})
            item->setBackground(column, colour);
    }

    for (int column = 0; column < 5; ++column)
        d->m_list->setColumnWidth(column, C_Widths[column]);
    return TVErrC_ok;
}

void GoExerciseQt::close_pressed()
{
    const int result = call([this] {
        d->m_closing = true;
        d->m_timer.stop();
        Go* go = get_go();
        if (go != nullptr && !go->is_complete()) {
            go->clear(); // an unfinished run leaves no trace
        } else if (go != nullptr) {
            d->m_db.collate_incorrect(*go);
            TV_PASS_ON(d->m_db.update());
            std::string image;
            if (istvwarn(d->m_db.next_image(image)))
                get_tverror()->clear_last_error(); // the old picture simply stays
        }
        dialog_done(TVErrC_ok, false);
        return TVErrC_ok;
    });
    tvhandle_error(result, TVSevWarning);
}

void GoExerciseQt::dialog_done(int result, bool immediate)
{
    if (!d->m_closing) {
        close_pressed(); // comes back here with m_closing set
        return;
    }
    TVDialogQt::dialog_done(result, immediate);
}

void GoExerciseQt::display_stats()
{
    const Go* go = get_go();
    if (go == nullptr)
        return;
    const std::vector<double> times = d->m_db.get_times(*go);
    if (times.size() < 2)
        return;

    QGraphicsScene* scene = d->m_scene;
    scene->clear();
    d->m_view->setGeometry(d->m_list->geometry());
    const double width = d->m_view->width();
    const double height = d->m_view->height();
    scene->setSceneRect(0, 0, width, height);
    QColor veil(Qt::white);
    veil.setAlpha(0xDC); // 0xDCDC of 0xFFFF
    scene->addRect(-2, -2, width + 4, height + 4, QPen(Qt::NoPen), QBrush(veil));

    double highest = 0;
    double lowest = 10000;
    for (double t : times) {
        highest = std::max(highest, t);
        lowest = std::min(lowest, t);
    }
    const double left = width * 0.1;
    const double right = width * 0.9;
    const double top = height * 0.1;
    const double bottom = height * 0.9;

    // The smallest round step that gives no more than about eight lines.
    const double wanted = 0.125 * (highest - lowest);
    double step = 500;
    for (double candidate : {1.0, 2.0, 5.0, 10.0, 20.0, 50.0, 100.0, 200.0, 500.0}) {
        if (candidate >= wanted) {
            step = candidate;
            break;
        }
    }
    const double floorValue = std::floor(lowest / step) * step;
    double ceilValue = std::ceil(highest / step) * step;
    if (ceilValue <= floorValue)
        ceilValue = floorValue + step;
    auto y_of = [&](double value) {
        return bottom - (value - floorValue) / (ceilValue - floorValue) * (bottom - top);
    };
    auto x_of = [&](size_t index) {
        return left + (right - left) * static_cast<double>(index) / static_cast<double>(times.size() - 1);
    };

    const QPen gridPen(QColor(215, 215, 215), 1.0);
    for (double value = floorValue; value <= ceilValue + step / 2; value += step) {
        const double y = y_of(value);
        scene->addLine(left, y, right, y, gridPen);
        char label[32];
        std::snprintf(label, sizeof(label), "%d", static_cast<int>(std::lround(value)));
        QGraphicsSimpleTextItem* text = scene->addSimpleText(label);
        const QRectF box = text->boundingRect();
        text->setPos(left - box.width() - 5, y - box.height() / 2);
    }

    // The axes, and the runs numbered along the bottom (at most about ten
    // numbers, so they never crowd).
    const QPen axisPen(QColor(90, 90, 90), 1.5);
    scene->addLine(left, top, left, bottom, axisPen);
    scene->addLine(left, bottom, right, bottom, axisPen);
    const size_t every = std::max<size_t>(1, (times.size() + 9) / 10);
    for (size_t i = 0; i < times.size(); i += every) {
        QGraphicsSimpleTextItem* text = scene->addSimpleText(QString::number(i + 1));
        const QRectF box = text->boundingRect();
        text->setPos(x_of(i) - box.width() / 2, bottom + 4);
    }

    const QColor lineColour(30, 90, 200);
    const QColor bestColour(20, 140, 60);
    const QColor newestColour(230, 110, 0);
    const QPen linePen(lineColour, 2.0);
    for (size_t i = 1; i < times.size(); ++i)
        scene->addLine(x_of(i - 1), y_of(times[i - 1]), x_of(i), y_of(times[i]), linePen);
    const size_t newest = times.size() - 1;
    const size_t best = static_cast<size_t>(std::min_element(times.begin(), times.end()) - times.begin());
    for (size_t i = 0; i < times.size(); ++i) {
        const QColor colour = i == best ? bestColour : i == newest ? newestColour : lineColour;
        const double r = i == newest || i == best ? 5.0 : 3.0;
        scene->addEllipse(x_of(i) - r, y_of(times[i]) - r, 2 * r, 2 * r, QPen(Qt::white, 1.0), QBrush(colour));
    }

    // Labels stay inside the chart: left of their point near the right
    // edge, and the best's below its point so that it clears the newest's.
    QFont labelFont = font();
    labelFont.setPointSize(12);
    labelFont.setBold(true);
    auto label_point = [&](size_t index, const QColor& colour, bool below) {
        QGraphicsSimpleTextItem* text = scene->addSimpleText(
            QString::fromStdString(format("%.1f seconds", times[index])), labelFont);
        text->setBrush(colour);
        const QRectF box = text->boundingRect();
        double x = x_of(index) + 8;
        if (x + box.width() > width - 4)
            x = x_of(index) - 8 - box.width();
        const double y = below ? y_of(times[index]) + 6 : y_of(times[index]) - box.height() - 6;
        text->setPos(std::max(2.0, x), std::clamp(y, 2.0, height - box.height() - 2));
    };
    label_point(newest, best == newest ? bestColour : newestColour, false);
    if (best != newest)
        label_point(best, bestColour, true);

    d->m_view->show();
    d->m_view->raise();
    d->m_chart = true;
}

void GoExerciseQt::dump(std::ostream& out, int indent) const
{
    out << TVDump::indent_string(indent) << "GoExerciseQt go " << d->m_goId << " best " << d->m_bestTime.get_as_dseconds()
        << " closing " << d->m_closing << " rows " << d->m_list->topLevelItemCount() << " marker "
        << d->m_markerRow << "\n";
}

std::ostream& operator<<(std::ostream& out, const GoExerciseQt& window)
{
    window.dump(out, 0);
    return out;
}
