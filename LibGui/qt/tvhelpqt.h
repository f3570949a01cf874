#ifndef TVHELPQT_H
#define TVHELPQT_H

// TVHelpQt: the user manual's window. It shows the program's HTML pages
// from the resources (see TVGuideQt for where pages are looked up), with
// the hint of the window the help was asked from above the page.
//
// One help window at a time: asking again brings the open one to the page.
// It deletes itself when closed.

#include <QPointer>
#include <string>

#include "LibGui/qt/tvdialogqt.h"

class QLabel;
class QPushButton;
class TVGuideQt;

class TVHelpQt : public TVDialogQt
{
    Q_OBJECT

public:
    explicit TVHelpQt(QWidget* parent = nullptr);
    ~TVHelpQt() override;

    // Shows page, with summary as the hint (none if empty), in the open
    // help window or a new one. Never null.
    static TVHelpQt* show_help(const std::string& page, const std::string& summary, QWidget* parent);
    // The manual page of the window around widget (set_manual), or, if it
    // has none, the application's own page (its name + ".html").
    static TVHelpQt* show_manual(QWidget* widget);
    // The open help window, or null.
    static TVHelpQt* current();

    bool set_page(const std::string& page, const std::string& summary);
    TVGuideQt* get_browser() const { return m_browser; }

private:
    TVGuideQt* m_browser;
    QLabel* m_summary;
    QPushButton* m_back;

    static QPointer<TVHelpQt> s_current;
};

#endif // TVHELPQT_H
