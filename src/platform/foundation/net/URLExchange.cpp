#include "platform/foundation/net/URLExchange.h"

#include "base/UploadBody.h"
#include "platform/foundation/net/URLManagers.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <utility>

namespace quillmate
{
namespace
{

// As many as browsers follow before they call it a loop.
constexpr int mostRedirects = 20;
// Far above any reply of the service; an endless one must not fill the memory.
constexpr qint64 longestReply = 64LL * 1024 * 1024;

/// A line break inside a header would begin another one.
bool hasBrokenHeader(const URLRequest& request)
{
    return std::any_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
        return (header.first + header.second).find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos;
    });
}

int effectivePort(const URL& url)
{
    return url.port().value_or(url.scheme() == "https" ? 443 : 80);
}

URLError::Kind kindOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::OperationCanceledError: // Nobody else cancels: the transfer timeout did.
    case QNetworkReply::TimeoutError:
    case QNetworkReply::ProxyTimeoutError:
        return URLError::Kind::TimedOut;
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::ProxyNotFoundError:
        return URLError::Kind::CannotFindHost;
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::ProxyConnectionRefusedError:
        return URLError::Kind::CannotConnectToHost;
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError: // It would have to be sent again, which is not ours to decide.
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::ProxyConnectionClosedError:
        return URLError::Kind::NetworkConnectionLost;
    case QNetworkReply::SslHandshakeFailedError:
        return URLError::Kind::SecureConnectionFailed;
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::ProtocolInvalidOperationError:
        return URLError::Kind::BadServerResponse;
    default:
        return URLError::Kind::Unknown;
    }
}

QString sentence(URLError::Kind kind, const QString& host)
{
    switch (kind) {
    case URLError::Kind::BadRequest:
        return QStringLiteral("A header of the request to %1 holds a line break.").arg(host);
    case URLError::Kind::TimedOut:
        return QStringLiteral("The request to %1 timed out.").arg(host);
    case URLError::Kind::CannotFindHost:
        return QStringLiteral("The host %1 could not be found.").arg(host);
    case URLError::Kind::CannotConnectToHost:
        return QStringLiteral("Could not connect to %1.").arg(host);
    case URLError::Kind::NetworkConnectionLost:
        return QStringLiteral("The connection to %1 was lost.").arg(host);
    case URLError::Kind::SecureConnectionFailed:
        return QStringLiteral("No secure connection to %1 could be made.").arg(host);
    case URLError::Kind::BadServerResponse:
        return QStringLiteral("%1 sent a reply that is not valid HTTP.").arg(host);
    case URLError::Kind::TooManyRedirects:
        return QStringLiteral("%1 redirected too many times.").arg(host);
    case URLError::Kind::InsecureRedirect:
        return QStringLiteral("%1 redirected to an insecure address.").arg(host);
    case URLError::Kind::DataTooLarge:
        return QStringLiteral("The reply of %1 is too large.").arg(host);
    case URLError::Kind::Unknown:
        break;
    }
    return QStringLiteral("The request to %1 failed.").arg(host);
}

/// Whether the reply came whole, with whatever status. Qt also reports a status as an error; those from 201 on, but for
/// two about the protocol itself, are statuses, and so is 407, which it files under the proxy's errors.
bool isReplyStatus(QNetworkReply::NetworkError error, int status)
{
    constexpr int proxyAuthenticationRequired = 407;
    return error == QNetworkReply::NoError ||
           (error >= QNetworkReply::ContentAccessDenied && error != QNetworkReply::ProtocolUnknownError &&
            error != QNetworkReply::ProtocolFailure) ||
           (error == QNetworkReply::ProxyAuthenticationRequiredError && status == proxyAuthenticationRequired);
}

} // namespace

void URLExchange::begin(URLManagers& managers, URLRequest request, DataTaskCompletion completion)
{
    auto* exchange = new URLExchange(managers, std::move(request), std::move(completion));
    exchange->setParent(&managers);
    exchange->send();
}

URLExchange::URLExchange(URLManagers& managers, URLRequest request, DataTaskCompletion completion)
    : m_managers(managers)
    , m_request(std::move(request))
    , m_completion(std::move(completion))
{
}

