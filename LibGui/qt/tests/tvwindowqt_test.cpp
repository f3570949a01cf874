#include "LibGui/qt/tvwindowqt.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeWidget>

#include "LibCore/application/tvapplication.h"
#include "LibCore/ptrarray/tvidstring.h"
#include "LibGui/qt/tvdialogqt.h"
#include "LibGui/qt/tvmainwindowqt.h"
#include "TestSupport/tvparamtest.h"
#include "TestSupport/tvtestclock.h"

namespace {

// A user configuration file in a temporary folder, as the program has.
class WindowQtTest : public TVParamTest
{
protected:
    void SetUp() override
    {
        TVParamTest::SetUp();
        make_param({"x"});
        DrillVars vars;
        tvparam()->set_cmdline(drill_cmdline(vars));
        tvparam()->add_config_file(user_file());
        ASSERT_EQ(tvparam()->parse(nullptr), TVErrC_ok);
    }

    static std::string value(const std::string& key) { return tvparam()->get_system_value(key); }
    static void set(const std::string& key, const std::string& v)
    {
        ASSERT_EQ(tvparam()->set_system_value(key, v), TVErrC_ok);
    }
    static QRect available() { return QGuiApplication::primaryScreen()->availableGeometry(); }
};

class CountingWindow : public TVMainWindowQt
{
public:
    void update_display() override { ++m_updates; }
    int m_updates = 0;
};

} // namespace

TEST_F(WindowQtTest, GeometryRoundTripsUnderTheWindowName)
{
    QWidget window;
    window.setObjectName("MathsMainQt");
    window.resize(300, 200);
    window.move(30, 40);
    ASSERT_EQ(TVWindowQt::store_geometry(window), TVErrC_ok);
    EXPECT_EQ(value("MathsMainQt.x"), "30");
    EXPECT_EQ(value("MathsMainQt.y"), "40");
    EXPECT_EQ(value("MathsMainQt.width"), "300");
    EXPECT_EQ(value("MathsMainQt.height"), "200");
    EXPECT_EQ(value("MathsMainQt.max"), "0");

    QWidget again;
    again.setObjectName("MathsMainQt");
    TVWindowQt::restore_geometry(again);
    EXPECT_EQ(again.geometry(), QRect(30, 40, 300, 200));
}

TEST_F(WindowQtTest, RestoredGeometryIsClampedToTheAvailableScreen)
{
    const QRect screen = available();
    struct Row {
        const char* name;
        int x, y, w, h;
        QRect expected;
    } rows[] = {
        // Too wide and off to the right: left edge 0, width cut.
        {"wide", screen.width() / 2, 10, screen.width() * 2, 100, QRect(0, 10, screen.width(), 100)},
        // Fits in size but would hang off the bottom: top edge 0.
        {"low", 5, screen.height() - 50, 200, 100, QRect(5, 0, 200, 100)},
        // Negative edges from a display that was left of this one.
        {"left", -400, -20, 200, 100, QRect(0, 0, 200, 100)},
        // Exactly the available size stays.
        {"full", 0, 0, screen.width(), screen.height(), QRect(0, 0, screen.width(), screen.height())},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        set(std::string("W.x"), std::to_string(row.x));
        set("W.y", std::to_string(row.y));
        set("W.width", std::to_string(row.w));
        set("W.height", std::to_string(row.h));
        QWidget window;
        window.setObjectName("W");
        TVWindowQt::restore_geometry(window);
        EXPECT_EQ(window.geometry(), row.expected);
    }
}

TEST_F(WindowQtTest, MaximisedOrUnstoredGeometryLeavesTheSizeAlone)
{
    QWidget fresh;
    fresh.setObjectName("Never");
    fresh.resize(123, 45);
    TVWindowQt::restore_geometry(fresh);
    EXPECT_EQ(fresh.size(), QSize(123, 45));

    set("Big.max", "1");
    set("Big.width", "10");
    set("Big.height", "10");
    QWidget big;
    big.setObjectName("Big");
    big.resize(123, 45);
    TVWindowQt::restore_geometry(big);
    EXPECT_TRUE(big.windowState() & Qt::WindowMaximized);
    EXPECT_EQ(big.size(), QSize(123, 45));
}

