#include <openssl/ssl.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <netinet/tcp.h>
#include <stdexcept>
#include <string>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// One connection to a port of this machine, with TLS or without. Whatever goes wrong throws.
class Connection
{
public:
    Connection(int port, SSL_CTX* tls)
        : m_descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval patience = {10, 0};
        setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        const int on = 1;
        setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        check(connect(m_descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
        if (tls != nullptr) {
            m_tls.reset(SSL_new(tls));
            SSL_set_fd(m_tls.get(), m_descriptor);
            check(SSL_connect(m_tls.get()) == 1);
        }
    }
    ~Connection() { close(m_descriptor); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    void send(const std::string& bytes)
    {
        const int size = static_cast<int>(bytes.size());
        check(m_tls ? SSL_write(m_tls.get(), bytes.data(), size) == size
                    : write(m_descriptor, bytes.data(), bytes.size()) == size);
    }
    /// Reads what is there; whether it ends a reply.
    bool receive()
    {
        std::array<char, 16384> bytes{};
        const int count = m_tls ? SSL_read(m_tls.get(), bytes.data(), bytes.size())
                                : static_cast<int>(read(m_descriptor, bytes.data(), bytes.size()));
        if (count <= 0) {
            check(m_tls && SSL_get_error(m_tls.get(), count) == SSL_ERROR_WANT_READ);
            return false;
        }
        m_reply.append(bytes.data(), static_cast<std::size_t>(count));
        const std::size_t head = m_reply.find("\r\n\r\n");
        const std::size_t length = m_reply.find("Content-Length: ");
        return head != std::string::npos && length < head &&
               m_reply.size() >= head + 4 + static_cast<std::size_t>(std::atol(&m_reply[length + 16]));
    }
    std::string takeReply() { return std::exchange(m_reply, {}); }
    /// A request and its whole reply.
    std::string ask(const std::string& request)
    {
        send(request);
        while (!receive()) {
        }
        return takeReply();
    }

private:
    struct Freer {
        void operator()(SSL* tls) const { SSL_free(tls); }
    };
    static void check(bool went)
    {
        if (!went) {
            throw std::runtime_error("a connection failed");
        }
    }

    int m_descriptor;
    std::unique_ptr<SSL, Freer> m_tls;
    std::string m_reply;
};

/// What stands between two texts.
std::string between(const std::string& text, const std::string& before, const std::string& after)
{
    const std::size_t begin = text.find(before);
    if (begin == std::string::npos) {
        throw std::runtime_error("no " + before + " in " + text);
    }
    const std::size_t start = begin + before.size();
    return text.substr(start, text.find(after, start) - start);
}

struct Service {
    int port = 0;
    SSL_CTX* tls = nullptr;
    std::string request;
};

/// Signs in as a browser does, for the request that is measured.
Service signedIn(int port, SSL_CTX* tls)
{
    const std::string start = "/plugin-auth/session-request/";
    const std::string host = " HTTP/1.1\r\nHost: 127.0.0.1:";
    const std::string end = host + std::to_string(port) + "\r\n\r\n";
    const std::string session = Connection(port, tls).ask("GET " + start + end);
    const std::string loginPort = between(session, "http://127.0.0.1:", "/");
    const std::string page = between(session, ":" + loginPort, "\"");
    const std::string loginEnd = host + loginPort + "\r\n";
    const std::string form = "name=Anna&email=anna%40example.org&form_token=" +
                             between(Connection(std::stoi(loginPort), nullptr).ask("GET " + page + loginEnd + "\r\n"),
                                     "name=\"form_token\" value=\"", "\"");
    Connection(std::stoi(loginPort), nullptr)
        .ask("POST " + page + loginEnd + "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
             std::to_string(form.size()) + "\r\n\r\n" + form);
    const std::string poll = Connection(port, tls).ask("GET " + start + between(session, "\"id\":\"", "\"") + end);
    const std::string token = between(poll, "\"access_token\":\"", "\"");
    return {port, tls,
            "GET /api/v1/me" + host + std::to_string(port) + "\r\nAuthorization: Bearer " + token + "\r\n\r\n"};
}

/// Keeps one request on its way on each of the connections; how many were answered.
long answeredOn(std::vector<std::unique_ptr<Connection>>& connections, const std::string& request,
                Clock::time_point end)
{
    const int readiness = epoll_create1(EPOLL_CLOEXEC);
    for (const auto& connection : connections) {
        fcntl(connection->descriptor(), F_SETFL, O_NONBLOCK);
        epoll_event event = {EPOLLIN, {connection.get()}};
        epoll_ctl(readiness, EPOLL_CTL_ADD, connection->descriptor(), &event);
        connection->send(request);
    }
    long answered = 0;
    std::array<epoll_event, 64> events{};
    while (Clock::now() < end) {
        const int count = epoll_wait(readiness, events.data(), events.size(), 1000);
        for (int index = 0; index < count; ++index) {
            auto& connection = *static_cast<Connection*>(events[static_cast<std::size_t>(index)].data.ptr);
            if (connection.receive()) {
                answered += connection.takeReply().rfind("HTTP/1.1 200", 0) == 0 ? 1 : 0;
                connection.send(request);
            }
        }
    }
    close(readiness);
    return answered;
}

double requestsPerSecond(const Service& service, int count)
{
    constexpr auto measured = 2s;
    const int threadCount = std::min(count, 2);
    std::vector<std::vector<std::unique_ptr<Connection>>> shares(static_cast<std::size_t>(threadCount));
    for (int index = 0; index < count; ++index) {
        shares[static_cast<std::size_t>(index % threadCount)].push_back(
            std::make_unique<Connection>(service.port, service.tls));
    }
    std::atomic<long> answered = 0;
    {
        std::vector<std::jthread> threads;
        const Clock::time_point end = Clock::now() + measured;
        for (auto& share : shares) {
            threads.emplace_back([&, end] { answered += answeredOn(share, service.request, end); });
        }
    }
    return static_cast<double>(answered) / std::chrono::duration<double>(measured).count();
}

/// How many of that many connections are held, idle, and then answer.
int heldOf(const Service& service, int count)
{
    std::vector<std::unique_ptr<Connection>> connections;
    try {
        while (static_cast<int>(connections.size()) < count) {
            connections.push_back(std::make_unique<Connection>(service.port, service.tls));
        }
    } catch (const std::runtime_error&) {
        std::printf("port %d: connection %zu was refused\n", service.port, connections.size() + 1);
    }
    int answering = 0;
    for (const auto& connection : connections) {
        try {
            answering += connection->ask(service.request).rfind("HTTP/1.1 200", 0) == 0 ? 1 : 0;
        } catch (const std::runtime_error&) {
            // One that is not held.
        }
    }
    return answering;
}

} // namespace

/// Requests per second of `/api/v1/me` over kept TLS connections, and how many idle ones are held, of each service that
/// listens on 127.0.0.1 at the given ports: service-load IDLE PORT...
int main(int argc, char** argv)
try {
    if (argc < 3) {
        std::fputs("usage: service-load IDLE-CONNECTIONS PORT...\n", stderr);
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    rlimit files = {};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    SSL_CTX* tls = SSL_CTX_new(TLS_client_method());
    std::vector<Service> services;
    for (int index = 2; index < argc; ++index) {
        services.push_back(signedIn(std::atoi(argv[index]), tls));
    }
    constexpr std::size_t rounds = 5;
    for (const int connections : {1, 8, 64}) {
        std::vector<std::vector<double>> rates(services.size());
        for (std::size_t round = 0; round < rounds; ++round) {
            for (std::size_t index = 0; index < services.size(); ++index) {
                rates[index].push_back(requestsPerSecond(services[index], connections));
            }
        }
        double first = 0;
        for (std::size_t index = 0; index < services.size(); ++index) {
            std::nth_element(rates[index].begin(), rates[index].begin() + rounds / 2, rates[index].end());
            const double rate = rates[index][rounds / 2];
            first = index == 0 ? rate : first;
            std::printf("%d connections, port %d: %.0f requests/s, ratio %.2f\n", connections, services[index].port,
                        rate, rate / first);
        }
    }
    const int idle = std::atoi(argv[1]);
    for (const Service& service : services) {
        std::printf("port %d: %d of %d idle connections held and answered\n", service.port, heldOf(service, idle),
                    idle);
    }
    SSL_CTX_free(tls);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "service-load: %s\n", error.what());
    return 1;
}
