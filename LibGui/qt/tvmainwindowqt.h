#ifndef TVMAINWINDOWQT_H
#define TVMAINWINDOWQT_H

// TVMainWindowQt: base of the program's main windows. A change that should
// show is marked (mark_update_display) and drawn once, from the event loop
// (do_window_update), however many changes came before.

#include <QMainWindow>
#include <string>

#include "LibCore/ptrarray/tvtagvalue.h"
#include "LibGui/qt/tvslotqt.h"
#include "LibGui/qt/tvwindowqt.h"

class TVMainWindowQt : public QMainWindow, public TVWindowQt
{
    Q_OBJECT

public:
    explicit TVMainWindowQt(QWidget* parent = nullptr);
    ~TVMainWindowQt() override;
    TVMainWindowQt(const TVMainWindowQt&) = delete;
    TVMainWindowQt& operator=(const TVMainWindowQt&) = delete;

    // Restores the stored geometry, then shows.
    virtual void show_dialog();
    // Puts the data on the screen; the base does nothing.
    virtual void update_display();
    // Asks for update_display from the event loop; repeated marks before
    // it runs give one update.
    virtual void mark_update_display();
    // Drops a marked update that hasn't run.
    virtual void cancel_display();
    // update_display of this window and of every dialog it owns.
    virtual void update_all_display();
    // Runs a marked update now.
    virtual void do_window_update();

    bool is_update_marked() const { return m_updateMarked; }

    // Shows the application's foreground status in the status bar (empty
    // clears it). The application calls this on every window it lists
    // whenever its status stack changes.
    virtual void app_status();

    // URLs of the program's scheme, as the application splits them. It
    // hands one to its primary window only once that window takes URLs
    // (a database window: once its file is in); the base takes none.
    virtual bool takes_url() const { return false; }
    virtual void url_called(const std::string& command, const std::string& argument, const TVTagValue& query);

    // A slot of this window by its name ("load_done"), or its full
    // signature ("load_done(std::string)"); a bare name means no arguments.
    TVSlotQt mkslot(const std::string& name);

protected:
    // Keeps the geometry for the next start, if there is a user file.
    void closeEvent(QCloseEvent* event) override;

private slots:
    void window_update_due();

private:
    bool m_updateMarked = false;
    bool m_updateArmed = false;
};

#endif
