#ifndef TVGUIDEQT_H
#define TVGUIDEQT_H

// TVGuideQt: a pane that shows one of the program's HTML pages, such as the
// welcome text of an empty window or a list's guide, and the page browser
// of the help window.
//
// Pages are named by file ("TarvelloMaths.html") and looked up in the help
// folders of the resources, in order: those added by add_help_path, then
// ":/" + the application's name + "Help", then ":/LibGuiHelp". A name
// that is already a resource path (":/..." or "qrc:/...") is taken as it
// stands. Links to other pages follow inside the pane; links with a
// scheme of their own (http, mailto) go to the system.

#include <QTextBrowser>
#include <QUrl>
#include <string>
#include <vector>

class TVGuideQt : public QTextBrowser
{
    Q_OBJECT

public:
    explicit TVGuideQt(QWidget* parent = nullptr);

    // Shows page; false, with a short notice in the pane, if no help folder
    // holds it.
    bool set_page(const std::string& page);
    // The page shown ("" before any).
    const std::string& get_page() const { return m_page; }

    // The page's resource URL ("qrc:/TarvelloMathsHelp/Running.html"), or
    // an empty URL if it can't be found.
    static QUrl page_url(const std::string& page);
    // A folder to search before the standard ones (":/MyHelp").
    static void add_help_path(const std::string& folder);
    static std::vector<std::string> help_paths();

    QVariant loadResource(int type, const QUrl& name) override;

private slots:
    void link_clicked(const QUrl& url);

private:
    std::string m_page;
};

#endif // TVGUIDEQT_H
