#ifndef TVWIDGETMGRQT_H
#define TVWIDGETMGRQT_H

// TVWidgetMgrQt: opens dialogs inside a host widget instead of as windows
// of their own. Each dialog gets a frame; the frames fill the host in up to
// get_maxcolumns() columns (2 on the desktop), in the order they opened,
// and close up when one goes. The host's layout belongs to the manager:
// give it an empty widget.
//
// The manager owns neither the host nor the dialogs. A dialog is moved
// into its frame while open and given back to its own parent when it
// closes, so whoever owned it still does.

#include <QObject>
#include <QPointer>
#include <vector>

class QFrame;
class QGridLayout;
class QWidget;
class TVDialogQt;

class TVWidgetMgrQt : public QObject
{
    Q_OBJECT

public:
    explicit TVWidgetMgrQt(QWidget* host, QObject* parent = nullptr);
    ~TVWidgetMgrQt() override;
    TVWidgetMgrQt(const TVWidgetMgrQt&) = delete;
    TVWidgetMgrQt& operator=(const TVWidgetMgrQt&) = delete;

    QWidget* get_host() const { return m_host; }

    // Embeds and shows; open_complete follows.
    void show_dialog(TVDialogQt& dialog);
    // Puts the dialog in a frame, first or last, and shows it if show.
    // A dialog already embedded stays where it is.
    void embed(TVDialogQt& dialog, bool atFront, bool show);
    // Embeds, shows and waits (in a local event loop) until the dialog
    // closes; gives its result.
    int exec_dialog(TVDialogQt& dialog);
    // The frame for a dialog, without showing or arranging.
    void embed_dialog(TVDialogQt& dialog, bool atFront);
    // A dialog begins to close: it no longer takes a place when arranging.
    void start_closing(TVDialogQt& dialog);
    // A dialog has closed: its frame goes and the rest close up.
    void dialog_closed(TVDialogQt& dialog);
    // Lays the frames out again. animate is for systems that slide; the
    // desktop places them at once.
    void rearrange(bool animate);
    void open_finished(TVDialogQt& dialog);
    // Ends every open dialog as cancelled.
    void close_all();

    int count() const { return static_cast<int>(m_entries.size()); }
    bool contains(const TVDialogQt& dialog) const;
    // The dialogs in their order on the screen.
    std::vector<TVDialogQt*> dialogs() const;
    // The frame holding a dialog, or null.
    QFrame* frame_of(const TVDialogQt& dialog) const;
    int get_maxcolumns() const { return m_maxColumns; }
    // At least 1.
    void set_maxcolumns(int columns);

    // A dialog being destroyed while embedded.
    void forget(TVDialogQt& dialog);

private:
    struct Entry {
        TVDialogQt* dialog = nullptr;
        QFrame* frame = nullptr;
        QPointer<QWidget> owner; // the dialog's parent before it came in
        Qt::WindowFlags flags;
        bool closing = false;
    };
    std::vector<Entry>::iterator find(const TVDialogQt& dialog);
    std::vector<Entry>::const_iterator find(const TVDialogQt& dialog) const;
    void release(Entry& entry, bool giveBack);

    QPointer<QWidget> m_host;
    QPointer<QGridLayout> m_layout; // the host's, gone with it
    std::vector<Entry> m_entries;
    int m_maxColumns;
};

#endif
