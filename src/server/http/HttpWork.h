#pragma once

#include "server/http/HttpMessage.h"

#include <QThreadPool>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <microhttpd.h>
#include <mutex>
#include <optional>

namespace quillmate::server
{

/// What answers requests.
class RequestHandler
{
public:
    RequestHandler() = default;
    RequestHandler(const RequestHandler&) = delete;
    RequestHandler& operator=(const RequestHandler&) = delete;
    virtual ~RequestHandler() = default;

    /// What becomes of a request when only its head is known: an answer at once, or a body of at most that many bytes
    /// and an answer that may take long.
    struct Admission {
        std::optional<HttpResponse> refusal;
        std::size_t bodyLimit = 0;
        bool isSlow = false;
    };
    /// Called on a thread of the sockets, on several at once; must be quick.
    [[nodiscard]] virtual Admission admit(const HttpRequest& head) const = 0;
    /// The server's own refusal of a request, as this request's sender should see it. As `admit`.
    [[nodiscard]] virtual HttpResponse refusal(const HttpRequest& head, const HttpResponse& failure) const = 0;
    /// Called on several threads at once: of the pool where the answer is slow, else of the sockets.
    virtual HttpResponse handle(const HttpRequest& request) = 0;
};

/// How much a server takes on.
struct HttpLimits {
    int slowAnswers = 4; ///< at once; the others wait
    /// A client waits for about a minute, and the answer needs the rest of it: what has waited longer is refused (503).
    std::chrono::milliseconds longestWait{30'000};
    /// From the opening of a connection to the end of a request's head.
    std::chrono::milliseconds requestTime{30'000};
    std::chrono::milliseconds shutDownTime{10'000};         ///< for what has been asked when the end comes
    std::size_t bodyBytes = std::size_t(512) * 1024 * 1024; ///< of all requests together
    unsigned connections = 10'000;                          ///< further ones wait for one of these to end
};

/// What all requests of a server share. Any thread.
class HttpWork
{
public:
    HttpWork(RequestHandler& answering, const HttpLimits& bounds)
        : handler(answering)
        , limits(bounds)
    {
        slowAnswers.setMaxThreadCount(limits.slowAnswers);
    }

    RequestHandler& handler;
    const HttpLimits limits;
    QThreadPool slowAnswers;
    std::atomic<std::size_t> bodyBytes = 0;
    std::atomic<bool> isEnding = false;

    void begin();
    void end();
    /// Whether nothing was being asked and answered any more by then.
    bool waitUntilDone(std::chrono::steady_clock::time_point latest);

    /// Suspends the connection and hands the work to the pool; false, with neither done, once `close` was called.
    bool answerSlowly(MHD_Connection* connection, std::function<void()> work);
    /// From here on no slow answer is begun: the library ends the process when it is stopped with a suspended
    /// connection.
    void close();

private:
    std::mutex m_mutex;
    std::condition_variable m_done;
    std::size_t m_running = 0;
    std::mutex m_slowMutex;
    bool m_isClosed = false;
};

} // namespace quillmate::server
