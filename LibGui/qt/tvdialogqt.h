#ifndef TVDIALOGQT_H
#define TVDIALOGQT_H

// TVDialogQt: base of the program's dialogs. A dialog opens as its own
// window, or inside its window's TVWidgetMgrQt host when the window has
// one (set_widgetmgr). Either way it ends through dialog_done, which keeps
// the result, closes once (later calls are ignored) and, with
// set_delete_close, deletes the dialog from the event loop.
//
// The slide animation of mobile systems is not used on the desktop, so an
// embedded dialog closes at once.

#include <QDialog>
#include <string>

#include "LibGui/qt/tvwindowqt.h"

class TVDialogQt : public QDialog, public TVWindowQt
{
    Q_OBJECT

public:
    explicit TVDialogQt(QWidget* parent = nullptr);
    ~TVDialogQt() override;
    TVDialogQt(const TVDialogQt&) = delete;
    TVDialogQt& operator=(const TVDialogQt&) = delete;

    // Shows without waiting: in the manager's host if there is one,
    // otherwise as a window at its stored geometry. Calls open_complete.
    virtual void show_dialog();
    // Called once the dialog is on the screen; the base does nothing.
    virtual void open_complete();
    // Shows and waits for the dialog to end; gives its result.
    virtual int exec_dialog();
    virtual void hide_dialog();
    // Ends the dialog as cancelled.
    virtual void close_dialog();
    // Ends the dialog with result. Top-level: done() at once. Embedded:
    // the manager is told first (start_closing, closed_dialog), then done().
    // immediate skips an animation where there is one.
    virtual void dialog_done(int result, bool immediate);

    // The display and its data. read_display(true) takes the fields into
    // the data; false only checks them. validate_display says whether the
    // fields may be taken; accept() does nothing while it says no.
    virtual void update_display();
    virtual void mark_update_display();
    virtual bool validate_display();
    virtual int read_display(bool store);
    virtual void cancel_display();
    virtual void update_all_display();
    virtual void do_window_update();

    // Brings the dialog to the front, now or after delayMs milliseconds.
    void raise_window(int delayMs);
    // A style sheet for the dialog and all inside it.
    void set_window_theme(const std::string& styleSheet);
    void set_delete_close(bool on) { m_deleteClose = on; }
    bool get_delete_close() const { return m_deleteClose; }
    void set_restore_geom(bool on) { m_restoreGeom = on; }
    bool get_restore_geom() const { return m_restoreGeom; }
    QWidget* get_widget() { return this; }

    bool is_closing() const { return m_closing; }
    bool is_embedded() const;
    int get_result() const { return m_result; }

public slots:
    void accept() override;
    void reject() override;

signals:
    // After the dialog has closed, with its result.
    void sig_closed(int result);

protected:
    void start_closing();
    void closed_dialog();
    void finished_closing();

private slots:
    void window_update_due();

private:
    int m_result = QDialog::Rejected;
    bool m_closing = false;
    bool m_deleteClose = false;
    bool m_restoreGeom = true;
    bool m_updateMarked = false;
    bool m_updateArmed = false;
};

#endif
