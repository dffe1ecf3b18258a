#include "server/http/HttpServer.h"

#include "server/http/HttpTransaction.h"

#include <QTcpServer>

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace quillmate::server
{

namespace
{

constexpr unsigned idleSeconds = 75;
constexpr std::size_t connectionMemory = std::size_t(32) * 1024;
constexpr int waitingConnections = 4096;
constexpr unsigned mostThreads = 8;

/// How many connections the process may hold at all its doors together, beside its other files.
unsigned affordable(unsigned wanted)
{
    constexpr rlim_t others = 128 + HttpConnections::mostKept;
    rlimit files = {};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    getrlimit(RLIMIT_NOFILE, &files);
    return static_cast<unsigned>(std::clamp<rlim_t>(files.rlim_cur, others + 1, others + wanted) - others);
}

HttpConnection* connectionOf(MHD_Connection* connection)
{
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    return static_cast<HttpConnection*>(info->socket_context);
}

} // namespace

/// What the library calls.
struct HttpServer::Callbacks {
    /// The library's own way to stop accepting ends the process when a thread wakes up at the same moment.
    static MHD_Result accepts(void* door, const sockaddr*, socklen_t)
    {
        return static_cast<Door*>(door)->server.m_work.isEnding ? MHD_NO : MHD_YES;
    }

    static void connection(void* door, MHD_Connection* connection, void** context, MHD_ConnectionNotificationCode code)
    {
        HttpConnections& connections = static_cast<Door*>(door)->server.m_connections;
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            *context =
                connections.opened(MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd);
        } else {
            connections.closing(static_cast<HttpConnection*>(*context));
        }
    }

    static void* begun(void* door, const char* target, MHD_Connection* connection)
    {
        const Door& entered = *static_cast<Door*>(door);
        return new HttpTransaction(entered.server.m_work, *connectionOf(connection), entered.listener, target);
    }

    static MHD_Result proceed(void*, MHD_Connection* connection, const char* path, const char* method,
                              const char* version, const char* bytes, std::size_t* size, void** transaction)
    {
        // Both point into the request line as it was received, where one blank stands before the version.
        const auto targetSize = static_cast<std::size_t>(version - path - 1);
        return static_cast<HttpTransaction*>(*transaction)
            ->proceed(connection, method, targetSize, {bytes, std::exchange(*size, 0)});
    }

    static void completed(void*, MHD_Connection* connection, void** transaction, MHD_RequestTerminationCode code)
    {
        if (code == MHD_REQUEST_TERMINATED_WITH_ERROR) {
            connectionOf(connection)->answeredEarly();
        }
        delete static_cast<HttpTransaction*>(std::exchange(*transaction, nullptr));
    }

    /// Paths and queries stay as they were sent.
    static std::size_t keep(void*, MHD_Connection*, char* text) { return std::strlen(text); }

    static int certificate(gnutls_session_t session, const gnutls_datum_t*, int, const gnutls_pk_algorithm_t*, int,
                           gnutls_pcert_st** certificate, unsigned* count, gnutls_privkey_t* key)
    {
        auto* connection = static_cast<MHD_Connection*>(gnutls_session_get_ptr(session));
        connectionOf(connection)->identity()->give(certificate, count, key);
        return 0;
    }
};

HttpServer::HttpServer(RequestHandler& handler, const HttpLimits& limits)
    : m_work(handler, limits)
    , m_connections(limits.requestTime)
{
}

HttpServer::~HttpServer()
{
    m_work.isEnding = true;
    m_work.close();
    m_work.slowAnswers.waitForDone();
    stop();
}

Result<quint16, std::string> HttpServer::listenSecurely(const QHostAddress& address, quint16 port)
{
    return listen(m_doors.front(), address, port);
}

Result<quint16, std::string> HttpServer::listenForLoginPages()
{
    return listen(m_doors.back(), QHostAddress(QHostAddress::LocalHost), 0);
}

