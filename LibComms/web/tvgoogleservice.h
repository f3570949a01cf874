#ifndef TVGOOGLESERVICE_H
#define TVGOOGLESERVICE_H

// TVGoogleService: mirrors a local folder with the application-data space
// of the user's Google Drive (REST v2), signing in by OAuth 2 in the
// user's browser with a reply handler on the loopback address.
//
// Configuration (system values of the user's configuration file):
//   GoogleClientId, GoogleClientSecret   the program's registration; none
//                                        ships with it, and without them the
//                                        service is not available
//   GoogleAuthHost, GoogleTokenHost,     where the endpoints live
//   GoogleApiHost, GoogleUploadHost      (scheme and host, no path)
//   GoogleReplyPort                      the sign-in's reply port (8080)
// The tokens the user's sign-in gives are kept there too (C_AuthTokenTag
// and the others), in that file alone, which only its owner may read; no
// token or secret is ever written to a log.
//
// A remote request that fails leaves the file's state for the next update
// to try again; a refused list (201, an access token gone stale) signs in
// again, by the refresh token where there is one. Main thread only, in the
// event loop.

#include "LibComms/web/tvwebservice.h"
#include "LibDate/core/tvdate.h"

#include <QJsonObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QUrlQuery>

#include <functional>
#include <memory>
#include <string>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;
class QOAuth2AuthorizationCodeFlow;
class QOAuthHttpServerReplyHandler;

class TVGoogleService : public TVWebService
{
    Q_OBJECT

public:
    static constexpr const char* C_AuthTokenTag = "GoogleAuthToken";
    static constexpr const char* C_AuthExpiresTag = "GoogleAuthExpires";
    static constexpr const char* C_RefreshTokenTag = "GoogleRefreshToken";
    static constexpr const char* C_LastSyncTag = "LastSyncGDrive";
    static constexpr const char* C_CodeTag = "code";
    static constexpr const char* C_ClientIdTag = "GoogleClientId";
    static constexpr const char* C_ClientSecretTag = "GoogleClientSecret";
    static constexpr const char* C_AuthHostTag = "GoogleAuthHost";
    static constexpr const char* C_TokenHostTag = "GoogleTokenHost";
    static constexpr const char* C_ApiHostTag = "GoogleApiHost";
    static constexpr const char* C_UploadHostTag = "GoogleUploadHost";
    static constexpr const char* C_ReplyPortTag = "GoogleReplyPort";

    static constexpr const char* C_ListFiles = "/drive/v2/files?spaces=appDataFolder";
    static constexpr const char* C_CreateFile = "/drive/v2/files";
    static constexpr const char* C_UpdateFile = "/drive/v2/files/";
    static constexpr const char* C_UploadFile = "/upload/drive/v2/files/";
    static constexpr const char* C_AuthPath = "/o/oauth2/auth";
    static constexpr const char* C_TokenPath = "/token";
    static constexpr const char* C_Scope = "https://www.googleapis.com/auth/drive.appdata";
    static constexpr const char* C_CallbackPath = "cb";
    static constexpr int C_ReplyPort = 8080;
    // How long a sign-in may take (the user reads the consent page) before
    // another may start.
    static constexpr long C_SignInWaitSeconds = 300;

    // What opens the sign-in page; the system's browser unless a test
    // follows it itself.
    using Browser = std::function<void(const QUrl&)>;

    // Made at first use; lives to the end of the process.
    static TVGoogleService* instance();
    // For tests that play several devices in one process; as
    // TVLocalService::swap_instance.
    static TVGoogleService* swap_instance(TVGoogleService* service);
    static void set_browser(Browser browser);

    TVGoogleService();
    ~TVGoogleService() override;

    // The mirror folder and the program's registration; the endpoints and
    // the last sync come from the configuration.
    void initialise(const std::string& folder, const std::string& client_id,
                    const std::string& client_secret);
    // Signs in and, once signed in, starts polling; TVErrC_okNotFinished
    // while the sign-in goes on (polling then starts when it is granted).
    [[nodiscard]] int start() override;
    // The stored token when it is still good; otherwise a sign-in is
    // started (TVErrC_okNotFinished).
    [[nodiscard]] int sign_in();
    // true: signs in (by the refresh token without the browser, when
    // there is one); false: signs out, forgetting the tokens.
    void authorise(bool sign_in);

    bool is_available() const;
    bool is_authorised() const;
    bool is_connected() const;
    // A sign-in or refresh was started and has had no answer yet.
    bool signing_in() const;
    bool download_in_progress() const;
    bool upload_in_progress() const;
    // A remote request is under way (for tests that wait for quiet).
    bool is_busy() const { return m_pending > 0; }

    [[nodiscard]] int list_drive();
    [[nodiscard]] int check_sign_in();

    // Drive's times, RFC 3339 in UTC to the millisecond.
    static TVDate from_rfc3339(const QString& text);
    static QString to_rfc3339(const TVDate& date);

    void dump(std::ostream& out, int indent) const override;

signals:
    void state_changed();
    void service_approved();

public slots:
    void authorised();
    void list_complete();
    void create_complete();
    void upload_complete();
    void update_complete();
    void download_complete();

protected:
    [[nodiscard]] int push(TVWebFile& file) override;
    [[nodiscard]] int pull(TVWebFile& file) override;
    [[nodiscard]] int remote_start() override;

private:
    [[nodiscard]] int upload(TVWebFile& file);
    [[nodiscard]] int update_metadata(TVWebFile& file);
    // A request with the access token; json_request's body is JSON, to
    // the API host.
    QNetworkRequest request(const std::string& host, const std::string& path,
                            const QUrlQuery& query = QUrlQuery()) const;
    QNetworkRequest json_request(const std::string& path) const;
    // Title and modification time, as Drive keeps them.
    static QJsonObject metadata(const TVWebFile& file, const TVDate& modified);
    // Sends and counts a request; the reply names the file it is for.
    QNetworkReply* track(QNetworkReply* reply, const TVWebFile* file, const char* slot);
    // The reply that finished, and the file it was for (null if it has
    // gone from the list meanwhile); false for a failed request.
    bool finish(QNetworkReply*& reply, TVWebFile*& file);
    void forget_token();
    void store(const char* tag, const std::string& value) const;
    std::string stored(const char* tag) const;

    std::string m_clientId;
    std::string m_clientSecret;
    std::string m_authHost;
    std::string m_tokenHost;
    std::string m_apiHost;
    std::string m_uploadHost;
    int m_replyPort = C_ReplyPort;
    std::string m_token;
    std::string m_refreshToken;
    TVDate m_expiry;
    TVDate m_lastContact;
    TVDate m_signInStarted;
    bool m_refreshing = false; // the flow is asking for a token by the refresh token
    std::unique_ptr<QNetworkAccessManager> m_network;
    QPointer<QOAuth2AuthorizationCodeFlow> m_flow;
    QOAuthHttpServerReplyHandler* m_handler = nullptr;
    QPointer<QNetworkReply> m_listReply;
    int m_pending = 0;
};

#endif // TVGOOGLESERVICE_H
