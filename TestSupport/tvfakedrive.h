#ifndef TVFAKEDRIVE_H
#define TVFAKEDRIVE_H

// TVFakeDrive: a small Google Drive of the tests' own, on 127.0.0.1 at a
// port the system picks: the sign-in's authorisation and token endpoints
// and the subset of the Drive v2 files endpoints the program uses (list
// in the application-data space, create, media upload, metadata update,
// media download). Files live in memory; every request is logged.
//
// The test's "browser" (browse) follows the authorisation URL and the
// redirect back to the program's reply handler, as a user's browser does
// after consent. Tokens can be made stale (a list is then refused, 403)
// and the server can drop every request unanswered (offline).
//
// Main thread, in the event loop of the test.

#include <QByteArray>
#include <QDateTime>
#include <QMap>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QTcpServer>
#include <QUrl>

#include <string>

class QTcpSocket;

class TVFakeDrive : public QObject
{
    Q_OBJECT

public:
    struct File {
        QString id;
        QString title;
        QByteArray bytes;
        QDateTime modified;
        bool trashed = false;
    };

    TVFakeDrive();
    ~TVFakeDrive() override;

    // "http://127.0.0.1:port", for every host of the configuration.
    std::string base() const;
    // Writes the endpoint hosts, client id and secret and a free reply
    // port into the user's configuration, as a user would.
    void configure() const;

    // The user's browser: follows url and its redirects to the end.
    void browse(const QUrl& url);
    int browser_opens() const { return m_browserOpens; }
    // The query of the last authorisation request.
    QMap<QString, QString> last_authorisation() const { return m_lastAuthorisation; }
    // The grant types asked for at the token endpoint, in order.
    const QStringList& grants() const { return m_grants; }

    // Every access token given so far is refused from now on.
    void expire_tokens() { m_tokens.clear(); }
    // The refresh tokens too: only a new consent in the browser helps.
    void revoke_consent() { m_tokens.clear(); m_refreshTokens.clear(); }
    // Requests are dropped unanswered (a network error at the client).
    void set_offline(bool offline) { m_offline = offline; }
    // Requests whose "METHOD path" starts with prefix wait unanswered
    // until release.
    void hold(const QString& prefix) { m_hold = prefix; }
    void release();
    // "METHOD path" of every request, in order.
    const QStringList& log() const { return m_log; }
    void clear_log() { m_log.clear(); }

    File& add_file(const QString& title, const QByteArray& bytes, const QDateTime& modified);
    // Null when no file has that title.
    File* find(const QString& title);
    const QList<File>& files() const { return m_files; }

private:
    void read_request(QTcpSocket* socket);
    void answer(QTcpSocket* socket, const QByteArray& method, const QUrl& url,
                const QMap<QByteArray, QByteArray>& headers, const QByteArray& body);
    void reply(QTcpSocket* socket, int status, const QByteArray& type, const QByteArray& body,
               const QByteArray& extra = QByteArray());
    File* find_id(const QString& id);

    QTcpServer m_server;
    QNetworkAccessManager m_browser;
    struct Held {
        QPointer<QTcpSocket> socket;
        QByteArray method;
        QUrl url;
        QMap<QByteArray, QByteArray> headers;
        QByteArray body;
    };

    QMap<QTcpSocket*, QByteArray> m_pending;
    QList<Held> m_held;
    QString m_hold;
    QList<File> m_files;
    QSet<QByteArray> m_tokens;
    QSet<QByteArray> m_refreshTokens;
    QStringList m_grants;
    QStringList m_log;
    QMap<QString, QString> m_lastAuthorisation;
    int m_browserOpens = 0;
    int m_issued = 0;
    bool m_offline = false;
};

#endif // TVFAKEDRIVE_H
