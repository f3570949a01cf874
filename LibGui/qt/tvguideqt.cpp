#include "LibGui/qt/tvguideqt.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

#include "LibCore/application/tvapplication.h"

namespace {

std::vector<std::string>& extra_paths()
{
    static std::vector<std::string> paths;
    return paths;
}

// ":/a/b.png" for both "qrc:/a/b.png" and ":/a/b.png"; "" for anything else.
QString resource_path(const QString& name)
{
    if (name.startsWith(QLatin1String(":/")))
        return name;
    if (name.startsWith(QLatin1String("qrc:/")))
        return name.mid(3);
    return QString();
}

} // namespace

TVGuideQt::TVGuideQt(QWidget* parent) : QTextBrowser(parent)
{
    setOpenLinks(false);
    connect(this, &QTextBrowser::anchorClicked, this, &TVGuideQt::link_clicked);
}

void TVGuideQt::add_help_path(const std::string& folder)
{
    std::vector<std::string>& paths = extra_paths();
    if (std::find(paths.begin(), paths.end(), folder) == paths.end())
        paths.push_back(folder);
}

std::vector<std::string> TVGuideQt::help_paths()
{
    std::vector<std::string> paths = extra_paths();
    const std::string& application = tvapplication()->get_application();
    if (!application.empty())
        paths.push_back(":/" + application + "Help");
    paths.push_back(":/LibGuiHelp");
    return paths;
}

QUrl TVGuideQt::page_url(const std::string& page)
{
    if (page.empty())
        return QUrl();
    const QString direct = resource_path(QString::fromStdString(page));
    if (!direct.isEmpty())
        return QFileInfo::exists(direct) ? QUrl("qrc" + direct) : QUrl();
    for (const std::string& folder : help_paths()) {
        const QString path = QString::fromStdString(folder + "/" + page);
        if (QFileInfo::exists(path))
            return QUrl("qrc" + path);
    }
    return QUrl();
}

bool TVGuideQt::set_page(const std::string& page)
{
    m_page = page;
    const QUrl url = page_url(page);
    if (url.isEmpty()) {
        setHtml(QString("<p>The page <b>%1</b> is not in this version's help.</p>")
                    .arg(QString::fromStdString(page).toHtmlEscaped()));
        return false;
    }
    setSource(url);
    return true;
}

QVariant TVGuideQt::loadResource(int type, const QUrl& name)
{
    // Pages name their pictures as resources (":/...") as well as relative
    // to themselves; both come straight from the resource file.
    // QUrl calls ":/..." invalid, but keeps it as the path.
    const QString path = resource_path(name.isValid() ? name.toString() : name.path());
    if (!path.isEmpty()) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly)) {
            // Our pages are UTF-8, with or without a charset of their own.
            if (type == QTextDocument::HtmlResource)
                return QString::fromUtf8(file.readAll());
            return file.readAll();
        }
    }
    return QTextBrowser::loadResource(type, name);
}

void TVGuideQt::link_clicked(const QUrl& url)
{
    const QString scheme = url.scheme();
    if (scheme.isEmpty() || scheme == QLatin1String("qrc")) {
        const QUrl target = source().resolved(url);
        m_page = QFileInfo(target.path()).fileName().toStdString();
        setSource(target);
        return;
    }
    QDesktopServices::openUrl(url);
}
