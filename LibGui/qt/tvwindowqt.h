#ifndef TVWINDOWQT_H
#define TVWINDOWQT_H

// TVWindowQt: what every window of the toolkit shares. The statics keep a
// window's geometry, splitters, selected tabs and column widths as system
// values of TVParam, so they survive a restart. Keys start with the
// window's object name; a widget inside a window adds "." and its own
// object name: "MathsMainQt.width", "MathsMainQt.sessionList.columns".
//
// The store functions give TVErrC_ok, or the warning of TVParam when the
// value can't be kept (no user configuration file). Restoring a value that
// was never stored leaves the widget as it is. Main thread only.

#include <QPointer>
#include <string>

#include "LibGui/base/tvwindow.h"
#include "LibGui/qt/tvwidgetmgrqt.h"

class QAction;
class QComboBox;
class QSplitter;
class QTabWidget;
class QTableView;
class QTreeView;
class QWidget;
class TVDialogQt;
class TVIdString;
class TVMainWindowQt;

class TVWindowQt : public TVWindow
{
public:
    static const char* const C_KeyX;           // ".x"
    static const char* const C_KeyY;           // ".y"
    static const char* const C_KeyWidth;       // ".width"
    static const char* const C_KeyHeight;      // ".height"
    static const char* const C_KeyMax;         // ".max"
    static const char* const C_KeySplitter;    // ".splitter"
    static const char* const C_KeySelectedTab; // ".selectedTab"
    static const char* const C_KeyColumns;     // ".columns"

    TVWindowQt() = default;
    ~TVWindowQt() override = default;

    // A picture (file or resource path) stretched over the widget's
    // background; an empty path takes it away.
    static void set_background_image(QWidget* widget, const std::string& image);
    // A colour by name ("#2080ff", "white"); empty goes back to the style's.
    static void set_background_colour(QWidget* widget, const std::string& colour);
    // Text and background colours by name; an empty one is left alone.
    static void set_widget_theme(QWidget* widget, const std::string& foreground, const std::string& background);

    // The nearest enclosing window of that kind (the widget itself counts),
    // or null.
    static TVWindowQt* parent_window(QWidget* widget);
    static TVDialogQt* parent_dialog(QWidget* widget);
    static TVMainWindowQt* parent_main_window(QWidget* widget);

    // The key of a value of this widget: see the top of this file.
    static std::string widget_key(const QWidget& widget, const std::string& suffix);

    // Position, size and whether maximised. Restoring keeps the window on
    // the available screen: an edge that would put the window off it is
    // taken as 0, and the size is cut to the available size.
    [[nodiscard]] static int store_geometry(const QWidget& window);
    static void restore_geometry(QWidget& window);
    [[nodiscard]] static int store_splitter(const QSplitter& splitter);
    static void restore_splitter(QSplitter& splitter);
    [[nodiscard]] static int store_selected_tab(const QTabWidget& tabs);
    static void restore_selected_tab(QTabWidget& tabs);
    // Column widths of a tree or table (the widget kinds included).
    [[nodiscard]] static int store_columns(const QTreeView& tree);
    static void restore_columns(QTreeView& tree);
    [[nodiscard]] static int store_columns(const QTableView& table);
    static void restore_columns(QTableView& table);

    // Fills a combo box with the rows' texts, each row's id kept as item
    // data in its text form ("id/seq/group/"), and makes row select current
    // (none if it is outside the rows).
    static void load_combo(QComboBox* combo, const TVIdString& rows, int select);
    // The id of the current row of a combo filled by load_combo; empty if
    // none.
    static std::string combo_id(const QComboBox* combo);
    // Enables or disables; a non-empty tip says why (shown as the tool tip).
    static void set_action_enabled(QAction* action, bool enabled, const std::string& tip);
    static void disable_control(QWidget* widget, const std::string& reason);
    static void enable_control(QWidget* widget);

    // Dialogs of this window open inside the manager's host when one is set
    // (not owned; forgotten when it is destroyed).
    void set_widgetmgr(TVWidgetMgrQt* manager) { m_widgetMgr = manager; }
    TVWidgetMgrQt* get_widgetmgr() const { return m_widgetMgr.data(); }

    // Ends the event loop with value (the pending error's value if value is
    // negative), after clearing the error stack; returns the same number.
    int on_error(int value);

private:
    QPointer<TVWidgetMgrQt> m_widgetMgr;
};

#endif
