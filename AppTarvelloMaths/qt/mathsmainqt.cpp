#include "AppTarvelloMaths/qt/mathsmainqt.h"

#include "AppTarvelloMaths/maths/exercise.h"
#include "AppTarvelloMaths/maths/go.h"
#include "AppTarvelloMaths/maths/mathsdb.h"
#include "AppTarvelloMaths/maths/session.h"
#include "AppTarvelloMaths/qt/mathswindows.h"
#include "LibCore/application/tvapplication.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibCore/log/tvdump.h"
#include "LibDatabase/qt/tvcloudbuttonqt.h"
#include "LibDate/core/tvdateutils.h"
#include "LibGui/base/tvnotifyitem.h"
#include "LibGui/base/tvnotifyscheme.h"
#include "LibGui/qt/tvapppageqt.h"
#include "LibGui/qt/tvgraphicssceneqt.h"
#include "LibGui/qt/tvguideqt.h"
#include "LibGui/qt/tvhelpqt.h"
#include "LibGui/qt/tvimageviewerqt.h"
#include "LibGui/qt/tvlocaleqt.h"
#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvnotifybarqt.h"
#include "LibGui/qt/tvnotifylistqt.h"
#include "LibGui/qt/tvnotifysettingsqt.h"
#include "LibGui/qt/tvsettingsqt.h"
#include "LibGui/qt/tvslotcall.h"
#include "LibGui/qt/tvtreewidgetqt.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QFrame>
#include <QGraphicsView>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollArea>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <ostream>

using tvslotcall::call;
using tvslotcall::stopped;

namespace {

const char* const C_WelcomePage = "maths_welcome.html";
const char* const C_ClockIcon = ":/LibGui/images/32/Clock.png";
const char* const C_WarningIcon = ":/LibGui/images/32/Warning.png";
const char* const C_ProgramIcon = ":/TarvelloMathsImages/images/original/TarvelloMaths.png";
const char* const C_Translucent = "background-color: rgba(255, 255, 255, 150);";
const char* const C_BackgroundTip =
    "This area shows a different image (on rotation) after each exercise.   Use the Settings to "
    "choose your own background images.";
// Large enough for a child to read from across the table, and small
// enough that "Again" fits its 60 pixels.
constexpr int C_ListPointSize = 14;
constexpr int C_StatusPointSize = 20;
constexpr int C_PanelMargin = 16;
constexpr int C_RowHeight = 36;
// The panels' shape and colours; their translucent background is their own
// style sheet's.
const char* const C_FrameStyle =
    "QTreeWidget#sessionTree { border-radius: 14px; color: #1d3557; }"
    "QTreeWidget#sessionTree::item { padding: 3px 0px; }"
    "TVNotifyBarQt#notifyBar { background-color: rgba(255, 255, 255, 200); border: none;"
    " border-radius: 10px; }"
    "QLabel#sessionStatus { border-radius: 14px; color: #1d3557; }";
const char* const C_HeaderStyle =
    "QHeaderView { background: transparent; }"
    "QHeaderView::section { background: transparent; color: #46607a; border: none;"
    " padding: 2px 8px 6px 8px; font-weight: bold; }";
const char* const C_GoStyle =
    "QPushButton { background-color: #2e9d4a; color: white; border: none; border-radius: 9px;"
    " padding: 3px 2px; font-weight: bold; }"
    "QPushButton:hover { background-color: #36b556; }"
    "QPushButton:pressed { background-color: #23793a; }";
const char* const C_AgainStyle =
    "QPushButton { background-color: #2f78c4; color: white; border: none; border-radius: 9px;"
    " padding: 3px 2px; }"
    "QPushButton:hover { background-color: #3a8ae0; }"
    "QPushButton:pressed { background-color: #245f9c; }";

std::string seconds_text(const TVDuration& duration)
{
    if (duration.get_as_dseconds() <= 0.0)
        return std::string();
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", duration.get_as_dseconds());
    return text;
}

std::string status_text(int remaining)
{
    if (remaining == 0)
        return "\n    Finished";
    if (remaining == 1)
        return "\n    1 Exercise to go";
    char text[64];
    std::snprintf(text, sizeof(text), "\n    %d Exercises to go", remaining);
    return text;
}

} // namespace

