#include "localservice/HttpConnection.h"

#include "localservice/HttpServer.h"

#include <QDateTime>
#include <QLocale>
#include <QTcpSocket>

#include <chrono>
#include <utility>

namespace quillmate::localservice
{

namespace
{

using namespace std::chrono_literals;

// Longer than the pause between two polls of a client, so that those share a connection.
constexpr auto idleLimit = 75s;
constexpr auto headTimeLimit = 30s;
constexpr auto bodyPauseLimit = 30s;
constexpr auto writeLimit = 60s;
constexpr auto lingerLimit = 10s;
constexpr std::size_t smallBody = std::size_t(256) * 1024;
constexpr qint64 socketBuffer = qint64(256) * 1024;

// RFC 9110, 5.6.7.
std::string httpDate()
{
    return QLocale::c()
        .toString(QDateTime::currentDateTimeUtc(), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"))
        .toStdString();
}

QByteArray serialized(const HttpResponse& response, bool headOnly, bool keep)
{
    std::string text = "HTTP/1.1 " + std::to_string(response.status) + ' ';
    text += reasonPhrase(response.status);
    text += "\r\nDate: " + httpDate() + "\r\n";
    for (const auto& [name, value] : response.headers) {
        text.append(name).append(": ").append(value).append("\r\n");
    }
    text += "Content-Length: " + std::to_string(response.body.size()) + "\r\n";
    text += keep ? "Connection: keep-alive\r\n\r\n" : "Connection: close\r\n\r\n";
    if (!headOnly) {
        text += response.body;
    }
    return QByteArray::fromStdString(text);
}

} // namespace

HttpConnection::HttpConnection(HttpServer& server, QTcpSocket* socket, Listener listener)
    : QObject(&server)
    , m_server(server)
    , m_socket(socket)
    , m_listener(listener)
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(socketBuffer);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &HttpConnection::timedOut);
    connect(m_socket, &QTcpSocket::readyRead, this, &HttpConnection::readMore);
    connect(m_socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &QObject::deleteLater);
}

HttpConnection::~HttpConnection()
{
    *m_gone = true;
    m_socket->disconnect(this);
    m_server.accountBody(-m_accounted);
}

void HttpConnection::start()
{
    m_timer.start(headTimeLimit);
    if (m_socket->state() != QAbstractSocket::ConnectedState) {
        deleteLater();
        return;
    }
    readMore();
}

void HttpConnection::finish()
{
    // A request whose head is not even there has asked for nothing yet.
    if (m_state == State::Reading && !m_readingBody) {
        m_state = State::Closing;
        m_socket->disconnectFromHost();
    }
}

void HttpConnection::readMore()
{
    while (m_state != State::Answering && m_socket->bytesAvailable() > 0) {
        const QByteArray bytes = m_socket->read(socketBuffer);
        if (bytes.isEmpty()) {
            return;
        }
        if (m_state == State::Closing) {
            continue;
        }
        if (!m_parser.midRequest()) {
            m_timer.start(headTimeLimit);
        } else if (m_readingBody) {
            m_timer.start(bodyPauseLimit);
        }
        m_parser.append({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        advance();
    }
}

void HttpConnection::advance()
{
    while (m_state == State::Reading) {
        const HttpParser::Event event = m_parser.advance();
        accountBody();
        if (m_state != State::Reading) {
            return;
        }
        switch (event) {
        case HttpParser::Event::NeedMore:
            return;
        case HttpParser::Event::Failed:
            reply(m_refusal.value_or(m_server.handler().refusal(m_parser.request(), m_parser.failure())), m_headOnly,
                  false);
            return;
        case HttpParser::Event::HeadReady:
            if (!admitHead()) {
                return;
            }
            break;
        case HttpParser::Event::Complete:
            m_readingBody = false;
            answer();
            break;
        }
    }
}

bool HttpConnection::admitHead()
{
    m_readingBody = true;
    m_headOnly = m_parser.request().headOnly;
    HttpRequest head = m_parser.request();
    head.listener = m_listener;
    RequestHandler::Admission admission = m_server.handler().admit(head);
    const std::optional<std::size_t> length = m_parser.remainingLength();
    if (admission.refusal) {
        // A small body is read to its end, so that the connection can carry the next request; no other is waited for.
        if (m_parser.expectsContinue() || !length || *length > smallBody) {
            reply(*admission.refusal, m_headOnly, false);
            return false;
        }
        m_refusal = std::move(admission.refusal);
        m_parser.setBodyLimit(smallBody);
        return true;
    }
    m_parser.setBodyLimit(admission.bodyLimit);
    if (m_parser.expectsContinue() && length.value_or(0) <= admission.bodyLimit) {
        m_socket->write("HTTP/1.1 100 Continue\r\n\r\n");
    }
    return true;
}

void HttpConnection::answer()
{
    HttpRequest request = m_parser.takeRequest();
    request.listener = m_listener;
    const bool keep = m_parser.keepAlive();
    if (m_refusal) {
        const HttpResponse refusal = *std::exchange(m_refusal, std::nullopt);
        reply(refusal, m_headOnly, keep && !m_server.shuttingDown());
        return;
    }
    m_timer.stop();
    m_state = State::Answering;
    m_server.dispatch(std::move(request), m_gone, [this, keep](const HttpResponse& response) {
        reply(response, m_headOnly, keep && !m_server.shuttingDown());
        if (m_state == State::Reading) {
            advance();
            readMore();
        }
    });
}

void HttpConnection::accountBody()
{
    const auto held = static_cast<qint64>(m_parser.request().body.size());
    const qint64 change = held - m_accounted;
    if (change == 0) {
        return;
    }
    m_accounted = held;
    if (!m_server.accountBody(change) && change > 0) {
        reply(errorResponse(503, "The service has too much to do: try again in a moment."), false, false);
    }
}

void HttpConnection::reply(const HttpResponse& response, bool headOnly, bool keep)
{
    if (m_state == State::Closing) {
        return;
    }
    m_server.accountBody(-m_accounted);
    m_accounted = 0;
    m_socket->write(serialized(response, headOnly, keep));
    if (keep) {
        m_state = State::Reading;
        m_timer.start(idleLimit);
        return;
    }
    m_state = State::Closing;
    closeAfterWriting();
}

void HttpConnection::closeAfterWriting()
{
    // A client that is still sending must get to read the answer: closing with unread bytes would reset the connection
    // and take the answer with it. So what comes is thrown away for a while.
    const bool clientMayBeSending = m_readingBody;
    m_timer.start(clientMayBeSending ? lingerLimit : writeLimit);
    m_parser = {};
    if (clientMayBeSending) {
        readMore();
    } else {
        m_socket->disconnectFromHost();
    }
}

void HttpConnection::timedOut()
{
    if (m_state == State::Reading && m_parser.midRequest()) {
        reply(errorResponse(408, "The request did not arrive in time."), false, false);
        m_socket->disconnectFromHost();
        return;
    }
    // Deleting the socket with the connection ends it, whatever is still unwritten.
    deleteLater();
}

} // namespace quillmate::localservice
