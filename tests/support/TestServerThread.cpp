#include "support/TestServerThread.h"

#include "base/CryptographyEnd.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QTimer>

#include <unistd.h>

namespace quillmate
{
namespace
{

QByteArray readFile(const QString& name)
{
    QFile file(TestEnvironment::certificateFile(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::string text(const QByteArray& bytes)
{
    return bytes.trimmed().toStdString();
}

} // namespace

TestServerThread::TestServerThread(TestServer& owner, TestServer::Security security)
    : m_owner(owner)
    , m_configuration([] {
        leaveCryptographyToProcessEnd(); // Before the first word to it.
        return QSslConfiguration::defaultConfiguration();
    }())
{
    const auto name =
        security == TestServer::Security::Stranger ? QStringLiteral("stranger") : QStringLiteral("server");
    m_configuration.setLocalCertificate(QSslCertificate(readFile(name + QStringLiteral(".pem"))));
    m_configuration.setPrivateKey(QSslKey(readFile(name + QStringLiteral(".key")), QSsl::Ec));
    m_configuration.setAllowedNextProtocols(
        {QSslConfiguration::ALPNProtocolHTTP2, QSslConfiguration::NextProtocolHttp1_1});
    if (!listen(QHostAddress::LocalHost)) {
        qFatal("The test server cannot listen: %s", qPrintable(errorString()));
    }
}

void TestServerThread::dropConnections()
{
    for (auto* socket : findChildren<QSslSocket*>()) {
        socket->abort();
    }
}

void TestServerThread::incomingConnection(qintptr descriptor)
{
    auto* socket = new QSslSocket(this);
    socket->setSslConfiguration(m_configuration);
    socket->setSocketDescriptor(descriptor);
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] { received(socket); });
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        m_owner.disconnected();
        socket->deleteLater();
    });
    if (m_owner.connected()) {
        socket->startServerEncryption();
    } else {
        socket->abort();
    }
}

void TestServerThread::received(QTcpSocket* socket)
{
    QByteArray bytes = socket->property("pending").toByteArray() + socket->readAll();
    for (;;) {
        const auto headEnd = bytes.indexOf("\r\n\r\n");
        if (headEnd < 0) {
            break;
        }
        ReceivedRequest request;
        const auto lines = bytes.left(headEnd).split('\n');
        const auto words = lines.front().trimmed().split(' ');
        request.method = text(words.value(0));
        request.target = text(words.value(1));
        for (const QByteArray& line : lines.mid(1)) {
            const auto colon = line.indexOf(':');
            // Only the line's end goes: what a value holds beyond one blank is the client's.
            const QByteArray value = line.mid(colon + 1).chopped(line.endsWith('\r') ? 1 : 0);
            request.headers[text(line.left(colon).toLower())] =
                (value.startsWith(' ') ? value.mid(1) : value).toStdString();
        }
        const auto length = QByteArray::fromStdString(request.headers["content-length"]).toLongLong();
        if (bytes.size() < headEnd + 4 + length) {
            break;
        }
        request.body = bytes.mid(headEnd + 4, length).toStdString();
        bytes.remove(0, headEnd + 4 + length);
        send(socket, m_owner.answer(std::move(request)));
    }
    socket->setProperty("pending", bytes);
}

void TestServerThread::send(QTcpSocket* socket, const TestReply& reply)
{
    const QByteArray body = QByteArray::fromStdString(reply.body);
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + " Told\r\n";
    for (const auto& [name, value] : reply.headers) {
        head += QByteArray::fromStdString(name + ": " + value) + "\r\n";
    }
    if (reply.status != 204) {
        head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    }
    head += "\r\n";
    switch (reply.manner) {
    case TestReply::Manner::Ordinary:
        socket->write(head + body);
        break;
    case TestReply::Manner::CutInBody:
        socket->write(head + body.left(body.size() / 2));
        socket->disconnectFromHost();
        break;
    case TestReply::Manner::Garbage:
        socket->write(body);
        socket->disconnectFromHost();
        break;
    case TestReply::Manner::Silence:
        break;
    case TestReply::Manner::CloseAtOnce:
        socket->disconnectFromHost();
        break;
    case TestReply::Manner::HintsFirst:
        socket->write("HTTP/1.1 103 Early Hints\r\nLink: </style.css>; rel=preload\r\n\r\n");
        QTimer::singleShot(10, socket, [socket, head, body] { socket->write(head + body); });
        break;
    case TestReply::Manner::NotifyEnd:
        socket->write(head + body);
        // A second descriptor keeps the connection when the socket closes its own.
        m_kept.push_back(std::make_unique<QFile>());
        m_kept.back()->open(dup(static_cast<int>(socket->socketDescriptor())), QIODevice::ReadOnly,
                            QFileDevice::AutoCloseHandle);
        socket->disconnectFromHost();
        break;
    case TestReply::Manner::Drip: {
        socket->write("HTTP/1.1 200 Told\r\nContent-Length: 1000000\r\n\r\n");
        auto* timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, socket, [socket, body] { socket->write(body.left(1)); });
        timer->start(5);
        break;
    }
    }
}

} // namespace quillmate