MathsMainQt::MathsMainQt(MathsDB& db, QWidget* parent) : TVDBManagerQt(db, parent), m_mathsDB(db)
{
    setup_form();
    add_actions();
    set_manual("TarvelloMaths.html", "You can start running exercises from the main screen.");

    TVNotifyList& list = get_notify();
    list.add_scheme(new TVNotifyScheme(C_NotifySession, "NotifySession",
                                       TVNotifyScheme::C_ResponsePopup, C_ClockIcon, true,
                                       TVColour()));
    tvhandle_error(call([&] { return initialise_notify(); }), TVSevWarning);
    if (auto* qtList = dynamic_cast<TVNotifyListQt*>(&list)) {
        notifyBar->set_notify_list(qtList);
        tvhandle_error(call([&] { return qtList->initialise(notifyBar->get_tree(), this); }),
                       TVSevWarning);
    }
    connect(notifyBar, &TVNotifyBarQt::sig_selected, this, &MathsMainQt::notify_selected);
    QMetaObject::connectSlotsByName(this);
    update_display();
}

MathsMainQt::~MathsMainQt() = default;

// ---- The form -----------------------------------------------------------------------

void MathsMainQt::setup_form()
{
    setObjectName("MathsMainQt");
    setWindowIcon(QIcon(C_ProgramIcon));
    resize(1000, 700);

    centralwidget = new QWidget(this);
    centralwidget->setObjectName("centralwidget");
    setCentralWidget(centralwidget);
    centralwidget->installEventFilter(this);

    // The picture lies under everything else in the central area.
    m_viewer = std::make_unique<TVImageViewerQt>(centralwidget);
    QGraphicsView* view = m_viewer->get_view();
    view->setToolTip(C_BackgroundTip);
    view->setFrameShape(QFrame::NoFrame);
    view->lower();

    mainWidget = new QWidget(centralwidget);
    mainWidget->setObjectName("mainWidget");
    mainWidget->setStyleSheet(C_FrameStyle);
    auto* mainLayout = new QVBoxLayout(mainWidget);
    mainLayout->setContentsMargins(C_PanelMargin, C_PanelMargin, C_PanelMargin, C_PanelMargin);
    mainLayout->setSpacing(12);

    notifyBar = new TVNotifyBarQt(mainWidget);
    notifyBar->setObjectName("notifyBar");
    mainLayout->addWidget(notifyBar);

    scrollArea = new QScrollArea(mainWidget);
    scrollArea->setObjectName("scrollArea");
    scrollArea->setWidgetResizable(true);
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setStyleSheet("QScrollArea { background: transparent; }");
    scrollArea->viewport()->setAutoFillBackground(false);
    mainLayout->addWidget(scrollArea, 1);

    mainFrame = new QFrame();
    mainFrame->setObjectName("mainFrame");
    mainFrame->setAutoFillBackground(false);
    mainFrame->setStyleSheet("QFrame#mainFrame { background: transparent; }");
    scrollArea->setWidget(mainFrame);
    auto* frameLayout = new QHBoxLayout(mainFrame);
    frameLayout->setContentsMargins(0, 0, 0, 0);
    frameLayout->setSpacing(C_PanelMargin);
    auto* listColumn = new QVBoxLayout();
    listColumn->setSpacing(C_PanelMargin);
    frameLayout->addLayout(listColumn);

    QFont listFont = font();
    listFont.setPointSize(C_ListPointSize);
    sessionTree = new TVTreeWidgetQt(mainFrame);
    sessionTree->setObjectName("sessionTree");
    sessionTree->setStyleSheet(C_Translucent);
    sessionTree->setFont(listFont);
    sessionTree->setColumnCount(4);
    sessionTree->setHeaderLabels({"", "Exercise", "Time", "Best"});
    sessionTree->setRootIsDecorated(false);
    sessionTree->setItemsExpandable(false);
    sessionTree->setFrameShape(QFrame::NoFrame);
    sessionTree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    sessionTree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    sessionTree->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    sessionTree->header()->setStretchLastSection(false);
    sessionTree->header()->setStyleSheet(C_HeaderStyle);
    sessionTree->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    sessionTree->setFocusPolicy(Qt::NoFocus);
    listColumn->addWidget(sessionTree, 0, Qt::AlignLeft | Qt::AlignTop);

    QFont statusFont = font();
    statusFont.setPointSize(C_StatusPointSize);
    statusFont.setBold(true);
    sessionStatus = new QLabel(mainFrame);
    sessionStatus->setObjectName("sessionStatus");
    sessionStatus->setStyleSheet(C_Translucent);
    sessionStatus->setFont(statusFont);
    sessionStatus->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    listColumn->addWidget(sessionStatus, 0, Qt::AlignLeft | Qt::AlignTop);
    listColumn->addStretch(1);

    guideForm = new TVGuideQt(mainFrame);
    guideForm->setObjectName("guideForm");
    guideForm->setStyleSheet("background-color: rgba(255, 255, 255, 215); border-radius: 12px;");
    guideForm->document()->setDocumentMargin(C_PanelMargin);
    guideForm->setFrameShape(QFrame::NoFrame);
    guideForm->setMinimumWidth(360);
    frameLayout->addWidget(guideForm, 1);
    guideForm->hide();
    frameLayout->addStretch(0);

    // The button row: a tidy translucent strip along the bottom.
    mButtonBox = new QFrame(mainWidget);
    mButtonBox->setObjectName("mButtonBox");
    mButtonBox->setStyleSheet("QFrame#mButtonBox { background-color: rgba(255, 255, 255, 150); "
                              "border-radius: 10px; }");
    auto* row = new QHBoxLayout(mButtonBox);
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(6);
    add_button(mButtonBox, ":/TarvelloMathsImages/images/32/SetExercise.png",
               "Set up the maths exercises.", SLOT(set_exercises()));
    add_button(mButtonBox, ":/LibGui/images/32/Menu.png",
               "The Tarvello Maths utility menu.\n(Settings, User Manual, About)",
               SLOT(app_menu_pressed()));
    // The session's end has a box of its own, shown only when nothing is left.
    buttonBox = new QFrame(mButtonBox);
    buttonBox->setObjectName("buttonBox");
    auto* finishedRow = new QHBoxLayout(buttonBox);
    finishedRow->setContentsMargins(0, 0, 0, 0);
    row->addWidget(buttonBox);
    finishedButton = add_button(buttonBox, ":/TarvelloMathsImages/images/original/Finished.png",
                                "Closes this maths session.", SLOT(exercise_finished()));
    finishedButton->setObjectName("finishedButton");
    finishedButton->setText("Finished");
    finishedButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    finishedButton->setMinimumWidth(2 * C_ButtonWidth);
    row->addStretch(1);
    // The links' state; hidden while the file has none.
    cloudButton = new TVCloudButtonQt(this, mButtonBox);
    row->addWidget(cloudButton);
    cloudButton->update_state();
    add_button(mButtonBox, ":/TarvelloMathsImages/images/32/ZoomIn.png",
               "Zoom the background image in.", SLOT(zoom_in()));
    add_button(mButtonBox, ":/TarvelloMathsImages/images/32/ZoomOut.png",
               "Zoom the background image out.", SLOT(zoom_out()));
    add_button(mButtonBox, ":/TarvelloMathsImages/images/32/ZoomAll.png",
               "Zoom the background image all the way out.", SLOT(zoom_out_all()));
    mainLayout->addWidget(mButtonBox);

    // The status line shows only while it has something to say, so that
    // the picture reaches the bottom of the window.
    QStatusBar* bar = statusBar();
    bar->setSizeGripEnabled(false);
    bar->hide();
    connect(bar, &QStatusBar::messageChanged, bar,
            [bar](const QString& message) { bar->setVisible(!message.isEmpty()); });
}

