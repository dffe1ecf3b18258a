#include "server/FakeModel.h"

#include <QJsonDocument>
#include <QTcpSocket>

#include <utility>

using namespace Qt::StringLiterals;

namespace quillmate::server
{

QJsonObject FakeModel::Request::json() const
{
    return QJsonDocument::fromJson(body).object();
}

QString FakeModel::Request::content(qsizetype index) const
{
    const QJsonArray messages = json()[u"messages"_s].toArray();
    return messages[index < 0 ? messages.size() + index : index].toObject()[u"content"_s].toString();
}

FakeModel::FakeModel(Answer answer)
    : FakeModel(std::move(answer), std::make_unique<QTcpServer>())
{
}

FakeModel::FakeModel(Answer answer, std::unique_ptr<QTcpServer> server)
    : other([](const Request&) { return http(404, "{}"); })
    , m_answer(std::move(answer))
    , m_server(std::move(server))
{
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket* socket = m_server->nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    m_server->listen(QHostAddress(QHostAddress::LocalHost));
}

std::string FakeModel::url(const char* scheme) const
{
    return std::string(scheme) + "://127.0.0.1:" + std::to_string(m_server->serverPort());
}

QByteArray FakeModel::http(int status, const QByteArray& body, const QByteArray& headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Reason\r\nContent-Type: application/json\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray FakeModel::completion(const QString& text, int promptTokens, const char* finish)
{
    const QJsonObject choice = {{u"finish_reason"_s, QString::fromUtf8(finish)},
                                {u"message"_s, QJsonObject{{u"role"_s, u"assistant"_s}, {u"content"_s, text}}}};
    QJsonObject whole = {{u"choices"_s, QJsonArray{choice}}};
    if (promptTokens > 0) {
        whole[u"usage"_s] = QJsonObject{{u"prompt_tokens"_s, promptTokens}};
    }
    return http(200, QJsonDocument(whole).toJson(QJsonDocument::Compact));
}

void FakeModel::read(QTcpSocket& socket)
{
    const QByteArray bytes = socket.peek(socket.bytesAvailable());
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    if (end < 0) {
        return;
    }
    Request request;
    request.head = bytes.left(end);
    const qsizetype length = request.head.toLower().indexOf("content-length:");
    const qsizetype size = length < 0 ? 0 : request.head.mid(length + 15).split('\r').first().trimmed().toLongLong();
    if (bytes.size() < end + 4 + size) {
        return;
    }
    socket.read(end + 4 + size);
    request.path = request.head.split(' ').at(1);
    request.body = bytes.mid(end + 4, size);
    const bool completes = request.path.endsWith("/chat/completions");
    if (completes) {
        asked.push_back(request);
    }
    const QByteArray answer = completes ? m_answer(request) : other(request);
    if (answer == hangUp) {
        socket.close();
    } else {
        socket.write(answer);
    }
}

} // namespace quillmate::server