TEST_F(WindowQtTest, SplitterTabAndColumnsRoundTripUnderWindowAndWidgetName)
{
    QWidget window;
    window.setObjectName("Prefs");
    auto* splitter = new QSplitter(&window);
    splitter->setObjectName("split");
    splitter->addWidget(new QWidget);
    splitter->addWidget(new QWidget);
    splitter->resize(300, 100);
    splitter->setSizes({120, 180});
    auto* tabs = new QTabWidget(&window);
    tabs->setObjectName("tabs");
    tabs->addTab(new QWidget, "a");
    tabs->addTab(new QWidget, "b");
    tabs->setCurrentIndex(1);
    auto* tree = new QTreeWidget(&window);
    tree->setObjectName("list");
    tree->setColumnCount(3);
    tree->header()->setStretchLastSection(false);
    tree->setColumnWidth(0, 50);
    tree->setColumnWidth(1, 70);
    tree->setColumnWidth(2, 90);

    const QList<int> sizes = splitter->sizes();
    ASSERT_EQ(TVWindowQt::store_splitter(*splitter), TVErrC_ok);
    ASSERT_EQ(TVWindowQt::store_selected_tab(*tabs), TVErrC_ok);
    ASSERT_EQ(TVWindowQt::store_columns(*tree), TVErrC_ok);
    EXPECT_EQ(value("Prefs.split.splitter"), std::to_string(sizes[0]) + "," + std::to_string(sizes[1]));
    EXPECT_EQ(value("Prefs.tabs.selectedTab"), "1");
    EXPECT_EQ(value("Prefs.list.columns"), "50,70,90");

    splitter->setSizes({200, 100});
    tabs->setCurrentIndex(0);
    tree->setColumnWidth(1, 10);
    TVWindowQt::restore_splitter(*splitter);
    TVWindowQt::restore_selected_tab(*tabs);
    TVWindowQt::restore_columns(*tree);
    EXPECT_EQ(splitter->sizes(), sizes);
    EXPECT_EQ(tabs->currentIndex(), 1);
    EXPECT_EQ(tree->columnWidth(1), 70);
}

TEST_F(WindowQtTest, StoringWithoutAUserFileWarns)
{
    TVParam::release();
    make_param({"x"});
    ASSERT_EQ(tvparam()->parse(nullptr), TVErrC_ok);
    QWidget window;
    window.setObjectName("W");
    EXPECT_TRUE(istvwarn(TVWindowQt::store_geometry(window)));
    get_tverror()->clear_all();
}

TEST(WindowQt, ComboCarriesTheIdsAndTheChosenRow)
{
    TVIdString rows;
    rows.add(TVId(3, 0, 0), "Times tables");
    rows.add(TVId(7, 1, 0), "Division");
    QComboBox combo;
    TVWindowQt::load_combo(&combo, rows, 1);
    ASSERT_EQ(combo.count(), 2);
    EXPECT_EQ(combo.currentText(), QString("Division"));
    EXPECT_EQ(TVWindowQt::combo_id(&combo), TVId(7, 1, 0).to_string());
    TVWindowQt::load_combo(&combo, rows, 5);
    EXPECT_EQ(combo.currentIndex(), -1);
    EXPECT_EQ(TVWindowQt::combo_id(&combo), "");
}

TEST(WindowQt, DisabledControlShowsWhyAndGetsItsTipBack)
{
    QWidget button;
    button.setToolTip("Start the run");
    TVWindowQt::disable_control(&button, "No exercise chosen");
    TVWindowQt::disable_control(&button, "Still no exercise");
    EXPECT_FALSE(button.isEnabled());
    EXPECT_EQ(button.toolTip(), QString("Still no exercise"));
    TVWindowQt::enable_control(&button);
    EXPECT_TRUE(button.isEnabled());
    EXPECT_EQ(button.toolTip(), QString("Start the run"));
}

TEST(WindowQt, ParentLookupsFindTheNearestWindowOfTheirKind)
{
    TVMainWindowQt main;
    auto* dialog = new TVDialogQt(&main);
    auto* inner = new QWidget(dialog);
    EXPECT_EQ(TVWindowQt::parent_dialog(inner), dialog);
    EXPECT_EQ(TVWindowQt::parent_window(inner), static_cast<TVWindowQt*>(dialog));
    EXPECT_EQ(TVWindowQt::parent_main_window(inner), &main);
    EXPECT_EQ(TVWindowQt::parent_dialog(&main), nullptr);
}

TEST(MainWindowQt, MarkedUpdatesRunOnceFromTheEventLoop)
{
    CountingWindow window;
    window.mark_update_display();
    window.mark_update_display();
    EXPECT_EQ(window.m_updates, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(window.m_updates, 1);

    window.mark_update_display();
    window.cancel_display();
    QCoreApplication::processEvents();
    EXPECT_EQ(window.m_updates, 1);
}

TEST(MainWindowQt, StatusBarShowsTheForegroundStatusOnceDue)
{
    TestClock clock(1700000000);
    TVApplication app;
    TVApplication::replace(&app, false);
    TVMainWindowQt window;
    app.push_status("Loading...", 0.0, true, 500000);
    window.app_status();
    EXPECT_EQ(window.statusBar()->currentMessage(), QString()); // short jobs never flicker
    clock.advance(1);
    window.app_status();
    EXPECT_EQ(window.statusBar()->currentMessage(), QString("Loading..."));
    app.pop_status("Loading...", true);
    window.app_status();
    EXPECT_EQ(window.statusBar()->currentMessage(), QString());
    TVApplication::replace(nullptr, false);
}

TEST(MainWindowQt, SlotFromANameCallsTheSlot)
{
    TVMainWindowQt window;
    window.setWindowTitle("before");
    const TVSlotQt slot = window.mkslot("close");
    EXPECT_EQ(slot.get_slot(), "1close()");
    EXPECT_EQ(slot.name(), "close");
    window.show();
    EXPECT_TRUE(slot.invoke());
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(window.mkslot("no_such_slot").invoke());
}
