#include "server/HttpExchange.h"

#include <QJsonDocument>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>

#include <utility>

using namespace Qt::StringLiterals;

namespace quillmate::server
{

namespace
{

constexpr int waitMilliseconds = 60'000;

} // namespace

QByteArray Reply::header(const QByteArray& name) const
{
    for (const QByteArray& line : head.split('\n')) {
        if (line.toLower().startsWith(name.toLower() + ':')) {
            return line.mid(name.size() + 1).trimmed();
        }
    }
    return {};
}

QJsonObject Reply::json() const
{
    return QJsonDocument::fromJson(body).object();
}

HttpExchange HttpExchange::secure(quint16 port, const QString& host, const QSslCertificate& root,
                                  const QString& address)
{
    auto socket = std::make_unique<QSslSocket>();
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates({root});
    socket->setSslConfiguration(configuration);
    socket->setPeerVerifyName(host);
    socket->connectToHostEncrypted(address, port, host);
    socket->waitForEncrypted(waitMilliseconds);
    return HttpExchange(std::move(socket));
}

HttpExchange HttpExchange::plain(quint16 port)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(u"127.0.0.1"_s, port);
    socket->waitForConnected(waitMilliseconds);
    return HttpExchange(std::move(socket));
}

void HttpExchange::send(const QByteArray& bytes)
{
    m_socket->write(bytes);
    while (m_socket->bytesToWrite() > 0 && m_socket->waitForBytesWritten(waitMilliseconds)) {
    }
}

Reply HttpExchange::receive(bool toHead)
{
    Reply reply;
    qsizetype end = -1;
    while ((end = m_buffer.indexOf("\r\n\r\n")) < 0) {
        if (m_socket->bytesAvailable() == 0 && !m_socket->waitForReadyRead(waitMilliseconds)) {
            return reply;
        }
        m_buffer += m_socket->readAll();
    }
    reply.head = m_buffer.left(end);
    m_buffer.remove(0, end + 4);
    reply.status = reply.head.mid(9, 3).toInt();
    const qsizetype length = toHead ? 0 : reply.header("Content-Length").toLongLong();
    while (m_buffer.size() < length &&
           (m_socket->bytesAvailable() > 0 || m_socket->waitForReadyRead(waitMilliseconds))) {
        m_buffer += m_socket->readAll();
    }
    reply.body = m_buffer.left(length);
    m_buffer.remove(0, length);
    return reply;
}

Reply HttpExchange::request(const QByteArray& head, const QByteArray& body)
{
    QByteArray bytes = head;
    if (!body.isEmpty()) {
        bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    }
    send(bytes + "\r\n" + body);
    return receive(head.startsWith("HEAD"));
}

bool HttpExchange::hasEnded()
{
    m_socket->waitForReadyRead(0);
    return m_socket->state() != QAbstractSocket::ConnectedState;
}

bool HttpExchange::waitForEnd()
{
    return m_socket->state() == QAbstractSocket::UnconnectedState || m_socket->waitForDisconnected(waitMilliseconds);
}

} // namespace quillmate::server
