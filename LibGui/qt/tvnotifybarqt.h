#ifndef TVNOTIFYBARQT_H
#define TVNOTIFYBARQT_H

// TVNotifyBarQt: the strip across a window that shows the notification
// state: an icon (warningIcon), the first message with "And N more
// warnings." (notificationMessage), a button that opens the full list
// below (expandButton, the list being notifyTree) and one that puts the
// strip away until the state changes (closeButton). The strip is hidden
// while there is nothing to show.
//
// Give get_tree() to TVNotifyListQt::initialise and the list to
// set_notify_list. Clicking the message, or choosing a row of the list,
// emits sig_selected with the object ids; the window acts on them and
// calls clear_selection.

#include <QFrame>
#include <QPointer>
#include <string>

#include "LibObject/core/tvidlist.h"

class QLabel;
class QToolButton;
class TVNotifyListQt;
class TVTreeWidgetQt;

class TVNotifyBarQt : public QFrame
{
    Q_OBJECT

public:
    explicit TVNotifyBarQt(QWidget* parent = nullptr);
    ~TVNotifyBarQt() override;

    TVTreeWidgetQt* get_tree() const { return m_tree; }
    // Not owned; the bar follows the list's updated() signal.
    void set_notify_list(TVNotifyListQt* list);
    // Shows the list's state, or hides the strip.
    void update_display();
    void clear_selection();
    bool is_expanded() const;
    const QLabel* get_message() const { return m_message; }

signals:
    void sig_selected(const TVIdList& ids);

public slots:
    void expand_pressed();
    void close_pressed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void item_selected(const TVId& id);

private:
    void set_icon(const std::string& path);
    QPointer<TVNotifyListQt> m_list;
    QLabel* m_icon;
    QLabel* m_message;
    QToolButton* m_expand;
    QToolButton* m_close;
    TVTreeWidgetQt* m_tree;
    // The text put away by the close button; it stays away until it changes.
    std::string m_dismissed;
};

#endif // TVNOTIFYBARQT_H
