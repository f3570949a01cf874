#ifndef TVNOTIFYDIALOGQT_H
#define TVNOTIFYDIALOGQT_H

// TVNotifyDialogQt: the alert for notifications whose scheme asks for one.
// It holds the alerts not yet dismissed and shows the oldest
// (messageLabel, with "n of m" in countLabel). Close dismisses that one,
// Close All every one, Go dismisses it and asks the window to show what it
// is about (go_pressed), Options asks for the notification settings. The
// dialog hides when nothing is left and comes back with the next alert.

#include <QPointer>
#include <vector>

#include "LibGui/base/tvnotifyitem.h"
#include "LibGui/qt/tvdialogqt.h"

class QLabel;
class QPushButton;

class TVNotifyDialogQt : public TVDialogQt
{
    Q_OBJECT

public:
    explicit TVNotifyDialogQt(QWidget* parent = nullptr);
    ~TVNotifyDialogQt() override;

    // An equal item already held is not added twice.
    void add(const TVNotifyItem& item);
    void remove(const TVNotifyItem& item);
    // Shows the oldest alert, or hides when there is none.
    void update_state();
    // Dismisses the alert shown.
    void close_single();
    // The window raised by Go.
    void set_mainwindow(QWidget* window) { m_mainWindow = window; }

    int get_nitems() const { return static_cast<int>(m_items.size()); }
    const TVNotifyItem& get_item(int index) const { return m_items[static_cast<size_t>(index)]; }

signals:
    void go_pressed(const TVId& id);
    void options_pressed();

public slots:
    void close_all();
    void go();
    // Escape or the window's close button dismisses every alert.
    void reject() override;

private:
    std::vector<TVNotifyItem> m_items;
    QPointer<QWidget> m_mainWindow;
    QLabel* m_message;
    QLabel* m_count;
};

#endif // TVNOTIFYDIALOGQT_H
