#pragma once

#include "localservice/HttpMessage.h"
#include "localservice/HttpParser.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

class QTcpSocket;

namespace quillmate::localservice
{

class HttpServer;

/// One client's connection: reads a request, has it answered, writes the answer, and so on, one at a time.
/// It deletes itself when the connection ends. Lives on the server's thread.
class HttpConnection : public QObject
{
    Q_OBJECT

public:
    /// Takes the socket over; the server becomes the parent.
    HttpConnection(HttpServer& server, QTcpSocket* socket, Listener listener);
    ~HttpConnection() override;

    void start();
    /// Ends after the answer that is under way, or at once when there is none.
    void finish();

private:
    enum class State {
        Reading,   ///< bytes go to the parser
        Answering, ///< the handler works; bytes wait in the socket
        Closing,   ///< the last answer is written; what still comes is thrown away
    };

    void readMore();
    void advance();
    /// Whether to read on; otherwise the answer is on its way.
    bool admitHead();
    void answer();
    void accountBody();
    void reply(const HttpResponse& response, bool headOnly, bool keep);
    void closeAfterWriting();
    void timedOut();

    HttpServer& m_server;
    QTcpSocket* m_socket;
    Listener m_listener;
    HttpParser m_parser;
    std::optional<HttpResponse> m_refusal;
    QTimer m_timer;
    State m_state = State::Reading;
    qint64 m_accounted = 0;
    const std::shared_ptr<std::atomic<bool>> m_gone = std::make_shared<std::atomic<bool>>(false);
    bool m_headOnly = false;
    bool m_readingBody = false;
};

} // namespace quillmate::localservice
