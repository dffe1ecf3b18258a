#include "platform/foundation/net/URLExchange.h"

#include "base/UploadBody.h"
#include "platform/foundation/net/Gzip.h"
#include "platform/foundation/net/URLManagers.h"

#include <QNetworkRequest>
#include <QTimer>
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
constexpr int mostResends = 2;
// Far above any reply of the service; an endless one must not fill the memory.
constexpr qint64 longestReply = 64LL * 1024 * 1024;

/// A line break inside a header would begin another one.
bool hasBrokenHeader(const URLRequest& request)
{
    return std::any_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
        return (header.first + header.second).find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos;
    });
}

/// What the reply's bytes stand for; absent when that cannot be told.
std::optional<std::string> decoded(const QByteArray& content, const std::string& coding)
{
    // Text shrinks by less than that; a reply that shrank more is made to fill the memory.
    constexpr qsizetype mostGrowth = 40;
    constexpr qsizetype harmless = 10LL * 1024 * 1024;
    if (content.isEmpty() || coding.empty() || coding == "identity") {
        return content.toStdString();
    }
    return coding == "gzip" || coding == "x-gzip"
               ? gunzip(
                     std::string_view(content.data(), static_cast<std::size_t>(content.size())),
                     static_cast<std::size_t>(std::clamp<qint64>(content.size() * mostGrowth, harmless, longestReply)))
               : std::nullopt;
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
    case URLError::Kind::ForeignRedirect:
        return QStringLiteral("%1 asked to send the request's content to another server.").arg(host);
    case URLError::Kind::DataTooLarge:
        return QStringLiteral("The reply of %1 is too large.").arg(host);
    case URLError::Kind::Unknown:
        break;
    }
    return QStringLiteral("The request to %1 failed.").arg(host);
}

/// Whether the reply came whole, with whatever final status. Qt also reports a status as an error; those from 201 on,
/// but for two about the protocol itself, are statuses, and so is 407, which it files under the proxy's errors. An
/// interim reply (RFC 9110, section 15.2) other than 100 is the last one to Qt.
bool isWholeReply(QNetworkReply::NetworkError error, int status)
{
    constexpr int proxyAuthenticationRequired = 407;
    if (status < 200) {
        return false;
    }
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
    , m_keptPeriod(managers.keptReplies().period())
{
}

URLExchange::~URLExchange()
{
    delete m_reply; // A manager waits for its own thread, which may be waiting for a request's body here.
}

void URLExchange::send()
{
    if (hasBrokenHeader(m_request)) {
        fail(URLError::Kind::BadRequest, {});
        return;
    }
    if (auto kept = m_managers.keptReplies().find(m_request)) {
        complete(std::move(kept), HTTPURLResponse{200, m_request.url.absoluteString()}, std::nullopt);
        return;
    }
    QUrl target = QUrl::fromEncoded(QByteArray::fromStdString(m_request.url.absoluteString()));
    const QByteArray host = QByteArray::fromStdString(m_request.url.host());

    QNetworkRequest request;
    request.setSslConfiguration(m_managers.security());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setTransferTimeout(static_cast<int>(m_request.timeoutInterval * 1000));
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Quillmate/" QUILLMATE_VERSION));
    request.setRawHeader("Accept-Encoding", "gzip"); // Decoded here: Qt takes broken content for good.

    const auto& connectTo = m_managers.environment().connectTo;
    if (const auto mapped = connectTo.find(m_request.url.host()); mapped != connectTo.end()) {
        const bool https = m_request.url.scheme() == "https";
        const int port = m_request.url.effectivePort();
        const bool ordinary = port == (https ? 443 : 80);
        request.setRawHeader("Host", ordinary ? host : host + ':' + QByteArray::number(port));
        request.setPeerVerifyName(QString::fromLatin1(host));
        target.setHost(QString::fromStdString(mapped->second.address));
        target.setPort(mapped->second.port);
    }
    request.setUrl(target);
    for (const auto& [name, value] : m_request.headers) {
        request.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }

    m_manager = m_managers.makeManager();
    m_headLeft = false;
    m_refusal.reset();
    m_body = nullptr;
    if (m_request.method == "GET") {
        m_reply = m_manager->get(request);
    } else {
        auto body = std::make_unique<UploadBody>(m_request.body ? m_request.body : std::make_shared<std::string>());
        // The length must be known beforehand, or all of it is read ahead, and could be sent again.
        request.setHeader(QNetworkRequest::ContentLengthHeader, body->bytesAvailable());
        request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        m_reply = m_manager->sendCustomRequest(request, QByteArray::fromStdString(m_request.method), body.get());
        m_body = body.get();
        body.release()->setParent(m_reply);
    }
    m_reply->setParent(this);
    connect(m_reply, &QNetworkReply::requestSent, this, [this] { m_headLeft = true; });
    connect(m_reply, &QNetworkReply::socketStartedConnecting, this, &URLExchange::connecting);
    connect(m_reply, &QNetworkReply::encrypted, this, &URLExchange::connecting);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &URLExchange::headReceived);
    connect(m_reply, &QNetworkReply::readyRead, this, &URLExchange::received);
    connect(m_reply, &QNetworkReply::finished, this, &URLExchange::finished);
}