QToolButton* MathsMainQt::add_button(QWidget* box, const char* icon, const char* tip,
                                     const char* slot)
{
    auto* button = new QToolButton(box);
    button->setIcon(QIcon(icon));
    button->setIconSize(QSize(32, 32));
    button->setToolTip(tip);
    button->setMinimumWidth(C_ButtonWidth);
    button->setMinimumHeight(44);
    button->setAutoRaise(true);
    box->layout()->addWidget(button);
    connect(button, SIGNAL(clicked()), this, slot);
    return button;
}

void MathsMainQt::add_actions()
{
    auto make = [this](QAction*& action, const char* name, const QString& text, const char* slot,
                       QKeySequence key = QKeySequence()) {
        action = new QAction(text, this);
        action->setObjectName(name);
        if (!key.isEmpty())
            action->setShortcut(key);
        if (slot != nullptr)
            connect(action, SIGNAL(triggered()), this, slot);
    };
    make(actionNew, "actionNew", "New...", SLOT(new_selected()), QKeySequence::New);
    make(actionOpen, "actionOpen", "Open...", SLOT(open_selected()), QKeySequence::Open);
    make(actionSave, "actionSave", "Save", SLOT(save_selected()), QKeySequence::Save);
    make(actionSaveAs, "actionSaveAs", "Save As...", SLOT(saveas_selected()));
    make(actionExport, "actionExport", "Export to File...", SLOT(export_selected()));
    // These two are connected by name (on_..._triggered).
    make(actionExportBuffer, "actionExportBuffer", "Export to Another App", nullptr);
    make(actionImport, "actionImport", "Import from File...", SLOT(import_selected()));
    make(actionImportBuffer, "actionImportBuffer", "Import from Another App", nullptr);
    make(actionQuit, "actionQuit", "Quit", SLOT(quit_selected()), QKeySequence::Quit);
    make(actionUndo, "actionUndo", "Undo", SLOT(undo_selected()), QKeySequence::Undo);
    make(actionRedo, "actionRedo", "Redo", SLOT(redo_selected()), QKeySequence::Redo);
    make(actionZoomIn, "actionZoomIn", "Zoom In", SLOT(zoom_in()), QKeySequence::ZoomIn);
    make(actionZoomOut, "actionZoomOut", "Zoom Out", SLOT(zoom_out()), QKeySequence::ZoomOut);
    make(actionZoomOutAll, "actionZoomOutAll", "Zoom Out All", SLOT(zoom_out_all()));
    make(actionSetExercises, "actionSetExercises", "Set Exercises...", SLOT(set_exercises()));
    make(actionPreferences, "actionPreferences", "Preferences...", SLOT(preferences_selected()),
         QKeySequence::Preferences);
    make(actionUserManual, "actionUserManual", "User Manual", SLOT(manual_selected()),
         QKeySequence::HelpContents);
    make(actionAbout, "actionAbout", "About Tarvello Maths", SLOT(about_selected()));
    actionPreferences->setMenuRole(QAction::PreferencesRole);
    actionAbout->setMenuRole(QAction::AboutRole);
    actionQuit->setMenuRole(QAction::QuitRole);

    QMenuBar* bar = menuBar();
    menuFile = bar->addMenu("&File");
    menuFile->setObjectName("menuFile");
    menuFile->addAction(actionNew);
    menuFile->addAction(actionOpen);
    menuRecent = menuFile->addMenu("Open Recent");
    menuRecent->setObjectName("menuRecent");
    menuFile->addSeparator();
    menuFile->addAction(actionSave);
    menuFile->addAction(actionSaveAs);
    menu_Export = menuFile->addMenu("&Export");
    menu_Export->setObjectName("menu_Export");
    menu_Export->addAction(actionExport);
    menu_Export->addAction(actionExportBuffer);
    menuImport = menuFile->addMenu("&Import");
    menuImport->setObjectName("menuImport");
    menuImport->addAction(actionImport);
    menuImport->addAction(actionImportBuffer);
    menuFile->addSeparator();
    menuFile->addAction(actionQuit);
    menuEdit = bar->addMenu("&Edit");
    menuEdit->setObjectName("menuEdit");
    menuEdit->addAction(actionUndo);
    menuEdit->addAction(actionRedo);
    menuView = bar->addMenu("&View");
    menuView->setObjectName("menuView");
    menuView->addAction(actionZoomIn);
    menuView->addAction(actionZoomOut);
    menuView->addAction(actionZoomOutAll);
    menuTools = bar->addMenu("&Tools");
    menuTools->setObjectName("menuTools");
    menuTools->addAction(actionSetExercises);
    menuTools->addAction(actionPreferences);
    menuHelp = bar->addMenu("&Help");
    menuHelp->setObjectName("menuHelp");
    menuHelp->addAction(actionUserManual);
    menuHelp->addAction(actionAbout);
}