void URLExchange::send()
{
    if (hasBrokenHeader(m_request)) {
        fail(URLError::Kind::BadRequest, {});
        return;
    }
    QUrl target = QUrl::fromEncoded(QByteArray::fromStdString(m_request.url.absoluteString()));
    const QByteArray host = QByteArray::fromStdString(m_request.url.host());

    QNetworkRequest request;
    request.setSslConfiguration(m_managers.security());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setTransferTimeout(static_cast<int>(m_request.timeoutInterval * 1000));
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Quillmate/" QUILLMATE_VERSION));

    const auto& connectTo = m_managers.environment().connectTo;
    if (const auto mapped = connectTo.find(m_request.url.host()); mapped != connectTo.end()) {
        const bool https = m_request.url.scheme() == "https";
        const int port = effectivePort(m_request.url);
        const bool ordinary = port == (https ? 443 : 80);
        request.setRawHeader("Host", ordinary ? host : host + ':' + QByteArray::number(port));
        request.setPeerVerifyName(QString::fromLatin1(host));
        // HTTP/2 would name the address as its authority, whatever the Host header says.
        request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
        target.setHost(QString::fromStdString(mapped->second.address));
        target.setPort(mapped->second.port);
    }
    request.setUrl(target);
    for (const auto& [name, value] : m_request.headers) {
        request.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }

    QNetworkAccessManager& manager = m_managers.managerFor(m_request);
    // It caches only what it knows to be a GET.
    if (m_request.method == "GET") {
        m_reply = manager.get(request);
    } else {
        auto body = std::make_unique<UploadBody>(m_request.body ? m_request.body : std::make_shared<std::string>());
        // The length must be known beforehand, or all of it is read ahead, and could be sent again.
        request.setHeader(QNetworkRequest::ContentLengthHeader, body->bytesAvailable());
        request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        m_reply = manager.sendCustomRequest(request, QByteArray::fromStdString(m_request.method), body.get());
        body.release()->setParent(m_reply);
    }
    m_reply->setParent(this);
    connect(m_reply, &QNetworkReply::readyRead, this, &URLExchange::received);
    connect(m_reply, &QNetworkReply::finished, this, &URLExchange::finished);
}

void URLExchange::received()
{
    if (m_reply->bytesAvailable() > longestReply) {
        m_tooLarge = true;
        m_reply->abort();
    }
}

void URLExchange::finished()
{
    if (m_tooLarge) {
        fail(URLError::Kind::DataTooLarge, {});
        return;
    }
    const auto error = m_reply->error();
    const QVariant statusAttribute = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const int status = statusAttribute.toInt();
    if (!statusAttribute.isValid() || !isReplyStatus(error, status)) {
        // What Qt says of a body that it cannot send again is of no use to a user.
        fail(kindOf(error), error == QNetworkReply::ContentReSendError ? QString() : m_reply->errorString());
        return;
    }
    const bool redirects = status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
    const auto target = redirects && m_reply->hasRawHeader("Location")
                            ? m_request.url.resolving(m_reply->rawHeader("Location").toStdString())
                            : std::nullopt;
    if (target) {
        follow(*target, status);
    } else {
        succeed(status);
    }
}

void URLExchange::follow(const URL& target, int status)
{
    const bool secure = m_request.url.scheme() == "https";
    if (++m_redirects > mostRedirects) {
        fail(URLError::Kind::TooManyRedirects, {});
        return;
    }
    if (target.scheme() != "https" && (secure || target.scheme() != "http")) {
        fail(URLError::Kind::InsecureRedirect, {});
        return;
    }
    if (target.host() != m_request.url.host() || effectivePort(target) != effectivePort(m_request.url) ||
        target.scheme() != m_request.url.scheme()) {
        removeHeader(m_request, "authorization");
    }
    // RFC 9110, sections 15.4.2 to 15.4.4: after 303, and by custom after 301 and 302, a POST goes on as a GET.
    if (status == 303 || (status <= 302 && m_request.method == "POST")) {
        m_request.method = "GET";
        m_request.body.reset();
        removeHeader(m_request, "content-type");
    }
    m_request.url = target;
    std::exchange(m_reply, nullptr)->deleteLater();
    send();
}

void URLExchange::succeed(int status)
{
    // The reply's whole content stands in Qt's buffer; one copy makes it ours.
    const QByteArray content = m_reply->readAll();
    complete(content.toStdString(), HTTPURLResponse{status, m_request.url.absoluteString()}, std::nullopt);
}

void URLExchange::fail(URLError::Kind kind, const QString& detail)
{
    QString text = sentence(kind, QString::fromStdString(m_request.url.host()));
    // A detail that repeats the address would show where the environment sent us in place of what was asked for.
    if (!detail.isEmpty() && !detail.contains(QLatin1String("://")) && kind != URLError::Kind::TimedOut) {
        text += QStringLiteral(" (%1)").arg(detail.simplified());
    }
    complete(std::nullopt, std::nullopt, URLError{kind, text.toStdString()});
}

void URLExchange::complete(std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                           std::optional<URLError> error)
{
    deleteLater();
    if (const auto completion = std::exchange(m_completion, nullptr)) {
        completion(std::move(data), std::move(response), std::move(error));
    }
}

} // namespace quillmate
