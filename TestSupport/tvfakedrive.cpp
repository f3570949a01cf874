#include "TestSupport/tvfakedrive.h"

#include "LibComms/web/tvgoogleservice.h"
#include "LibCore/param/tvparam.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QUrlQuery>

namespace {

QJsonObject to_json(const TVFakeDrive::File& file)
{
    return QJsonObject{{"id", file.id},
                       {"title", file.title},
                       {"originalFilename", file.title},
                       {"modifiedDate", file.modified.toUTC().toString(Qt::ISODateWithMs)},
                       {"explicitlyTrashed", file.trashed},
                       {"downloadUrl", "/drive/v2/files/" + file.id + "?alt=media"}};
}

QByteArray json(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

TVFakeDrive::TVFakeDrive()
{
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read_request(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                m_pending.remove(socket);
                socket->deleteLater();
            });
        }
    });
}

// The server's sockets go after the books kept on them.
TVFakeDrive::~TVFakeDrive()
{
    for (QTcpSocket* socket : m_server.findChildren<QTcpSocket*>())
        socket->disconnect(this);
}

std::string TVFakeDrive::base() const
{
    return "http://127.0.0.1:" + std::to_string(m_server.serverPort());
}

void TVFakeDrive::configure() const
{
    TVParam* param = tvparam();
    for (const char* tag : {TVGoogleService::C_AuthHostTag, TVGoogleService::C_TokenHostTag,
                            TVGoogleService::C_ApiHostTag, TVGoogleService::C_UploadHostTag})
        (void)param->set_system_value(tag, base());
    (void)param->set_system_value(TVGoogleService::C_ReplyPortTag, "0");
    (void)param->set_system_value(TVGoogleService::C_ClientIdTag, "test-client");
    (void)param->set_system_value(TVGoogleService::C_ClientSecretTag, "test-secret");
}

void TVFakeDrive::browse(const QUrl& url)
{
    ++m_browserOpens;
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply* reply = m_browser.get(request);
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
}

TVFakeDrive::File& TVFakeDrive::add_file(const QString& title, const QByteArray& bytes,
                                         const QDateTime& modified)
{
    File file;
    file.id = QString("id%1").arg(m_files.size() + 1);
    file.title = title;
    file.bytes = bytes;
    file.modified = modified;
    m_files.append(file);
    return m_files.last();
}

TVFakeDrive::File* TVFakeDrive::find(const QString& title)
{
    for (File& file : m_files)
        if (file.title == title)
            return &file;
    return nullptr;
}

TVFakeDrive::File* TVFakeDrive::find_id(const QString& id)
{
    for (File& file : m_files)
        if (file.id == id)
            return &file;
    return nullptr;
}

// A request is whole once its headers and Content-Length bytes are in.
void TVFakeDrive::read_request(QTcpSocket* socket)
{
    QByteArray& data = m_pending[socket];
    data += socket->readAll();
    const int end = data.indexOf("\r\n\r\n");
    if (end < 0)
        return;
    const QList<QByteArray> lines = data.left(end).split('\n');
    QMap<QByteArray, QByteArray> headers;
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines[i].indexOf(':');
        if (colon > 0)
            headers[lines[i].left(colon).trimmed().toLower()] = lines[i].mid(colon + 1).trimmed();
    }
    const int length = headers.value("content-length", "0").toInt();
    if (data.size() < end + 4 + length)
        return;
    const QList<QByteArray> first = lines[0].trimmed().split(' ');
    const QByteArray body = data.mid(end + 4, length);
    data.clear();
    if (first.size() < 2)
        return socket->abort();
    const QUrl url(QString::fromLatin1("http://127.0.0.1") + QString::fromLatin1(first[1]));
    m_log.append(QString::fromLatin1(first[0]) + " " + url.path());
    if (m_offline)
        return socket->abort();
    if (!m_hold.isEmpty() && m_log.last().startsWith(m_hold))
        return m_held.append({socket, first[0], url, headers, body});
    answer(socket, first[0], url, headers, body);
}

void TVFakeDrive::release()
{
    m_hold.clear();
    const QList<Held> held = m_held;
    m_held.clear();
    for (const Held& request : held)
        if (request.socket != nullptr)
            answer(request.socket, request.method, request.url, request.headers, request.body);
}