void MathsMainQt::recent_menu()
{
    menuRecent->clear();
    for (const std::string& file : tvapplication()->get_recent()) {
        QAction* action = menuRecent->addAction(QString::fromStdString(tv_basename(file)));
        action->setData(QString::fromStdString(file));
        action->setToolTip(QString::fromStdString(file));
        connect(action, SIGNAL(triggered()), this, SLOT(recent_seleted()));
    }
    menuRecent->setEnabled(!menuRecent->isEmpty());
}

void MathsMainQt::dump(std::ostream& out, int indent) const
{
    TVDBManagerQt::dump(out, indent);
    TVDump dump("MathsMainQt", out, indent);
    dump.add_entry("rows", sessionTree->topLevelItemCount());
    dump.add_entry("listHeight", m_listHeight);
    dump.add_entry("image", m_viewer->get_path());
}

// ---- After a load, and the display ---------------------------------------------------

void MathsMainQt::show_dialog()
{
    TVDBManagerQt::show_dialog();
    raise();
    const int result = call([&] {
        TV_PASS_ON(m_mathsDB.start());
        m_mathsDB.set_autosave(true);
        recent_menu();
        std::string image;
        TV_PASS_ON(m_mathsDB.get_current_image(image));
        return display_image(image);
    });
    stopped(result);
    QCoreApplication::processEvents();
}

