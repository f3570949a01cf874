#include "LibGui/qt/tvapplicationqt.h"

#include <QDesktopServices>
#include <QMetaType>
#include <QTimer>
#include <QUrlQuery>
#include <algorithm>

#include "LibCore/error/tverror.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvdateslot.h"
#include "LibDate/core/tvlocale.h"
#include "LibGui/images/tvguiimages.h"
#include "LibGui/qt/tverrorqt.h"
#include "LibGui/qt/tvmainwindowqt.h"
#include "LibGui/qt/tvqtapp.h"
#include "LibObject/core/tvid.h"
#include "LibObject/core/tvidlist.h"

TVApplicationQt::TVApplicationQt(int argc, char** argv, const TVAppIdentity& identity, QApplication& app)
    : QObject(nullptr), TVApplication(argc, argv, identity), m_app(qobject_cast<TVQtApp*>(&app))
{
    // The framework's icons sit in a static library.
    tv_init_gui_images();
    // Queued signals and item data carry these values.
    qRegisterMetaType<TVId>("TVId");
    qRegisterMetaType<TVIdList>("TVIdList");
    qRegisterMetaType<TVDate>("TVDate");
    qRegisterMetaType<TVDateSlot>("TVDateSlot");
    qRegisterMetaType<std::string>("string");
    m_url.clear();
    if (m_app != nullptr)
        m_app->set_app(this);
    TVErrorQt::install();
}

TVApplicationQt::~TVApplicationQt()
{
    // Each window's destructor takes itself off the list.
    while (!m_windows.empty())
        delete m_windows.back();
    if (m_app != nullptr && m_app->get_app() == this)
        m_app->set_app(nullptr);
    TVErrorQt::uninstall();
}

int TVApplicationQt::start()
{
    QTimer::singleShot(C_StartDelayMs, this, &TVApplicationQt::app_started);
    const int result = QApplication::exec();
    if (!istvwarn(result))
        return TVErrC_ok;
    tvsysinfo_append(TVLOCATION, "");
    return tverrorvalue();
}

int TVApplicationQt::setup_error()
{
    return TVApplication::setup_error();
}

void TVApplicationQt::app_started()
{
    int value = TVErrC_ok;
    try {
        setup_error();
        value = setup_parameters();
        if (value == TVErrC_okShutdown) {
            QCoreApplication::exit(TVErrC_ok);
            return;
        }
        if (istvwarn(value)) {
            tvsysinfo_append(TVLOCATION, "");
            QCoreApplication::exit(value);
            return;
        }
        tvlocale()->read_config();
        value = run();
        if (istvwarn(value))
            tvsysinfo_append(TVLOCATION, "");
    } catch (TVErrDetails&) {
        value = get_tverror()->get_value();
        tvsysinfo_append(TVLOCATION, "");
    }
    tvhandle_error(value, TVSevWarning);
}

void TVApplicationQt::push_status(const std::string& text, double percentage, bool foreground,
                                  int delayMicroseconds)
{
    TVApplication::push_status(text, percentage, foreground, delayMicroseconds);
    for (TVMainWindowQt* window : m_windows)
        window->app_status();
}

void TVApplicationQt::pop_status(const std::string& text, bool foreground)
{
    TVApplication::pop_status(text, foreground);
    for (TVMainWindowQt* window : m_windows)
        window->app_status();
}

void TVApplicationQt::add_window(TVMainWindowQt* window)
{
    if (window != nullptr && std::find(m_windows.begin(), m_windows.end(), window) == m_windows.end())
        m_windows.push_back(window);
}

void TVApplicationQt::remove_window(TVMainWindowQt* window)
{
    m_windows.erase(std::remove(m_windows.begin(), m_windows.end(), window), m_windows.end());
}

TVMainWindowQt* TVApplicationQt::get_window(int index) const
{
    if (index < 0 || index >= window_count())
        return nullptr;
    return m_windows[static_cast<size_t>(index)];
}

void TVApplicationQt::display_badge_count(int count)
{
    m_badgeCount = count;
}

void TVApplicationQt::setup_url_handler(const std::string& scheme)
{
    QDesktopServices::setUrlHandler(QString::fromStdString(scheme), this, "url_scheme");
}

void TVApplicationQt::split_url(const QUrl& url, std::string& command, std::string& argument, TVTagValue& query)
{
    const std::string text = QUrl::fromPercentEncoding(url.toString(QUrl::RemoveQuery).toUtf8()).toStdString();
    const size_t start = text.find("://");
    std::string rest = start == std::string::npos ? text : text.substr(start + 3);
    size_t end = rest.find('/');
    if (end == std::string::npos)
        end = rest.find('?');
    command = rest.substr(0, end);
    argument = end == std::string::npos ? std::string() : rest.substr(end + 1);
    query.clear();
    for (const auto& item : QUrlQuery(url).queryItems(QUrl::FullyDecoded))
        query.set(item.first.toStdString(), item.second.toStdString());
}

void TVApplicationQt::url_scheme(const QUrl& url)
{
    if (!can_take_url()) {
        m_url = url.toString().toStdString();
        return;
    }
    std::string command, argument;
    TVTagValue query;
    split_url(url, command, argument, query);
    url_called(command, argument, query);
}

void TVApplicationQt::handle_pending_url()
{
    if (m_url.empty() || !can_take_url())
        return;
    const QUrl url(QString::fromStdString(m_url));
    m_url.clear();
    url_scheme(url);
}

bool TVApplicationQt::can_take_url() const
{
    const TVMainWindowQt* primary = get_window(0);
    return primary != nullptr && primary->takes_url();
}

void TVApplicationQt::url_called(const std::string& command, const std::string& argument, const TVTagValue& query)
{
    if (TVMainWindowQt* primary = get_window(0))
        primary->url_called(command, argument, query);
}

TVApplicationQt* tvapplicationqt()
{
    auto* app = dynamic_cast<TVApplicationQt*>(tvapplication());
    if (app == nullptr)
        tverror(TVErrC_NullSingleton, TVLOCATION, "Missing TVApplicationQt");
    return app;
}

bool has_tvapplicationqt()
{
    return TVApplication::has_object() && dynamic_cast<TVApplicationQt*>(TVApplication::m_object) != nullptr;
}
