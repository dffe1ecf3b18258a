#pragma once

#include "server/http/Certificates.h"

#include <gnutls/abstract.h>
#include <memory>

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

} // namespace quillmate::server