void MathsMainQt::update_display()
{
    TVDBManagerQt::update_display();
    const Session* session = m_mathsDB.is_loaded() ? m_mathsDB.current_session() : nullptr;
    if (session != nullptr && session->get_ngos() == 0) {
        if (guideForm->get_page() != C_WelcomePage)
            guideForm->set_page(C_WelcomePage);
        guideForm->show();
    } else {
        guideForm->hide();
    }
    const bool finished = m_mathsDB.get_remaining_exercises() == 0;
    buttonBox->setVisible(finished);
    finishedButton->setVisible(finished);
    setWindowTitle(QString::fromStdString(tvapplication()->get_application()));
    display_session();
}

void MathsMainQt::display_session()
{
    const QSignalBlocker blocker(sessionTree);
    sessionTree->clear();
    m_listHeight = 0;
    const Session* session = m_mathsDB.is_loaded() ? m_mathsDB.current_session() : nullptr;
    for (int i = 0; session != nullptr && i < session->get_ngos(); ++i) {
        const Go* go = m_mathsDB.get_go_id(session->get_go_no(i));
        const Exercise* exercise = go != nullptr ? m_mathsDB.get_exercise_id(go->get_exercise())
                                                 : nullptr;
        if (exercise != nullptr)
            add_row(*go, *exercise);
    }
    // An empty list would be a bare header: the welcome page says it all.
    sessionTree->setVisible(sessionTree->topLevelItemCount() > 0);
    const std::string status = status_text(m_mathsDB.get_remaining_exercises());
    sessionStatus->setText(QString::fromStdString(status));
    const QSize text =
        sessionStatus->fontMetrics().boundingRect(QRect(), Qt::AlignLeft, sessionStatus->text()).size();
    sessionStatus->setFixedSize(text + QSize(50, 50));
    handle_resize();
}

void MathsMainQt::add_row(const Go& go, const Exercise& exercise)
{
    auto* item = new QTreeWidgetItem(sessionTree);
    item->setText(1, QString::fromStdString(exercise.get_name()));
    const TVDuration duration = go.get_duration();
    const TVDuration best = m_mathsDB.get_best_time(exercise.get_id(), -1);
    item->setText(2, QString::fromStdString(seconds_text(duration)));
    item->setText(3, QString::fromStdString(seconds_text(best)));
    item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    item->setTextAlignment(3, Qt::AlignRight | Qt::AlignVCenter);
    item->setBackground(1, Qt::transparent);
    item->setBackground(3, Qt::transparent);
    // The run that holds the record lights up.
    const bool record = duration.get_as_dseconds() > 0.0 && !(duration < best) && !(best < duration);
    item->setBackground(2, record ? QBrush(QColor::fromRgba64(0xffff, 0xffff, 0, 0x8080))
                                  : QBrush(Qt::transparent));
    const int id = go.get_id();
    item->setData(0, Qt::UserRole, id);
    if (m_selection.is_marked(id, -1, -1))
        item->setSelected(true);

    auto* button = new QPushButton(go.is_complete() ? "Again" : "Go");
    button->setMaximumWidth(C_GoButtonWidth);
    button->setMinimumWidth(C_GoButtonWidth);
    button->setFont(sessionTree->font());
    button->setStyleSheet(go.is_complete() ? C_AgainStyle : C_GoStyle);
    button->setCursor(Qt::PointingHandCursor);
    button->setProperty("Go", id);
    connect(button, SIGNAL(clicked()), this, SLOT(go_exercise()));
    sessionTree->setItemWidget(item, 0, button);
    // Rows as tall as a comfortable button.
    item->setSizeHint(0, QSize(C_GoButtonWidth, C_RowHeight));

    const int height = std::max(sessionTree->visualItemRect(item).height(),
                                button->sizeHint().height());
    m_listHeight += height + 1;
    if (sessionTree->topLevelItemCount() == 1)
        m_listHeight += height + 1;
}