bool HttpServer::setCertificate(const ServerCertificate& certificate)
{
    auto identity = TlsIdentity::read(certificate);
    if (identity) {
        m_connections.setIdentity(std::move(identity));
        return true;
    }
    return false;
}

Result<quint16, std::string> HttpServer::listen(Door& door, const QHostAddress& address, quint16 port)
{
    // It reads every kind of address and has words for what goes wrong.
    QTcpServer listening;
    listening.setListenBacklogSize(waitingConnections);
    if (!listening.listen(address, port)) {
        return Result<quint16, std::string>::failure(listening.errorString().toStdString());
    }
    door.descriptor = fcntl(static_cast<int>(listening.socketDescriptor()), F_DUPFD_CLOEXEC, 0);
    if (door.descriptor < 0) {
        return Result<quint16, std::string>::failure(std::strerror(errno));
    }
    return listening.serverPort();
}

bool HttpServer::start()
{
    const std::array<MHD_OptionItem, 3> tls = {
        {{MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char*>("NORMAL:-VERS-TLS1.0:-VERS-TLS1.1")},
         {MHD_OPTION_HTTPS_CERT_CALLBACK, 0, reinterpret_cast<void*>(&Callbacks::certificate)},
         {MHD_OPTION_END, 0, nullptr}}};
    const MHD_OptionItem none = {MHD_OPTION_END, 0, nullptr};
    // A person who signs in needs few connections, a flood of them must leave the others to the service.
    const unsigned connections = affordable(m_work.limits.connections);
    const unsigned forLogins = m_doors.back().descriptor < 0 ? 0 : connections / 8;
    return start(m_doors.front(), connections - forLogins, MHD_USE_TLS, tls.data()) &&
           start(m_doors.back(), forLogins, MHD_NO_FLAG, &none);
}

bool HttpServer::start(Door& door, unsigned connections, unsigned flags, const MHD_OptionItem* options)
{
    if (door.descriptor < 0) {
        return true;
    }
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 2U, mostThreads);
    door.daemon = MHD_start_daemon(
        flags | MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, &Callbacks::accepts, &door,
        &Callbacks::proceed, nullptr, MHD_OPTION_LISTEN_SOCKET, door.descriptor, MHD_OPTION_THREAD_POOL_SIZE, threads,
        MHD_OPTION_CONNECTION_LIMIT, std::max(connections, threads), MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        connectionMemory, MHD_OPTION_CONNECTION_TIMEOUT, idleSeconds, MHD_OPTION_STRICT_FOR_CLIENT, 1,
        MHD_OPTION_NOTIFY_CONNECTION, &Callbacks::connection, &door, MHD_OPTION_URI_LOG_CALLBACK, &Callbacks::begun,
        &door, MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::completed, nullptr, MHD_OPTION_UNESCAPE_CALLBACK,
        &Callbacks::keep, nullptr, MHD_OPTION_ARRAY, options, MHD_OPTION_END);
    return door.daemon != nullptr;
}

bool HttpServer::shutDown()
{
    const auto latest = std::chrono::steady_clock::now() + m_work.limits.shutDownTime;
    m_work.isEnding = true;
    m_work.waitUntilDone(latest);
    m_work.close();
    // A client that does not read its answer does not keep the program, an answer that runs on does.
    using std::chrono::milliseconds;
    const auto left = std::chrono::duration_cast<milliseconds>(latest - std::chrono::steady_clock::now());
    if (!m_work.slowAnswers.waitForDone(static_cast<int>(std::max(left, milliseconds(0)).count()))) {
        return false;
    }
    stop();
    return true;
}

void HttpServer::stop()
{
    for (Door& door : m_doors) {
        if (door.daemon != nullptr) {
            MHD_stop_daemon(std::exchange(door.daemon, nullptr)); // It closes the socket as well.
        } else if (door.descriptor >= 0) {
            ::close(door.descriptor);
        }
        door.descriptor = -1;
    }
}

} // namespace quillmate::server
