#pragma once

#include "base/Result.h"
#include "server/http/Certificates.h"
#include "server/http/HttpConnections.h"
#include "server/http/HttpWork.h"

#include <QHostAddress>
#include <QObject>

#include <array>
#include <string>

namespace quillmate::server
{

/// An HTTP/1.1 server on libmicrohttpd: a few threads for the sockets, which also answer what is quick, and a pool for
/// what is slow, so that work on one message never keeps another request waiting. A connection without a byte for 75
/// seconds is ended. Made and used on a thread with an event loop.
class HttpServer : public QObject
{
    Q_OBJECT

public:
    /// `handler` must outlive the server.
    explicit HttpServer(RequestHandler& handler, const HttpLimits& limits = {});
    /// Waits for the answers that still run.
    ~HttpServer() override;

    /// Takes the address for TLS connections; the port, of which 0 takes any free one, or in words why not.
    Result<quint16, std::string> listenSecurely(const QHostAddress& address, quint16 port);
    /// Takes a free port of 127.0.0.1 for plain connections to the sign-in pages alone.
    Result<quint16, std::string> listenForLoginPages();
    /// Begins to answer at these addresses; false when the machine has no room for it.
    bool start();
    /// Of new TLS connections from now on; false when it cannot be used, then they go on with the last. To be given
    /// before `start`.
    bool setCertificate(const ServerCertificate& certificate);

    /// Turns new connections away, lets what has been asked be answered as long as the limits say, and ends every
    /// connection. False when an answer runs on even then: the server cannot be destroyed without waiting for it.
    bool shutDown();

private:
    struct Door {
        HttpServer& server;
        Listener listener;
        MHD_Daemon* daemon = nullptr;
        int descriptor = -1; ///< the socket that accepts
    };
    struct Callbacks;

    static Result<quint16, std::string> listen(Door& door, const QHostAddress& address, quint16 port);
    static bool start(Door& door, unsigned connections, unsigned flags, const MHD_OptionItem* options);
    void stop();

    HttpWork m_work;
    HttpConnections m_connections;
    std::array<Door, 2> m_doors = {Door{*this, Listener::Service, nullptr, -1},
                                   Door{*this, Listener::LoginPages, nullptr, -1}};
};

} // namespace quillmate::server
