#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QSslCertificate>
#include <QString>
#include <QTcpSocket>

#include <memory>

namespace quillmate::server
{

/// One response as it came over the wire.
struct Reply {
    int status = 0; ///< 0 when none came
    QByteArray head;
    QByteArray body;

    [[nodiscard]] QByteArray header(const QByteArray& name) const;
    [[nodiscard]] QJsonObject json() const;
};

/// One connection, driven byte by byte, so that a test can send what no library would.
class HttpExchange
{
public:
    /// TLS, verified for `host` with `root` as the only trust.
    static HttpExchange secure(quint16 port, const QString& host, const QSslCertificate& root,
                               const QString& address = QStringLiteral("127.0.0.1"));
    /// Plain TCP to 127.0.0.1.
    static HttpExchange plain(quint16 port);

    void send(const QByteArray& bytes);
    /// Reads one whole response; that to a HEAD request has no body.
    Reply receive(bool toHead = false);
    Reply request(const QByteArray& head, const QByteArray& body = {});
    /// Whether the other side has ended the connection by now.
    bool hasEnded();
    /// Whether the other side ends the connection.
    bool waitForEnd();

private:
    explicit HttpExchange(std::unique_ptr<QTcpSocket> socket)
        : m_socket(std::move(socket))
    {
    }

    std::unique_ptr<QTcpSocket> m_socket;
    QByteArray m_buffer;
};

} // namespace quillmate::server
