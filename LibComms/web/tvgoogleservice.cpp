#include "LibComms/web/tvgoogleservice.h"

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/param/tvparam.h"
#include "LibDate/core/tvdateutils.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDesktopServices>
#include <QFile>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QOAuth2AuthorizationCodeFlow>
#include <QOAuthHttpServerReplyHandler>
#include <QUrlQuery>

#include <cstdlib>
#include <functional>
#include <ostream>

namespace {

TVGoogleService* g_installed = nullptr;

TVGoogleService::Browser& browser()
{
    static TVGoogleService::Browser open = [](const QUrl& url) { QDesktopServices::openUrl(url); };
    return open;
}

const char* const C_FileProperty = "tvfile";

const TVDate& epoch()
{
    static const TVDate date(1970, 0, 0, 0, 0, 0, 0, TVDate::C_GMT);
    return date;
}

QString qstr(const std::string& text)
{
    return QString::fromStdString(text);
}

QByteArray json(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// The browser's way back, on this machine alone. Qt's own handler passes
// over a token request the server refused without a word; this one says so.
class ReplyHandler : public QOAuthHttpServerReplyHandler
{
public:
    ReplyHandler(quint16 port, QObject* parent)
        : QOAuthHttpServerReplyHandler(QHostAddress(QHostAddress::LocalHost), port, parent)
    {
    }
    void networkReplyFinished(QNetworkReply* reply) override
    {
        if (reply->error() != QNetworkReply::NoError && m_failed) {
            // An answer of 400 or 401 refuses the grant; anything else
            // (no network, a server fault) says nothing about it.
            const int status =
                reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            m_failed(status == 400 || status == 401);
            return;
        }
        QOAuthHttpServerReplyHandler::networkReplyFinished(reply);
    }
    std::function<void(bool refused)> m_failed;
};

} // namespace

TVGoogleService* TVGoogleService::instance()
{
    if (g_installed != nullptr)
        return g_installed;
    // Network objects must go while the application still stands.
    static TVGoogleService* s_service = nullptr;
    if (s_service == nullptr) {
        s_service = new TVGoogleService;
        qAddPostRoutine([] {
            delete s_service;
            s_service = nullptr;
        });
    }
    return s_service;
}

TVGoogleService* TVGoogleService::swap_instance(TVGoogleService* service)
{
    TVGoogleService* before = g_installed;
    g_installed = service;
    return before;
}

void TVGoogleService::set_browser(Browser open)
{
    browser() = open ? std::move(open) : [](const QUrl& url) { QDesktopServices::openUrl(url); };
}

TVGoogleService::TVGoogleService() : m_network(std::make_unique<QNetworkAccessManager>())
{
    m_expiry = TVDateUtils::blank_date();
    m_lastContact = TVDateUtils::blank_date();
    m_signInStarted = TVDateUtils::blank_date();
}

// Replies still out are dropped unanswered; the flow and the handler are
// children and go with the service.
TVGoogleService::~TVGoogleService()
{
    for (QNetworkReply* reply : m_network->findChildren<QNetworkReply*>()) {
        reply->disconnect(this);
        reply->abort();
    }
    delete m_flow.data();
}

void TVGoogleService::initialise(const std::string& folder, const std::string& client_id,
                                 const std::string& client_secret)
{
    m_clientId = client_id;
    m_clientSecret = client_secret;
    const auto host = [this](const char* tag, const char* fallback) {
        const std::string value = stored(tag);
        return value.empty() ? std::string(fallback) : value;
    };
    m_authHost = host(C_AuthHostTag, "https://accounts.google.com");
    m_tokenHost = host(C_TokenHostTag, "https://oauth2.googleapis.com");
    m_apiHost = host(C_ApiHostTag, "https://www.googleapis.com");
    m_uploadHost = host(C_UploadHostTag, "https://www.googleapis.com");
    const std::string port = stored(C_ReplyPortTag);
    m_replyPort = port.empty() ? C_ReplyPort : std::atoi(port.c_str());
    TVDate last = TVDateUtils::zero_date();
    if (!tv_date_from_digits(stored(C_LastSyncTag), last))
        last = TVDateUtils::zero_date();
    TVWebService::initialise(folder, last);
}

int TVGoogleService::start()
{
    try {
        if (is_running())
            return TVErrC_ok;
        const int result = sign_in();
        if (result != TVErrC_ok)
            return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : result;
        TV_PASS_ON(TVWebService::start());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVGoogleService::sign_in()
{
    if (m_token.empty()) {
        m_token = stored(C_AuthTokenTag);
        m_refreshToken = stored(C_RefreshTokenTag);
        if (!tv_date_from_digits(stored(C_AuthExpiresTag), m_expiry))
            m_expiry = TVDateUtils::blank_date();
        if (m_token.empty() || !m_expiry.is_ok() || !(TVDateUtils::now() < m_expiry)) {
            m_token.clear();
            // Polling doesn't start a second sign-in over one under way.
            if (!signing_in())
                authorise(true);
            return TVErrC_okNotFinished;
        }
    }
    return TVErrC_ok;
}

int TVGoogleService::check_sign_in()
{
    // A token that ran out while the program ran is refreshed first.
    if (!m_token.empty() && m_expiry.is_ok() && !(TVDateUtils::now() < m_expiry))
        forget_token();
    return sign_in();
}

void TVGoogleService::authorise(bool sign_in)
{
    if (!sign_in) {
        m_signInStarted = TVDateUtils::blank_date();
        m_token.clear();
        m_refreshToken.clear();
        store(C_AuthTokenTag, "");
        store(C_AuthExpiresTag, "");
        store(C_RefreshTokenTag, "");
        emit state_changed();
        return;
    }
    if (!is_available())
        return;
    m_signInStarted = TVDateUtils::now();
    if (m_handler == nullptr) {
        m_handler = new ReplyHandler(static_cast<quint16>(m_replyPort), this);
        m_handler->setCallbackPath(C_CallbackPath);
    }
    // A fresh flow each time: one whose last request went unanswered
    // would refuse to start another.
    if (m_flow != nullptr) {
        m_flow->disconnect(this);
        m_flow->deleteLater();
    }
    auto* flow = new QOAuth2AuthorizationCodeFlow(m_network.get(), this);
    m_flow = flow;
    flow->setScope(C_Scope);
    flow->setAuthorizationUrl(QUrl(qstr(m_authHost + C_AuthPath)));
    flow->setAccessTokenUrl(QUrl(qstr(m_tokenHost + C_TokenPath)));
    flow->setClientIdentifier(qstr(m_clientId));
    flow->setClientIdentifierSharedKey(qstr(m_clientSecret));
    flow->setReplyHandler(m_handler);
    const QString id = qstr(m_clientId);
    const QString secret = qstr(m_clientSecret);
    flow->setModifyParametersFunction(
        [id, secret](QAbstractOAuth::Stage stage, QVariantMap* parameters) {
            if (stage == QAbstractOAuth::Stage::RequestingAuthorization) {
                // Consent and offline access: only then is a refresh token issued.
                parameters->insert("prompt", "consent");
                parameters->insert("access_type", "offline");
            } else if (stage == QAbstractOAuth::Stage::RefreshingAccessToken) {
                parameters->insert("client_id", id);
                parameters->insert("client_secret", secret);
            }
        });
    connect(flow, &QOAuth2AuthorizationCodeFlow::authorizeWithBrowser, this,
            [](const QUrl& url) { browser()(url); });
    connect(flow, &QOAuth2AuthorizationCodeFlow::granted, this, &TVGoogleService::authorised);
    // A failed request ends the sign-in now rather than after its wait. A
    // refused refresh means the consent was withdrawn or ran out: only the
    // browser can give a new one. Offline, the refresh token is kept.
    const auto failed = [this, flow](bool refused) {
        if (m_flow != flow)
            return;
        const bool refreshing = m_refreshing;
        m_refreshing = false;
        m_signInStarted = TVDateUtils::blank_date();
        if (refreshing && refused) {
            m_refreshToken.clear();
            store(C_RefreshTokenTag, "");
            authorise(true);
        } else {
            emit state_changed();
        }
    };
    connect(flow, &QAbstractOAuth::requestFailed, this, [failed] { failed(false); });
    static_cast<ReplyHandler*>(m_handler)->m_failed = failed;
    const std::string refresh = stored(C_RefreshTokenTag);
    if (!refresh.empty()) {
        m_refreshing = true;
        flow->setRefreshToken(qstr(refresh));
        flow->refreshAccessToken();
        return;
    }
    forget_token();
    store(C_RefreshTokenTag, "");
    flow->grant();
}

void TVGoogleService::authorised()
{
    // A flow given up on still hears the tokens of the handler they share.
    if (m_flow == nullptr || sender() != m_flow)
        return;
    m_signInStarted = TVDateUtils::blank_date();
    m_refreshing = false;
    m_token = m_flow->token().toStdString();
    // A refresh may come without a new refresh token: the old one stands.
    if (!m_flow->refreshToken().isEmpty())
        m_refreshToken = m_flow->refreshToken().toStdString();
    const QDateTime expires = m_flow->expirationAt();
    const long seconds = expires.isValid() ? QDateTime::currentDateTimeUtc().secsTo(expires) : 0;
    m_expiry = TVDateUtils::now() + TVDuration(seconds);
    std::string expiry;
    tv_date_append(expiry, m_expiry);
    store(C_AuthTokenTag, m_token);
    store(C_RefreshTokenTag, m_refreshToken);
    store(C_AuthExpiresTag, expiry);
    emit state_changed();
    emit service_approved();
    if (!is_running())
        (void)tvhandle_error(TVWebService::start(), TVSevWarning);
}

// A sign-in that got no answer in time may be started again.
bool TVGoogleService::signing_in() const
{
    return m_signInStarted.is_ok() &&
           TVDateUtils::now() < m_signInStarted + TVDuration(C_SignInWaitSeconds);
}

bool TVGoogleService::is_available() const
{
    return !m_clientId.empty() && !m_clientSecret.empty();
}

bool TVGoogleService::is_authorised() const
{
    return !m_token.empty() || !stored(C_AuthTokenTag).empty() ||
           !stored(C_RefreshTokenTag).empty();
}

bool TVGoogleService::is_connected() const
{
    return is_available() && is_authorised() && m_lastContact.is_ok();
}

bool TVGoogleService::download_in_progress() const
{
    if (!is_available())
        return false;
    if (m_listReply != nullptr)
        return true;
    for (int i = 0; i < get_nfiles(); ++i)
        if (get_file(i)->is_downloading())
            return true;
    return false;
}

bool TVGoogleService::upload_in_progress() const
{
    if (!is_available())
        return false;
    if (m_listReply != nullptr)
        return true;
    for (int i = 0; i < get_nfiles(); ++i)
        if (get_file(i)->is_uploading())
            return true;
    return false;
}

// ---- Requests --------------------------------------------------------------------------

QNetworkRequest TVGoogleService::request(const std::string& host, const std::string& path,
                                         const QUrlQuery& query) const
{
    QUrl url(qstr(host + path));
    if (!query.isEmpty())
        url.setQuery(query);
    QNetworkRequest request(url);
    request.setRawHeader("Authorization", QByteArray("Bearer ") + QByteArray::fromStdString(m_token));
    return request;
}

QNetworkRequest TVGoogleService::json_request(const std::string& path) const
{
    QNetworkRequest json = request(m_apiHost, path);
    json.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    return json;
}

QJsonObject TVGoogleService::metadata(const TVWebFile& file, const TVDate& modified)
{
    const QString name = qstr(file.get_filename());
    return QJsonObject{
        {"title", name}, {"originalFilename", name}, {"modifiedDate", to_rfc3339(modified)}};
}

QNetworkReply* TVGoogleService::track(QNetworkReply* reply, const TVWebFile* file, const char* slot)
{
    ++m_pending;
    if (file != nullptr)
        reply->setProperty(C_FileProperty, QString::fromStdString(file->get_filename()));
    connect(reply, SIGNAL(finished()), this, slot);
    return reply;
}

bool TVGoogleService::finish(QNetworkReply*& reply, TVWebFile*& file)
{
    reply = qobject_cast<QNetworkReply*>(sender());
    file = nullptr;
    if (reply == nullptr)
        return false;
    --m_pending;
    reply->deleteLater();
    file = find_file(reply->property(C_FileProperty).toString().toStdString());
    return reply->error() == QNetworkReply::NoError;
}

int TVGoogleService::remote_start()
{
    try {
        if (m_listReply != nullptr)
            return TVErrC_ok;
        const int signed_in = check_sign_in();
        if (signed_in != TVErrC_ok)
            return istvwarn(signed_in) ? tv_trail_return(signed_in, TVLOCATION) : TVErrC_ok;
        TV_PASS_ON(list_drive());
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVGoogleService::list_drive()
{
    m_listReply = track(m_network->get(request(m_apiHost, C_ListFiles)), nullptr,
                        SLOT(list_complete()));
    return TVErrC_ok;
}

void TVGoogleService::list_complete()
{
    QNetworkReply* reply = nullptr;
    TVWebFile* unused = nullptr;
    const bool ok = finish(reply, unused);
    if (reply == nullptr)
        return;
    m_listReply = nullptr;
    if (!ok) {
        // The token was refused (201, or 204 where the server says so
        // plainly): sign in again, by the refresh token.
        if (reply->error() == QNetworkReply::ContentAccessDenied ||
            reply->error() == QNetworkReply::AuthenticationRequiredError) {
            forget_token();
            (void)tvhandle_error(sign_in(), TVSevWarning);
        }
        emit state_changed();
        return;
    }
    m_lastContact = TVDateUtils::now();
    const QJsonArray items =
        QJsonDocument::fromJson(reply->readAll()).object().value("items").toArray();
    for (const QJsonValue& value : items) {
        const QJsonObject item = value.toObject();
        const std::string title = item.value("title").toString().toStdString();
        if (item.value("explicitlyTrashed").toBool() || title.empty())
            continue;
        TVWebFile* file = find_file(title);
        if (file == nullptr)
            file = &add_file(title);
        file->update_remote(item.value("id").toString().toStdString(),
                            from_rfc3339(item.value("modifiedDate").toString()));
    }
    if (tvhandle_error(remote_complete(), TVSevWarning) < 2) {
        std::string now;
        tv_date_append(now, TVDateUtils::now());
        store(C_LastSyncTag, now);
    }
    emit state_changed();
}

int TVGoogleService::push(TVWebFile& file)
{
    try {
        if (m_token.empty())
            return TVErrC_okNotFinished;
        if (file.is_uploading())
            return TVErrC_ok;
        if (!file.get_id().empty()) {
            TV_PASS_ON(upload(file));
        } else {
            // Created a second older than it is: the file counts as older
            // than ours until its bytes have arrived.
            QJsonObject body = metadata(file, file.get_modified() - TVDuration(1));
            body.insert("createdDate", to_rfc3339(file.get_modified()));
            body.insert("parents", QJsonArray{QJsonObject{{"id", "appDataFolder"}}});
            track(m_network->post(json_request(C_CreateFile), json(body)), &file,
                  SLOT(create_complete()));
        }
        file.start_push();
        emit state_changed();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVGoogleService::create_complete()
{
    QNetworkReply* reply = nullptr;
    TVWebFile* file = nullptr;
    const bool ok = finish(reply, file);
    if (file == nullptr)
        return;
    const QJsonObject made = QJsonDocument::fromJson(reply->readAll()).object();
    const std::string id = made.value("id").toString().toStdString();
    if (!ok || id.empty()) {
        file->fail_push();
        emit state_changed();
        return;
    }
    file->set_id(id);
    (void)tvhandle_error(upload(*file), TVSevWarning);
}

int TVGoogleService::upload(TVWebFile& file)
{
    QFile local(qstr(file.get_pathname()));
    if (!local.open(QIODevice::ReadOnly)) {
        file.fail_push();
        return tvwarning(TVErrC_FileOpen, TVLOCATION, "Could not read the file %s",
                         file.get_pathname().c_str());
    }
    QNetworkRequest put = request(m_uploadHost, C_UploadFile + file.get_id(),
                                  {{"uploadType", "media"}, {"modifiedDateBehavior", "noChange"}});
    put.setHeader(QNetworkRequest::ContentTypeHeader, "application/octet-stream");
    track(m_network->put(put, local.readAll()), &file, SLOT(upload_complete()));
    return TVErrC_ok;
}

void TVGoogleService::upload_complete()
{
    QNetworkReply* reply = nullptr;
    TVWebFile* file = nullptr;
    const bool ok = finish(reply, file);
    if (file == nullptr)
        return;
    if (!ok) {
        file->fail_push();
        emit state_changed();
        return;
    }
    (void)tvhandle_error(update_metadata(*file), TVSevWarning);
}

int TVGoogleService::update_metadata(TVWebFile& file)
{
    track(m_network->put(json_request(C_UpdateFile + file.get_id()),
                         json(metadata(file, file.get_modified()))),
          &file, SLOT(update_complete()));
    return TVErrC_ok;
}

void TVGoogleService::update_complete()
{
    QNetworkReply* reply = nullptr;
    TVWebFile* file = nullptr;
    const bool ok = finish(reply, file);
    if (file == nullptr)
        return;
    if (ok)
        file->mark_pushed();
    else
        file->fail_push();
    emit state_changed();
}

int TVGoogleService::pull(TVWebFile& file)
{
    if (m_token.empty())
        return TVErrC_okNotFinished;
    track(m_network->get(request(m_apiHost, C_UpdateFile + file.get_id(), {{"alt", "media"}})),
          &file, SLOT(download_complete()));
    file.start_pull();
    emit state_changed();
    return TVErrC_ok;
}

void TVGoogleService::download_complete()
{
    QNetworkReply* reply = nullptr;
    TVWebFile* named = nullptr;
    const bool ok = finish(reply, named);
    if (reply == nullptr)
        return;
    TVWebFile* file = find_id(reply->url().path().section('/', -1).toStdString());
    if (file == nullptr)
        file = named;
    if (file != nullptr) {
        if (ok)
            (void)tvhandle_error(file->complete_pull(reply->readAll().toStdString()), TVSevWarning);
        else
            file->fail_pull();
    }
    (void)tvhandle_error(remote_complete(), TVSevWarning);
    emit state_changed();
}

// ---- Tokens and times ------------------------------------------------------------------

void TVGoogleService::forget_token()
{
    m_token.clear();
    m_expiry = TVDateUtils::blank_date();
    store(C_AuthTokenTag, "");
    store(C_AuthExpiresTag, "");
}

// A token that can't be kept is asked for again at the next start; the
// report names the file, never the value.
void TVGoogleService::store(const char* tag, const std::string& value) const
{
    if (stored(tag) == value)
        return;
    int result = TVErrC_ok;
    try {
        result = tvparam()->set_system_value(tag, value);
    } catch (const TVErrDetails&) {
        result = tverrorvalue();
    }
    (void)tvhandle_error(result, TVSevWarning);
}

std::string TVGoogleService::stored(const char* tag) const
{
    return tvparam()->get_system_value(tag);
}

TVDate TVGoogleService::from_rfc3339(const QString& text)
{
    const QDateTime when = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!when.isValid())
        return TVDateUtils::blank_date();
    const qint64 ms = when.toMSecsSinceEpoch();
    const qint64 day = 86400000;
    const qint64 days = ms >= 0 ? ms / day : -((-ms + day - 1) / day);
    const qint64 rest = ms - days * day;
    return TVDate(1970, 0, static_cast<int>(days), 0, 0, static_cast<int>(rest / 1000),
                  static_cast<int>(rest % 1000) * 1000, TVDate::C_GMT);
}

QString TVGoogleService::to_rfc3339(const TVDate& date)
{
    const TVDuration since = date - epoch();
    const qint64 ms = (static_cast<qint64>(since.get_days()) * 86400 + since.get_seconds()) * 1000 +
                      since.get_micro() / 1000;
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
}

void TVGoogleService::dump(std::ostream& out, int indent) const
{
    TVWebService::dump(out, indent);
    TVDump dump("TVGoogleService", out, indent);
    // Whether there are tokens, never what they are.
    dump.add_entry("available", is_available());
    dump.add_entry("authorised", is_authorised());
    dump.add_entry("expiry", m_expiry);
    dump.add_entry("lastContact", m_lastContact);
    dump.add_entry("pending", m_pending);
}