void MathsMainQt::handle_resize()
{
    sessionTree->setColumnWidth(0, 100);
    for (int column = 0; column < 4; ++column)
        sessionTree->resizeColumnToContents(column);
    // The button column never narrows below the button.
    sessionTree->setColumnWidth(0, std::max(sessionTree->columnWidth(0), C_GoButtonWidth + 10));
    const int height = std::clamp(m_listHeight, C_MinListHeight, C_MaxListHeight);
    sessionTree->setFixedHeight(height + 2);
    int width = 5;
    for (int column = 0; column < 4; ++column)
        width += sessionTree->columnWidth(column);
    sessionTree->setFixedWidth(width);
}

QPushButton* MathsMainQt::row_button(int row) const
{
    QTreeWidgetItem* item = sessionTree->topLevelItem(row);
    return item != nullptr ? qobject_cast<QPushButton*>(sessionTree->itemWidget(item, 0)) : nullptr;
}

void MathsMainQt::resizeEvent(QResizeEvent* event)
{
    TVDBManagerQt::resizeEvent(event);
    place_panels();
    handle_resize();
}

bool MathsMainQt::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == centralwidget && event->type() == QEvent::Resize)
        place_panels();
    return TVDBManagerQt::eventFilter(watched, event);
}

void MathsMainQt::place_panels()
{
    const QRect area = centralwidget->rect();
    m_viewer->get_view()->setGeometry(area);
    mainWidget->setGeometry(area);
    if (!m_viewer->get_path().empty())
        m_viewer->fill_view();
}

void MathsMainQt::on_sessionTree_itemSelectionChanged()
{
    m_selection.clear();
    for (const QTreeWidgetItem* item : sessionTree->selectedItems())
        m_selection.add(item->data(0, Qt::UserRole).toInt(), -1, -1);
}

// ---- Runs -------------------------------------------------------------------------

void MathsMainQt::go_exercise()
{
    const QObject* button = sender();
    if (button == nullptr)
        return;
    const int id = button->property("Go").toInt();
    stopped(call([&] { return start_exercise(id); }));
}

