#include "localservice/HttpServer.h"

#include "localservice/HttpConnection.h"

#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <exception>

namespace quillmate::localservice
{

namespace
{

constexpr int connectionLimit = 256;
constexpr qint64 bodyBytesLimit = qint64(512) * 1024 * 1024;
constexpr std::chrono::seconds shutDownLimit{10};

HttpResponse tooBusy()
{
    HttpResponse response = errorResponse(503, "The service has too much to do: try again in half a minute.");
    response.headers.emplace_back("Retry-After", "30");
    return response;
}

} // namespace

HttpServer::HttpServer(RequestHandler& handler, int answerThreads, std::chrono::milliseconds longestWait)
    : m_handler(handler)
    , m_longestWait(longestWait)
    , m_pool(std::make_unique<AnswerPool>(answerThreads))
{
}

HttpServer::~HttpServer()
{
    m_pool.reset();
    // While there is still a server for them to count off from.
    qDeleteAll(findChildren<HttpConnection*>(QString(), Qt::FindDirectChildrenOnly));
}

bool HttpServer::listenSecurely(const QHostAddress& address, quint16 port, const QSslConfiguration& configuration)
{
    m_secure = std::make_unique<QSslServer>();
    m_secure->setSslConfiguration(configuration);
    // Qt's own 30 counts those that have not finished their handshake: idle ones would keep everybody out.
    m_secure->setMaxPendingConnections(connectionLimit);
    connect(m_secure.get(), &QTcpServer::pendingConnectionAvailable, this,
            [this] { acceptFrom(*m_secure, Listener::Service); });
    if (!m_secure->listen(address, port)) {
        m_errorText = m_secure->errorString();
        return false;
    }
    return true;
}

bool HttpServer::listenForLoginPages()
{
    m_login = std::make_unique<QTcpServer>();
    m_login->setMaxPendingConnections(connectionLimit);
    connect(m_login.get(), &QTcpServer::pendingConnectionAvailable, this,
            [this] { acceptFrom(*m_login, Listener::LoginPages); });
    if (!m_login->listen(QHostAddress(QHostAddress::LocalHost), 0)) {
        m_errorText = m_login->errorString();
        return false;
    }
    return true;
}

void HttpServer::setTlsConfiguration(const QSslConfiguration& configuration)
{
    if (m_secure) {
        m_secure->setSslConfiguration(configuration);
    }
}

quint16 HttpServer::securePort() const
{
    return m_secure ? m_secure->serverPort() : quint16(0);
}

quint16 HttpServer::loginPort() const
{
    return m_login ? m_login->serverPort() : quint16(0);
}

void HttpServer::acceptFrom(QTcpServer& server, Listener listener)
{
    while (QTcpSocket* socket = server.nextPendingConnection()) {
        if (m_shuttingDown || m_connections >= connectionLimit) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        ++m_connections;
        auto* connection = new HttpConnection(*this, socket, listener);
        connect(connection, &QObject::destroyed, this, &HttpServer::connectionEnded);
        connection->start();
    }
}

void HttpServer::connectionEnded()
{
    --m_connections;
    announceIfDrained();
}

void HttpServer::announceIfDrained()
{
    if (m_shuttingDown && m_connections == 0) {
        Q_EMIT drained();
    }
}

void HttpServer::shutDown()
{
    if (m_shuttingDown) {
        return;
    }
    m_shuttingDown = true;
    m_end.setRemainingTime(shutDownLimit);
    for (QTcpServer* server : {static_cast<QTcpServer*>(m_secure.get()), m_login.get()}) {
        if (server != nullptr) {
            server->close();
        }
    }
    for (HttpConnection* connection : findChildren<HttpConnection*>(QString(), Qt::FindDirectChildrenOnly)) {
        connection->finish();
    }
    // A client that does not read its answer must not keep the program.
    QTimer::singleShot(shutDownLimit, this, &HttpServer::drained);
    QTimer::singleShot(0, this, &HttpServer::announceIfDrained);
}

bool HttpServer::waitForAnswers()
{
    return m_pool->stop(std::chrono::milliseconds(m_end.remainingTime()));
}

HttpResponse HttpServer::answered(const HttpRequest& request)
{
    try {
        return m_handler.handle(request);
    } catch (const std::exception& error) {
        qCritical("quillmate-service: %s failed: %s", request.path.c_str(), error.what());
        return errorResponse(500, "The service could not answer: its log says why.");
    }
}

void HttpServer::dispatch(HttpRequest request, Gone gone, std::function<void(HttpResponse)> done)
{
    // A person waits for the sign-in's form as for its page.
    const bool quick = request.method == "GET" || request.listener == Listener::LoginPages;
    const auto urgency = quick ? AnswerPool::Urgency::Quick : AnswerPool::Urgency::Ordinary;
    auto shared = std::make_shared<HttpRequest>(std::move(request));
    const QDeadlineTimer latest = quick ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(m_longestWait);
    auto task = [this, shared, quick, latest, gone = std::move(gone), done = std::move(done)]() mutable {
        if (!quick && *gone) {
            return;
        }
        HttpResponse response = latest.hasExpired() ? tooBusy() : answered(*shared);
        // The server waits for its pool before it goes, so `this` is alive here; the connection may be gone.
        {
            const std::lock_guard lock(m_answeredMutex);
            m_answered.emplace_back([gone = std::move(gone), done = std::move(done), response = std::move(response)] {
                if (!*gone) {
                    done(response);
                }
            });
        }
        QMetaObject::invokeMethod(this, &HttpServer::deliver, Qt::QueuedConnection);
    };
    m_pool->start(std::move(task), urgency);
}

void HttpServer::deliver()
{
    std::deque<std::function<void()>> answered;
    {
        const std::lock_guard lock(m_answeredMutex);
        answered.swap(m_answered);
    }
    for (const auto& answer : answered) {
        answer();
    }
}

bool HttpServer::accountBody(qint64 change)
{
    m_bodyBytes += change;
    return m_bodyBytes <= bodyBytesLimit;
}

} // namespace quillmate::localservice