/// Whether the server may have the request. One whose content is missing is none yet.
bool URLExchange::hasLeft() const
{
    return m_body ? m_body->wasRead() : m_headLeft;
}

void URLExchange::connecting()
{
    // Qt sends a request again by itself when the connection ends before the reply begins. Over TLS it waits here
    // before it does.
    if (hasLeft()) {
        refuse(URLError::Kind::NetworkConnectionLost);
    }
}

void URLExchange::headReceived()
{
    // Of a head with more than 256 KiB or 100 headers Qt keeps the status alone, and waits for content without an end.
    constexpr int noContent = 204;
    if (m_reply->rawHeaderPairs().isEmpty() &&
        m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() != noContent) {
        refuse(URLError::Kind::DataTooLarge);
        return;
    }
    QTimer::singleShot(m_managers.limits().longestReply, m_reply, [this] { refuse(URLError::Kind::TimedOut); });
}

void URLExchange::received()
{
    if (m_reply->bytesAvailable() > longestReply) {
        refuse(URLError::Kind::DataTooLarge);
    }
}

void URLExchange::refuse(URLError::Kind kind)
{
    if (m_reply && m_reply->isRunning()) {
        m_refusal = kind;
        m_reply->abort();
    }
}

void URLExchange::finished()
{
    const auto error = m_reply->error();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    auto failure = m_refusal;
    if (!failure && !isWholeReply(error, status)) {
        failure = error == QNetworkReply::NoError ? URLError::Kind::BadServerResponse : kindOf(error);
    }
    if (failure == URLError::Kind::NetworkConnectionLost && !hasLeft() && m_resends < mostResends) {
        ++m_resends;
        sendAnew();
        return;
    }
    if (failure) {
        // What Qt says of a body that it cannot send again is of no use to a user, nor is its word for no error.
        const bool explained =
            !m_refusal && error != QNetworkReply::ContentReSendError && error != QNetworkReply::NoError;
        fail(*failure, explained ? m_reply->errorString() : QString());
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

void URLExchange::sendAnew()
{
    // Both are still telling the reply's end, and the reply goes first.
    std::exchange(m_reply, nullptr)->deleteLater();
    m_manager.release()->deleteLater();
    send();
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
    // RFC 9110, sections 15.4.2 to 15.4.4: after 303, and by custom after 301 and 302, a POST goes on as a GET.
    if (status == 303 || (status <= 302 && m_request.method == "POST")) {
        m_request.method = "GET";
        m_request.body.reset();
        removeHeader(m_request, "content-type");
    }
    if (target.origin() != m_request.url.origin()) {
        if (m_request.body && !m_request.body->empty()) {
            fail(URLError::Kind::ForeignRedirect, {});
            return;
        }
        removeHeader(m_request, "authorization");
    }
    m_request.url = target;
    sendAnew();
}

void URLExchange::succeed(int status)
{
    // The reply's whole content stands in Qt's buffer; one copy makes it ours.
    const QByteArray coding = m_reply->rawHeader("Content-Encoding").trimmed().toLower();
    auto content = decoded(m_reply->readAll(), coding.toStdString());
    if (!content) {
        fail(URLError::Kind::BadServerResponse, {});
        return;
    }
    m_managers.keptReplies().keep(m_request, m_keptPeriod, *m_reply, *content);
    complete(std::move(content), HTTPURLResponse{status, m_request.url.absoluteString()}, std::nullopt);
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
