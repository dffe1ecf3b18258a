#include "support/TestServer.h"

#include "support/TestServerThread.h"

namespace quillmate
{

TestServer::TestServer(Security security)
{
    m_server = new TestServerThread(*this, security);
    m_port = m_server->serverPort();
    m_server->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_server, &QObject::deleteLater);
    m_thread.start();
}

TestServer::~TestServer()
{
    m_thread.quit();
    m_thread.wait();
    const std::lock_guard lock(m_mutex); // Which the sanitizer sees, as it does not see the wait.
}

void TestServer::reply(const std::string& request, TestReply reply)
{
    const std::lock_guard lock(m_mutex);
    m_replies[request].push_back(std::move(reply));
}

void TestServer::dropConnections()
{
    // By its name: the thread sanitizer, which does not see how Qt hands over, would take a function's own data for
    // raced.
    QMetaObject::invokeMethod(m_server, "dropConnections", Qt::BlockingQueuedConnection);
}

void TestServer::reset()
{
    const std::lock_guard lock(m_mutex);
    m_replies.clear();
    m_requests.clear();
    m_refused = 0;
}

std::vector<ReceivedRequest> TestServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

std::vector<std::string> TestServer::lines() const
{
    std::vector<std::string> lines;
    for (const auto& request : requests()) {
        lines.push_back(request.method + " " + request.target);
    }
    return lines;
}

int TestServer::connections() const
{
    const std::lock_guard lock(m_mutex);
    return m_connections;
}

int TestServer::openConnections() const
{
    const std::lock_guard lock(m_mutex);
    return m_open;
}

void TestServer::refuseConnections(int count)
{
    const std::lock_guard lock(m_mutex);
    m_refused = count;
}

bool TestServer::connected()
{
    const std::lock_guard lock(m_mutex);
    ++m_connections;
    ++m_open;
    return m_refused == 0 || m_refused-- == 0;
}

void TestServer::disconnected()
{
    const std::lock_guard lock(m_mutex);
    --m_open;
}

TestReply TestServer::answer(ReceivedRequest request)
{
    const std::lock_guard held(m_held);
    const std::lock_guard lock(m_mutex);
    const auto found = m_replies.find(request.method + " " + request.target);
    request.connection = m_connections;
    m_requests.push_back(std::move(request));
    if (found == m_replies.end()) {
        return {404, R"({"error":"nothing here"})"};
    }
    TestReply reply = found->second.front();
    if (found->second.size() > 1) {
        found->second.pop_front();
    }
    return reply;
}

} // namespace quillmate