int MathsMainQt::start_exercise(int goId)
{
    try {
        const Go* go = m_mathsDB.get_go_id(goId);
        if (go == nullptr)
            return tverror(TVErrC_Assert, TVLOCATION, "Assertion Failed: go != nullptr");
        int id = goId;
        if (go->is_complete()) {
            // "Again": a new run, and the finished row stays as it is.
            TV_PASS_ON(m_mathsDB.add_go(go->get_exercise(), id));
            display_session();
        }
        QWidget* window = nullptr;
        TV_PASS_ON(MathsWindows::open_run(m_mathsDB, id, this, window));
        follow_dialog(window);
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void MathsMainQt::follow_dialog(QWidget* dialog)
{
    if (auto* window = qobject_cast<TVDialogQt*>(dialog))
        connect(window, &TVDialogQt::sig_closed, this, &MathsMainQt::update_needed,
                Qt::UniqueConnection);
}

void MathsMainQt::exercise_finished()
{
    // The session is done: put the program away until the next reminder.
    if (!is_mobile())
        setWindowState(Qt::WindowMinimized);
    const int result = call([&] {
        TV_PASS_ON(m_mathsDB.start());
        return on_db_changed();
    });
    stopped(result);
}

void MathsMainQt::set_exercises()
{
    QWidget* window = nullptr;
    if (stopped(call([&] { return MathsWindows::open_exercise_list(m_mathsDB, this, window); })))
        return;
    // The list doesn't wait: the session catches up once it closes.
    if (auto* list = qobject_cast<TVDialogQt*>(window))
        connect(list, &TVDialogQt::sig_closed, this, &MathsMainQt::exercises_set,
                Qt::UniqueConnection);
}

void MathsMainQt::exercises_set()
{
    if (stopped(call([&] { return m_mathsDB.recalculate(TVDatabase::E_RecalcAll); })))
        return;
    update_display();
    std::string image;
    if (stopped(call([&] { return m_mathsDB.get_current_image(image); })))
        return;
    stopped(call([&] { return display_image(image); }));
}

// ---- Reminders --------------------------------------------------------------------

int MathsMainQt::generate_notify(TVNotifyList& list)
{
    for (const TVNotifyItem& item : reminder_notifications(m_mathsDB))
        list.add(item);
    return TVErrC_ok;
}

std::vector<TVNotifyItem> MathsMainQt::reminder_notifications(const MathsDB& db)
{
    std::vector<TVNotifyItem> items;
    const TVId id(C_NotifySession, -1, -1);
    for (const MathsDB::Reminder& reminder : db.due_reminders()) {
        const std::string text = "Reminder: " + reminder.m_time.to_string("%t") + " Maths Session";
        const TVDate schedule = reminder.m_late ? TVDate(TVDate::E_DateBlank) : reminder.m_time;
        items.emplace_back(text, id, C_NotifySession, C_NotifyPriority, schedule);
    }
    return items;
}

int MathsMainQt::select_notify(const TVIdList&)
{
    try {
        // A reminder after the session was done starts the next one.
        if (m_mathsDB.get_remaining_exercises() == 0) {
            if (Session* session = m_mathsDB.current_session())
                session->set_complete(true);
            TV_PASS_ON(m_mathsDB.start());
            update_display();
        }
        notifyBar->clear_selection();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void MathsMainQt::notify_selected(const TVIdList& ids)
{
    stopped(call([&] { return select_notify(ids); }));
}

// ---- The picture ------------------------------------------------------------------

int MathsMainQt::display_image(const std::string& path)
{
    if (path.empty())
        return TVErrC_ok;
    TV_PASS_ON(m_viewer->load_image(path));
    zoom_out_all();
    // Scaled by the larger ratio over the smaller, the fitted picture
    // covers the view: no bare edge shows.
    const QSize image = m_viewer->get_image_size();
    const QSize view = m_viewer->get_view()->viewport()->size();
    if (!image.isEmpty() && !view.isEmpty()) {
        const double rx = double(image.width()) / view.width();
        const double ry = double(image.height()) / view.height();
        m_viewer->get_scene().zoom(std::max(rx, ry) / std::min(rx, ry));
    }
    return TVErrC_ok;
}

void MathsMainQt::zoom_in()
{
    m_viewer->get_scene().zoom(TVGraphicsSceneQt::C_ZoomIn);
}

void MathsMainQt::zoom_out()
{
    m_viewer->get_scene().zoom(TVGraphicsSceneQt::C_ZoomOut);
}

void MathsMainQt::zoom_out_all()
{
    m_viewer->zoom_out_all();
}

void MathsMainQt::timer_expired()
{
    QGraphicsView* view = m_viewer->get_view();
    view->setResizeAnchor(QGraphicsView::AnchorViewCenter);
    view->setDragMode(QGraphicsView::ScrollHandDrag);
}

void MathsMainQt::update_needed()
{
    std::string image;
    if (stopped(call([&] { return m_mathsDB.get_current_image(image); })))
        return;
    if (stopped(call([&] { return display_image(image); })))
        return;
    update_display();
}

// ---- Utility page and settings ----------------------------------------------------

void MathsMainQt::app_menu_pressed()
{
    TVAppPageQt::start(this, TVSlotQt(this, SLOT(preferences_selected())));
}

void MathsMainQt::about_selected()
{
    TVAppPageQt::start(this, TVSlotQt(this, SLOT(preferences_selected())))->about_pressed();
}

void MathsMainQt::manual_selected()
{
    TVHelpQt::show_manual(this);
}

void MathsMainQt::preferences_selected()
{
    auto* settings = new TVSettingsQt(this);
    settings->add_form(new TVNotifySettingsQt(get_notify()), C_WarningIcon);
    if (!is_mobile())
        settings->add_form(new TVLocaleQt(), C_ClockIcon);
    add_settings_forms(*settings);
    settings->add_form(MathsWindows::make_preferences(m_mathsDB), C_ProgramIcon);
    settings->set_manual("Preferences.html", "");
    // A new picture folder shows at once.
    connect(settings, &TVSettingsQt::settings_changed, this, &MathsMainQt::update_needed);
    settings->start();
}

// ---- File commands ----------------------------------------------------------------

void MathsMainQt::new_selected()
{
    const std::string& ext = tvapplication()->get_extension();
    stopped(call([&] { return user_create("New Maths File", "*" + ext, "maths" + ext, false); }));
}

void MathsMainQt::open_selected()
{
    const std::string& ext = tvapplication()->get_extension();
    stopped(call([&] { return user_open("Open Maths File", "*" + ext, false); }));
}

void MathsMainQt::import_selected()
{
    const std::string& ext = tvapplication()->get_extension();
    stopped(call([&] { return user_import("Maths File to import", "*" + ext, true, true); }));
}

void MathsMainQt::save_selected()
{
    stopped(call([&] { return user_save(); }));
}

void MathsMainQt::saveas_selected()
{
    stopped(call([&] { return user_save_as(); }));
}

void MathsMainQt::export_selected()
{
    const std::string& ext = tvapplication()->get_extension();
    stopped(call([&] { return user_export("Export Maths File", "*" + ext); }));
}

void MathsMainQt::recent_seleted()
{
    const auto* action = qobject_cast<const QAction*>(sender());
    if (action == nullptr)
        return;
    const std::string file = action->data().toString().toStdString();
    // Through the open command, so the file open now is closed first.
    if (file != m_mathsDB.get_filename())
        file_open_selected(file);
}

void MathsMainQt::undo_selected()
{
    if (!m_mathsDB.is_loaded() || !m_mathsDB.can_undo())
        return;
    if (stopped(call([&] { return m_mathsDB.undo(); })))
        return;
    update_display();
}

void MathsMainQt::redo_selected()
{
    if (!m_mathsDB.is_loaded() || !m_mathsDB.can_redo())
        return;
    if (stopped(call([&] { return m_mathsDB.redo(); })))
        return;
    update_display();
}

std::string MathsMainQt::paste_buffer_file()
{
    return tvapplication()->get_scratch_dir() + "/" + C_PasteBuffer +
           tvapplication()->get_extension();
}

int MathsMainQt::export_paste_buffer(const std::string& file)
{
    try {
        return m_mathsDB.export_db(file, nullptr, false, std::string());
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int MathsMainQt::import_paste_buffer(const std::string& file)
{
    try {
        if (!tv_file_exists(file))
            return tvwarning(TVErrC_FileOpen, TVLOCATION,
                             "There is no exported maths data to import (%s).", file.c_str());
        TV_PASS_ON(m_mathsDB.import_db(file, nullptr));
        return on_db_changed();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool MathsMainQt::paste_buffer_available() const
{
    return tv_file_exists(paste_buffer_file());
}

void MathsMainQt::on_actionExportBuffer_triggered()
{
    if (stopped(call([&] { return export_paste_buffer(paste_buffer_file()); })))
        return;
    TVMessageBoxQt::information(
        "Export", "Export of database complete.\nYou can now load this data into another app", this);
}

void MathsMainQt::on_actionImportBuffer_triggered()
{
    if (stopped(call([&] { return import_paste_buffer(paste_buffer_file()); })))
        return;
    TVMessageBoxQt::information("Import", "Database import complete", this);
}

// ---- Closing ----------------------------------------------------------------------

void MathsMainQt::closeEvent(QCloseEvent* event)
{
    // The quit closes the window again once the file is shut.
    if (!m_mathsDB.is_loaded()) {
        TVDBManagerQt::closeEvent(event);
        return;
    }
    event->ignore();
    quit_selected();
}

void MathsMainQt::quit_selected()
{
    stopped(call([&] { return user_quit(false); }));
}

