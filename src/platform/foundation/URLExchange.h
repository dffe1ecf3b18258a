#pragma once

#include "platform/foundation/NetworkEnvironment.h"
#include "platform/foundation/URLRequest.h"

#include <QByteArray>
#include <QNetworkReply>
#include <QObject>
#include <QSslConfiguration>

class QNetworkAccessManager;

namespace quillmate
{

/// What every exchange of a session goes through.
struct URLTransport {
    QNetworkAccessManager& manager;
    const NetworkEnvironment& environment;
    const QSslConfiguration& security;
};

/// One request on its way, redirects included. Belongs to the manager and removes itself once it has told the completion.
class URLExchange : public QObject
{
    Q_OBJECT

public:
    static void begin(const URLTransport& transport, URLRequest request, DataTaskCompletion completion);

private:
    URLExchange(const URLTransport& transport, URLRequest request, DataTaskCompletion completion);
    void send();
    void received();
    void finished();
    void follow(const URL& target, int status);
    void succeed(int status);
    void fail(URLError::Kind kind, const QString& detail);
    void complete(std::optional<std::string> data, std::optional<HTTPURLResponse> response, std::optional<URLError> error);

    URLTransport m_transport;
    URLRequest m_request;
    DataTaskCompletion m_completion;
    QNetworkReply* m_reply = nullptr; // A child of this object.
    int m_redirects = 0;
    bool m_tooLarge = false;
};

} // namespace quillmate
