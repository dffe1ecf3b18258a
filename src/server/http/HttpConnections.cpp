#include "server/http/HttpConnections.h"

#include <QTcpSocket>
#include <QTimer>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quillmate::server
{

bool HttpConnection::isGone() const
{
    pollfd state = {m_descriptor, POLLRDHUP, 0};
    return poll(&state, 1, 0) > 0;
}

HttpConnections::HttpConnections(std::chrono::milliseconds requestTime)
    : m_requestTime(requestTime)
{
    constexpr int looksPerLimit = 6;
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &HttpConnections::endOverdue);
    timer->start(requestTime / looksPerLimit);
}

HttpConnections::~HttpConnections() = default;

void HttpConnections::setIdentity(std::shared_ptr<TlsIdentity> identity)
{
    const std::lock_guard lock(m_mutex);
    m_identity = std::move(identity);
}

HttpConnection* HttpConnections::opened(int descriptor)
{
    const std::lock_guard lock(m_mutex);
    auto connection = std::make_unique<HttpConnection>(descriptor, m_identity);
    connection->expectRequest(m_requestTime);
    HttpConnection* key = connection.get();
    return m_connections.emplace(key, std::move(connection)).first->first;
}

void HttpConnections::closing(HttpConnection* connection)
{
    // A client that is still sending must get to read the answer: closing with unread bytes would reset the connection
    // and take the answer with it. So another descriptor keeps it for a while.
    pollfd unread = {connection->descriptor(), POLLIN | POLLRDHUP, 0};
    const bool mayBeSending = connection->lingers() || (poll(&unread, 1, 0) > 0 && unread.revents == POLLIN);
    const int kept = mayBeSending ? fcntl(connection->descriptor(), F_DUPFD_CLOEXEC, 0) : -1;
    if (kept >= 0) {
        shutdown(kept, SHUT_WR);
        QMetaObject::invokeMethod(this, [this, kept] { discard(kept); });
    }
    const std::lock_guard lock(m_mutex);
    m_connections.erase(connection);
}

void HttpConnections::endOverdue()
{
    // Under the lock the descriptor is still this connection's.
    const std::lock_guard lock(m_mutex);
    for (const auto& [connection, owner] : m_connections) {
        if (connection->isOverdue()) {
            shutdown(connection->descriptor(), SHUT_RDWR);
        }
    }
}

void HttpConnections::discard(int descriptor)
{
    constexpr std::chrono::seconds longest{10};
    auto* socket = new QTcpSocket(this);
    connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    QTimer::singleShot(longest, socket, &QObject::deleteLater);
    if (!socket->setSocketDescriptor(descriptor)) {
        close(descriptor);
    }
}

} // namespace quillmate::server
