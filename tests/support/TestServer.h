#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <QThread>

namespace quillmate
{

class TestServerThread;

/// A request as the server received it.
struct ReceivedRequest {
    std::string method;
    std::string target;
    /// Names in lower case.
    std::map<std::string, std::string> headers;
    std::string body;
    /// Which connection brought it, counted from 1.
    int connection = 0;
};

/// What the server does with a request.
struct TestReply {
    enum class Manner {
        Ordinary,
        CutInBody,   ///< Promises the whole body and closes after half of it.
        Garbage,     ///< Sends the body's bytes in place of a reply.
        Silence,     ///< Keeps the connection and says nothing.
        CloseAtOnce, ///< Closes without a word.
        HintsFirst,  ///< Sends 103 (RFC 8297) a moment before the reply.
        NotifyEnd,   ///< Ends TLS behind the reply, with close_notify alone: the connection stays.
        Drip,        ///< Sends the body's first byte again and again, without an end.
    };
    int status = 200;
    std::string body = {};
    std::vector<std::pair<std::string, std::string>> headers = {};
    Manner manner = Manner::Ordinary;
};

/// A real HTTPS server on the loopback interface, on a thread of its own. It offers HTTP/2, as most do, and understands
/// HTTP/1.1 alone.
class TestServer
{
public:
    enum class Security { Trusted, Stranger };

    explicit TestServer(Security security = Security::Trusted);
    ~TestServer();
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    [[nodiscard]] std::uint16_t port() const { return m_port; }
    /// Queues a reply for a method and target ("GET /api/v1/me"); the last one queued for it is given again and again.
    /// A request without a reply gets 404.
    void reply(const std::string& request, TestReply reply);
    void reply(const std::string& request, std::string body) { reply(request, TestReply{200, std::move(body)}); }
    /// Ends every connection; what was on its way is lost.
    void dropConnections();
    /// Ends that many of the connections to come before a word is said.
    void refuseConnections(int count);
    /// Forgets the replies and the requests.
    void reset();
    /// No request is taken in, nor answered, while the lock is held.
    [[nodiscard]] std::unique_lock<std::mutex> hold() { return std::unique_lock(m_held); }
    /// What has been received, in order.
    [[nodiscard]] std::vector<ReceivedRequest> requests() const;
    /// The same as "METHOD TARGET".
    [[nodiscard]] std::vector<std::string> lines() const;
    [[nodiscard]] int connections() const;
    /// Those that have not ended.
    [[nodiscard]] int openConnections() const;

private:
    friend class TestServerThread;
    TestReply answer(ReceivedRequest request);
    /// Whether the connection is welcome.
    bool connected();
    void disconnected();

    std::mutex m_held; // Taken before m_mutex.
    mutable std::mutex m_mutex;
    std::map<std::string, std::deque<TestReply>> m_replies;
    std::vector<ReceivedRequest> m_requests;
    int m_connections = 0;
    int m_open = 0;
    int m_refused = 0; // To come.
    std::uint16_t m_port = 0;
    QThread m_thread;
    TestServerThread* m_server = nullptr; // Lives on the thread, deleted as it ends.
};

} // namespace quillmate
