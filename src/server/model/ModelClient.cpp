#include "server/model/ModelClient.h"

#include "base/UploadBody.h"

#include <QDateTime>
#include <QEventLoop>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace quillmate::server
{

namespace
{

constexpr qint64 largestBody = qint64(1024) * 1024;

ModelProblem problemOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::UnknownNetworkError: // no route, network down
        return ModelProblem::Unreachable;
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
        return ModelProblem::Proxy;
    case QNetworkReply::TimeoutError:
        return ModelProblem::NoConnection;
    case QNetworkReply::SslHandshakeFailedError:
        return ModelProblem::Untrusted;
    default:
        return ModelProblem::Broken;
    }
}

/// Retry-After (RFC 9110, 10.2.3) in seconds, at most a day; 0 where there is none.
int retryAfter(const QByteArray& value)
{
    constexpr qint64 longest = 86'400;
    bool isNumber = false;
    qint64 seconds = value.trimmed().toLongLong(&isNumber);
    if (!isNumber) {
        QByteArray date = value.trimmed();
        if (date.endsWith("GMT")) { // The zone of every HTTP date (RFC 9110, 5.6.7), which Qt reads as a number only.
            date.replace(date.size() - 3, 3, "+0000");
        }
        const QDateTime time = QDateTime::fromString(QString::fromLatin1(date), Qt::RFC2822Date);
        seconds = time.isValid() ? QDateTime::currentDateTimeUtc().secsTo(time) : 0;
    }
    return static_cast<int>(std::clamp<qint64>(seconds, 0, longest));
}

QNetworkRequest requestFor(const QUrl& url, const std::string& key)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("quillmate-service"));
    request.setRawHeader("Accept", "application/json");
    if (!key.empty()) {
        request.setRawHeader("Authorization", "Bearer " + QByteArray::fromStdString(key));
    }
    return request;
}

ModelClient::Outcome outcomeOf(QNetworkReply& reply)
{
    const ModelResponse response = {reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply.readAll(),
                                    retryAfter(reply.rawHeader("Retry-After"))};
    const bool isWhole = reply.error() == QNetworkReply::NoError || !response.isSuccess();
    if (response.status == 0 || !isWhole) {
        return Failure(problemOf(reply.error()));
    }
    return response;
}

} // namespace

ModelClient::ModelClient(std::string key, ModelLimits limits)
    : m_key(std::move(key))
    , m_limits(limits)
{
}

void ModelClient::end()
{
    m_isEnded = true;
    Q_EMIT ended();
}

ModelClient::Outcome ModelClient::get(const QUrl& url, QDeadlineTimer end)
{
    return exchange(url, nullptr, end);
}

ModelClient::Outcome ModelClient::post(const QUrl& url, const QByteArray& json, QDeadlineTimer end)
{
    return exchange(url, &json, end);
}

ModelClient::Outcome ModelClient::exchange(const QUrl& url, const QByteArray* json, QDeadlineTimer end)
{
    // A manager belongs to one thread and a pool's thread has none of its own; beside a model's time it costs nothing.
    QNetworkAccessManager manager;
    QEventLoop loop;
    // First this and then the question, so that no end comes between them.
    connect(this, &ModelClient::ended, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    if (m_isEnded) {
        return Failure(ModelProblem::Ended);
    }
    if (url.host() == QStringLiteral("localhost") || QHostAddress(url.host()).isLoopback()) {
        manager.setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    }
    QNetworkRequest request = requestFor(url, m_key);
    std::unique_ptr<UploadBody> body;
    if (json != nullptr) {
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        request.setHeader(QNetworkRequest::ContentLengthHeader, json->size());
        request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
        body = std::make_unique<UploadBody>(std::make_shared<std::string>(json->toStdString()));
    }
    const std::unique_ptr<QNetworkReply> reply(body ? manager.post(request, body.get()) : manager.get(request));

    std::optional<ModelProblem> broken;
    const auto breakOff = [&broken, &loop](ModelProblem problem) {
        broken = problem;
        loop.quit();
    };
    QTimer connecting;
    connecting.setSingleShot(true);
    connect(&connecting, &QTimer::timeout, &loop, [&] { breakOff(ModelProblem::NoConnection); });
    connecting.start(m_limits.connect);
    connect(reply.get(), &QNetworkReply::requestSent, &connecting, &QTimer::stop);
    // A long request is sent in pieces, the first of them when there is a connection.
    connect(reply.get(), &QNetworkReply::uploadProgress, &connecting, [&connecting](qint64 sent, qint64) {
        if (sent > 0) {
            connecting.stop();
        }
    });
    const std::chrono::milliseconds left(std::max<qint64>(end.remainingTime(), 0));
    QTimer::singleShot(left, &loop, [&] { breakOff(ModelProblem::Slow); });
    connect(reply.get(), &QNetworkReply::readyRead, &loop, [&] {
        if (reply->bytesAvailable() > largestBody) {
            breakOff(ModelProblem::Broken);
        }
    });
    connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished()) {
        loop.exec();
    }
    if (m_isEnded) {
        return Failure(ModelProblem::Ended);
    }
    return broken ? Outcome(Failure(*broken)) : outcomeOf(*reply);
}

} // namespace quillmate::server