void TVFakeDrive::answer(QTcpSocket* socket, const QByteArray& method, const QUrl& url,
                         const QMap<QByteArray, QByteArray>& headers, const QByteArray& body)
{
    const QString path = url.path();
    const QUrlQuery query(url);
    if (path == TVGoogleService::C_AuthPath) {
        // Consent given at once: back to the program with a code.
        m_lastAuthorisation.clear();
        for (const auto& item : query.queryItems(QUrl::FullyDecoded))
            m_lastAuthorisation[item.first] = item.second;
        // The client may encode the address twice.
        QString uri = query.queryItemValue("redirect_uri", QUrl::FullyDecoded);
        while (uri.contains('%'))
            uri = QUrl::fromPercentEncoding(uri.toUtf8());
        QUrl back(uri);
        back.setQuery(QUrlQuery{{"code", "c0de"}, {"state", query.queryItemValue("state")}});
        return reply(socket, 302, "text/html", "", "Location: " + back.toEncoded() + "\r\n");
    }
    if (path == TVGoogleService::C_TokenPath) {
        const QUrlQuery form(QString::fromUtf8(body));
        const QString grant = form.queryItemValue("grant_type");
        m_grants.append(grant);
        const bool known = grant == "authorization_code"
                               ? form.queryItemValue("code") == "c0de"
                               : m_refreshTokens.contains(form.queryItemValue("refresh_token").toUtf8());
        if (!known || form.queryItemValue("client_id") != "test-client")
            return reply(socket, 400, "application/json", json({{"error", "invalid_grant"}}));
        const QByteArray token = "access" + QByteArray::number(++m_issued);
        m_tokens.insert(token);
        QJsonObject answer{{"access_token", QString(token)}, {"expires_in", 3600},
                           {"token_type", "Bearer"}};
        if (grant == "authorization_code") {
            const QByteArray refresh = "refresh" + QByteArray::number(m_issued);
            m_refreshTokens.insert(refresh);
            answer.insert("refresh_token", QString(refresh));
        }
        return reply(socket, 200, "application/json", json(answer));
    }
    const QByteArray bearer = headers.value("authorization");
    if (!bearer.startsWith("Bearer ") || !m_tokens.contains(bearer.mid(7)))
        return reply(socket, 403, "application/json", json({{"error", "stale token"}}));

    const QString id = path.section('/', -1);
    if (method == "GET" && path == "/drive/v2/files") {
        QJsonArray items;
        if (query.queryItemValue("spaces") == "appDataFolder")
            for (const File& file : m_files)
                items.append(to_json(file));
        return reply(socket, 200, "application/json", json({{"items", items}}));
    }
    if (method == "POST" && path == "/drive/v2/files") {
        const QJsonObject made = QJsonDocument::fromJson(body).object();
        File& file = add_file(made.value("title").toString(), QByteArray(),
                              QDateTime::fromString(made.value("modifiedDate").toString(),
                                                    Qt::ISODateWithMs));
        return reply(socket, 200, "application/json", json(to_json(file)));
    }
    File* file = find_id(id);
    if (file == nullptr)
        return reply(socket, 404, "application/json", json({{"error", "no such file"}}));
    if (method == "PUT" && path.startsWith("/upload/drive/v2/files/")) {
        file->bytes = body;
        if (query.queryItemValue("modifiedDateBehavior") != "noChange")
            file->modified = QDateTime::currentDateTimeUtc();
        return reply(socket, 200, "application/json", json(to_json(*file)));
    }
    if (method == "PUT") {
        const QJsonObject meta = QJsonDocument::fromJson(body).object();
        file->title = meta.value("title").toString(file->title);
        file->modified =
            QDateTime::fromString(meta.value("modifiedDate").toString(), Qt::ISODateWithMs);
        return reply(socket, 200, "application/json", json(to_json(*file)));
    }
    if (method == "GET" && query.queryItemValue("alt") == "media")
        return reply(socket, 200, "application/octet-stream", file->bytes);
    reply(socket, 400, "application/json", json({{"error", "not understood"}}));
}

void TVFakeDrive::reply(QTcpSocket* socket, int status, const QByteArray& type,
                        const QByteArray& body, const QByteArray& extra)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " Fake\r\n";
    head += "Content-Type: " + type + "\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\nConnection: close\r\n" + extra + "\r\n";
    socket->write(head + body);
    socket->disconnectFromHost();
}
