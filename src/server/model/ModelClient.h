#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QUrl>

#include <atomic>
#include <chrono>
#include <string>

namespace quillmate::server
{

/// How long a language model's server may take.
struct ModelLimits {
    std::chrono::milliseconds connect{5'000};
    std::chrono::milliseconds contextQuestion{5'000}; ///< the questions for the context's size, all together
    std::chrono::milliseconds answer{50'000};         ///< one whole text, below the minute for which the panel waits
};

/// Why nothing came back from a language model's server.
enum class ModelProblem {
    Unreachable,  ///< nobody there
    NoConnection, ///< nobody took the connection in time
    Slow,         ///< no whole answer in time
    Untrusted,    ///< TLS failed
    Proxy,        ///< the proxy on the way failed or refused
    Broken,       ///< not HTTP, cut off, or too large
    Ended,        ///< `end` was called
};

/// What a language model's server answered, whatever that is.
struct ModelResponse {
    int status = 0;
    QByteArray body;
    int retryAfterSeconds = 0; ///< 0 where it did not say

    [[nodiscard]] bool isSuccess() const { return status >= 200 && status <= 299; }
};

/// HTTP to a language model's server, the key with every request. Redirects are not followed, so that the key goes
/// nowhere else. Calls block and may come on several threads at once; none of them may be the main one. A body of
/// more than 1 MiB is not taken.
class ModelClient : public QObject
{
    Q_OBJECT

public:
    ModelClient(std::string key, ModelLimits limits);

    using Outcome = Result<ModelResponse, ModelProblem>;
    Outcome get(const QUrl& url, QDeadlineTimer end);
    Outcome post(const QUrl& url, const QByteArray& json, QDeadlineTimer end);
    [[nodiscard]] const ModelLimits& limits() const { return m_limits; }
    /// Whether there is a key.
    [[nodiscard]] bool hasKey() const { return !m_key.empty(); }

    /// Ends what is under way and whatever comes later. Any thread.
    void end();

Q_SIGNALS:
    void ended();

private:
    Outcome exchange(const QUrl& url, const QByteArray* json, QDeadlineTimer end);

    const std::string m_key;
    const ModelLimits m_limits;
    std::atomic<bool> m_isEnded = false;
};

} // namespace quillmate::server
