#pragma once

#include "server/http/Certificates.h"

#include <QObject>

#include <atomic>
#include <chrono>
#include <gnutls/abstract.h>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace quillmate::server
{

/// A certificate and its key in the TLS library's own form. Any thread may use it.
class TlsIdentity
{
public:
    /// Null when the library cannot read them.
    static std::unique_ptr<TlsIdentity> read(const ServerCertificate& pem);
    ~TlsIdentity();
    TlsIdentity(const TlsIdentity&) = delete;
    TlsIdentity& operator=(const TlsIdentity&) = delete;

    /// As a connection's handshake asks for them; they must live until it is through.
    void give(gnutls_pcert_st** certificate, unsigned* count, gnutls_privkey_t* key);

private:
    TlsIdentity() = default;

    gnutls_pcert_st m_certificate = {};
    gnutls_privkey_t m_key = nullptr;
};

/// One open connection as the server's own rules see it.
class HttpConnection
{
public:
    using Clock = std::chrono::steady_clock;

    HttpConnection(int descriptor, std::shared_ptr<TlsIdentity> identity)
        : m_descriptor(descriptor)
        , m_identity(std::move(identity))
    {
    }

    /// A request must be there by then.
    void expectRequest(std::chrono::milliseconds within) { m_due = (Clock::now() + within).time_since_epoch().count(); }
    /// It is.
    void requestCame() { m_due = never; }
    [[nodiscard]] bool isOverdue() const { return Clock::now().time_since_epoch().count() > m_due; }
    /// The answer goes out before the request has been read.
    void answeredEarly() { m_lingers = true; }
    [[nodiscard]] bool lingers() const { return m_lingers; }
    /// What it says it is, all its life; null without TLS.
    [[nodiscard]] TlsIdentity* identity() const { return m_identity.get(); }
    [[nodiscard]] int descriptor() const { return m_descriptor; }
    /// Whether the client has ended it. Only while the connection is suspended or on its own thread.
    [[nodiscard]] bool isGone() const;

private:
    static constexpr Clock::rep never = Clock::duration::max().count();

    const int m_descriptor;
    const std::shared_ptr<TlsIdentity> m_identity;
    std::atomic<Clock::rep> m_due = never;
    std::atomic<bool> m_lingers = false;
};

/// The open connections. Ends those whose client takes too long to say what it wants: the library's own limit counts
/// from a client's last byte, so that a byte now and then would hold a connection for ever. Made, and its rules
/// applied, on a thread with an event loop; connections come and go on any.
class HttpConnections : public QObject
{
    Q_OBJECT

public:
    /// How many descriptors of ended connections are kept for clients that still send.
    static constexpr int mostKept = 64;

    explicit HttpConnections(std::chrono::milliseconds requestTime);

    /// Of the connections to come.
    void setIdentity(std::shared_ptr<TlsIdentity> identity);

    /// The connection stays valid until `closing`.
    HttpConnection* opened(int descriptor);
    /// To be called before the socket is closed.
    void closing(HttpConnection* connection);

private:
    void endOverdue();
    Q_INVOKABLE void discardEnded();
    void discard(int descriptor);

    const std::chrono::milliseconds m_requestTime;
    std::mutex m_mutex;
    std::shared_ptr<TlsIdentity> m_identity;
    std::unordered_map<HttpConnection*, std::unique_ptr<HttpConnection>> m_connections;
    std::vector<int> m_ended; // Descriptors that are to be discarded.
    std::atomic<int> m_kept = 0;
};

} // namespace quillmate::server
