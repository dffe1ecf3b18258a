#include "server/http/HttpConnections.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quillmate::server
{

namespace
{

gnutls_datum_t datum(const QByteArray& text)
{
    // The library only reads it.
    auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(text.data()));
    return {bytes, static_cast<unsigned>(text.size())};
}

} // namespace

std::unique_ptr<TlsIdentity> TlsIdentity::read(const ServerCertificate& pem)
{
    const gnutls_datum_t certificate = datum(pem.certificate);
    const gnutls_datum_t key = datum(pem.key);
    std::unique_ptr<TlsIdentity> identity(new TlsIdentity);
    const bool usable =
        gnutls_pcert_import_x509_raw(&identity->m_certificate, &certificate, GNUTLS_X509_FMT_PEM, 0) == 0 &&
        gnutls_privkey_init(&identity->m_key) == 0 &&
        gnutls_privkey_import_x509_raw(identity->m_key, &key, GNUTLS_X509_FMT_PEM, nullptr, 0) == 0;
    return usable ? std::move(identity) : nullptr;
}

TlsIdentity::~TlsIdentity()
{
    gnutls_pcert_deinit(&m_certificate);
    gnutls_privkey_deinit(m_key);
}

void TlsIdentity::give(gnutls_pcert_st** certificate, unsigned* count, gnutls_privkey_t* key)
{
    *certificate = &m_certificate;
    *count = 1;
    *key = m_key;
}

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
    // and take the answer with it. So another descriptor keeps it for a while, unless there are so many that clients
    // would use up the process's descriptors in this way.
    pollfd unread = {connection->descriptor(), POLLIN | POLLRDHUP, 0};
    const bool mayBeSending = connection->lingers() || (poll(&unread, 1, 0) > 0 && unread.revents == POLLIN);
    const int kept = mayBeSending && m_kept < mostKept ? fcntl(connection->descriptor(), F_DUPFD_CLOEXEC, 0) : -1;
    const std::lock_guard lock(m_mutex);
    m_connections.erase(connection);
    if (kept >= 0) {
        ++m_kept;
        shutdown(kept, SHUT_WR);
        m_ended.push_back(kept);
        QMetaObject::invokeMethod(this, "discardEnded", Qt::QueuedConnection);
    }
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

void HttpConnections::discardEnded()
{
    std::vector<int> ended;
    {
        const std::lock_guard lock(m_mutex);
        ended.swap(m_ended);
    }
    std::for_each(ended.begin(), ended.end(), [this](int descriptor) { discard(descriptor); });
}

void HttpConnections::discard(int descriptor)
{
    constexpr std::chrono::seconds longest{10};
    auto* socket = new QTcpSocket(this);
    connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QObject::destroyed, this, [this] { --m_kept; });
    QTimer::singleShot(longest, socket, &QObject::deleteLater);
    if (!socket->setSocketDescriptor(descriptor)) {
        close(descriptor);
    }
}

} // namespace quillmate::server
