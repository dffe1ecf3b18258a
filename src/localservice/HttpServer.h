#pragma once

#include "localservice/AnswerPool.h"
#include "localservice/HttpMessage.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QObject>
#include <QSslConfiguration>
#include <QString>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class QSslServer;
class QTcpServer;

namespace quillmate::localservice
{

/// What answers requests.
class RequestHandler
{
public:
    RequestHandler() = default;
    RequestHandler(const RequestHandler&) = delete;
    RequestHandler& operator=(const RequestHandler&) = delete;
    virtual ~RequestHandler() = default;

    /// What becomes of a request when only its head is known: an answer at once, or a body of at most that many bytes.
    struct Admission {
        std::optional<HttpResponse> refusal;
        std::size_t bodyLimit = 0;
    };
    /// Called on the server's thread; must not block.
    [[nodiscard]] virtual Admission admit(const HttpRequest& head) const = 0;
    /// The server's own refusal of a request, as this request's sender should see it. Called on the server's thread;
    /// must not block.
    [[nodiscard]] virtual HttpResponse refusal(const HttpRequest& head, const HttpResponse& failure) const = 0;
    /// Called on a pool thread, on several at once.
    virtual HttpResponse handle(const HttpRequest& request) = 0;
};

/// A small HTTP/1.1 server: one thread for the sockets, a pool for the answers, so that work on one message never keeps
/// another request waiting. (The interface of Qt 6.4's own HTTP server has no limit on a body's size and none on idle
/// time, and a handler sees a request only once its body is in memory; hence this one.)
/// Bounds: 256 connections, as many in their handshake, 512 MiB of bodies at any one time.
class HttpServer : public QObject
{
    Q_OBJECT

public:
    static constexpr int usualAnswerThreads = 5;
    /// A client waits for about a minute, and the answer needs the rest of it.
    static constexpr std::chrono::milliseconds usualLongestWait{30'000};

    /// `handler` must outlive the server. Answers run on that many threads, one of them kept for what is quick. What
    /// is not quick and has waited longer for a thread is refused (503) instead of answered.
    explicit HttpServer(RequestHandler& handler, int answerThreads = usualAnswerThreads,
                        std::chrono::milliseconds longestWait = usualLongestWait);
    ~HttpServer() override;

    /// Accepts TLS connections; false with a reason in `errorText` when the address cannot be had. Port 0 takes any
    /// free one.
    bool listenSecurely(const QHostAddress& address, quint16 port, const QSslConfiguration& configuration);
    /// Accepts plain connections on 127.0.0.1 for the sign-in pages alone.
    bool listenForLoginPages();
    /// New connections use this certificate from now on.
    void setTlsConfiguration(const QSslConfiguration& configuration);
    [[nodiscard]] quint16 securePort() const;
    [[nodiscard]] quint16 loginPort() const;
    [[nodiscard]] QString errorText() const { return m_errorText; }

    /// Accepts nothing more, lets requests that are being answered finish, then emits `drained`, after ten seconds in
    /// any case.
    void shutDown();
    /// After `drained`: waits for the answers that still run, until ten seconds after `shutDown`. False when some run
    /// on; then the server cannot be destroyed without waiting for them.
    bool waitForAnswers();

    /// Set on the server's thread when a connection is gone.
    using Gone = std::shared_ptr<const std::atomic<bool>>;
    /// Runs the handler on the pool and `done` with its response on the server's thread, unless the client is gone by
    /// then; what is not quick is not even begun for a client that is gone.
    void dispatch(HttpRequest request, Gone gone, std::function<void(HttpResponse)> done);
    /// Counts body bytes held in memory; false when the bound is passed.
    bool accountBody(qint64 change);
    [[nodiscard]] RequestHandler& handler() const { return m_handler; }
    [[nodiscard]] bool shuttingDown() const { return m_shuttingDown; }

Q_SIGNALS:
    void drained();

private:
    void acceptFrom(QTcpServer& server, Listener listener);
    void connectionEnded();
    void announceIfDrained();
    void deliver();

    /// On a pool thread.
    [[nodiscard]] HttpResponse answered(const HttpRequest& request);

    RequestHandler& m_handler;
    const std::chrono::milliseconds m_longestWait;
    std::unique_ptr<QSslServer> m_secure;
    std::unique_ptr<QTcpServer> m_login;
    /// Answers on their way from the pool to this thread.
    std::mutex m_answeredMutex;
    std::deque<std::function<void()>> m_answered;
    std::unique_ptr<AnswerPool> m_pool;
    QString m_errorText;
    QDeadlineTimer m_end;
    qint64 m_bodyBytes = 0;
    int m_connections = 0;
    bool m_shuttingDown = false;
};

} // namespace quillmate::localservice
