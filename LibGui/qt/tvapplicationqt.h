#ifndef TVAPPLICATIONQT_H
#define TVAPPLICATIONQT_H

#include <QObject>
#include <QUrl>
#include <string>
#include <vector>

#include "LibCore/application/tvapplication.h"
#include "LibCore/ptrarray/tvtagvalue.h"
#include "LibGui/qt/tvqtapp.h"

class TVMainWindowQt;

// The application object of a program with windows: it runs the start-up
// inside the event loop (so the toolkit is alive and a file-open event
// delivered at start is seen first) and keeps URLs that arrive before any
// file is loaded.
class TVApplicationQt : public QObject, public TVApplication
{
    Q_OBJECT

public:
    // Delay before the start-up runs inside the event loop.
    static const int C_StartDelayMs = 100;

    // app is the program's TVQtApp, which then hands us the files the
    // system opens; a plain QApplication (a test's) does without them.
    TVApplicationQt(int argc, char** argv, const TVAppIdentity& identity, QApplication& app);
    ~TVApplicationQt() override;

    // Arms the start-up and runs the event loop; returns TVErrC_ok or the
    // pending error's value.
    int start() override;
    int setup_error() override;
    // Both show the new foreground status in every listed window.
    void push_status(const std::string& text, double percentage, bool foreground, int delayMicroseconds) override;
    void pop_status(const std::string& text, bool foreground) override;

    // The program's main windows. A listed window belongs to the
    // application, which destroys those still listed when it goes; a
    // window destroyed earlier takes itself off the list.
    void add_window(TVMainWindowQt* window);
    void remove_window(TVMainWindowQt* window);
    int window_count() const { return static_cast<int>(m_windows.size()); }
    TVMainWindowQt* get_window(int index) const;

    // The number of notifications that want the user, for the program's
    // icon. The desktop systems we build for have no badge, so it is only
    // kept, for a window that wants to show it.
    virtual void display_badge_count(int count);
    int get_badge_count() const { return m_badgeCount; }

    // A file the system asked us to open.
    virtual int load_file(const std::string& file) = 0;

    // URLs of the program's scheme ("scheme://command/argument?tag=value").
    void setup_url_handler(const std::string& scheme);
    // Whether a URL is waiting for the database to load.
    const std::string& pending_url() const { return m_url; }
    void handle_pending_url();
    // Splits a percent-decoded URL into its command (behind "://" up to the
    // next "/", or failing that "?"), the argument and the query items.
    static void split_url(const QUrl& url, std::string& command, std::string& argument, TVTagValue& query);

    // Null over a plain QApplication.
    TVQtApp* qt_app() { return m_app; }

public slots:
    void app_started();
    void url_scheme(const QUrl& url);

protected:
    // Whether the primary window takes a URL now. Without windows every
    // URL waits.
    virtual bool can_take_url() const;
    // Hands a URL's parts to the primary window.
    virtual void url_called(const std::string& command, const std::string& argument, const TVTagValue& query);

private:
    TVQtApp* m_app;
    std::string m_url;
    std::vector<TVMainWindowQt*> m_windows;
    int m_badgeCount = 0;
};

TVApplicationQt* tvapplicationqt();
bool has_tvapplicationqt();

#endif
