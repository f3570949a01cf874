#ifndef TVNOTIFYLISTQT_H
#define TVNOTIFYLISTQT_H

// TVNotifyListQt: the notification list on the screen. update() hands what
// changed on: new items whose scheme asks for an alert go to the
// notification dialog, those whose scheme pops up go to the system tray;
// removed items leave the dialog. The tree (if given) lists every item
// whose scheme may be listed, the tray icon shows while there are items,
// and the application shows the badge count.
//
// Typical use by a window's periodic update:
//     list.reset(); list.add(...) for each reason; list.update();
//
// The tree and the window are not owned and must outlive the list or be
// given again. Main thread only.

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QSystemTrayIcon>

#include "LibGui/base/tvnotifylist.h"
#include "LibGui/qt/tvnotifydialogqt.h"
#include "LibObject/core/tvidlist.h"

class QMainWindow;
class TVTreeWidgetQt;

class TVNotifyListQt : public QObject, public TVNotifyList
{
    Q_OBJECT

public:
    // Tells the schemes whether the tray here can show messages.
    explicit TVNotifyListQt(QObject* parent = nullptr);
    ~TVNotifyListQt() override;

    // The tree to list items in (may be null), the window that the tray
    // and dialog belong to; then the settings are read, so add the schemes
    // first.
    [[nodiscard]] int initialise(TVTreeWidgetQt* tree, QMainWindow* window);
    void update() override;
    void update_tree();
    // A message in the tray for an item whose scheme pops up and whose time
    // has come; nothing without a tray or with the tray turned off.
    void report_system_tray(const TVNotifyItem& item);
    void clear_system_tray();
    // Selects the rows of these object ids in the tree, without signals.
    void set_selected(const TVIdList& ids);

    bool systray_available() const override;
    // The badge count last shown (-1 before the first update).
    int get_shown_badge() const { return m_shownBadge; }
    // Null until an item has asked for an alert.
    TVNotifyDialogQt* get_dialog() const { return m_dialog; }
    QSystemTrayIcon* get_tray() const { return m_tray; }

signals:
    void item_selected(const TVId& id);
    void item_context(const TVId& id, const QPoint& globalPos);
    // The dialog's Options button: the window opens the notification settings.
    void options_requested();
    void updated();

private slots:
    void tree_selection_changed();
    void tree_context_menu(const QPoint& pos);
    void tray_activated(QSystemTrayIcon::ActivationReason reason);

private:
    TVNotifyDialogQt* dialog();
    void update_tray();

    QPointer<TVTreeWidgetQt> m_tree;
    QPointer<QMainWindow> m_window;
    QPointer<TVNotifyDialogQt> m_dialog;
    QSystemTrayIcon* m_tray = nullptr;
    int m_shownBadge = -1;
};

#endif // TVNOTIFYLISTQT_H
