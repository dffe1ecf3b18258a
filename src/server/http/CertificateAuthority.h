#pragma once

#include <memory>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <optional>
#include <string>
#include <vector>

namespace quillmate::server
{

struct CertificateDeleter {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using CertificatePointer = std::unique_ptr<X509, CertificateDeleter>;
using KeyPointer = std::unique_ptr<EVP_PKEY, CertificateDeleter>;

/// The names a server certificate is for.
struct ServerNames {
    std::vector<std::string> hosts;
    std::vector<std::string> addresses;
};

/// A certificate and the private key to its public key.
struct KeyedCertificate {
    CertificatePointer certificate;
    KeyPointer key;
};

/// A new root (ECDSA P-256, ten years) whose name constraints (RFC 5280, 4.2.1.10) allow it these hosts only.
std::optional<KeyedCertificate> makeAuthority(const std::vector<std::string>& hosts);
/// A new server certificate of that root (397 days).
std::optional<KeyedCertificate> makeServerCertificate(const KeyedCertificate& authority, const ServerNames& names);
/// Whether the pair fits together and a client that trusts the root would accept the certificate as a server's for all
/// these names, now and for `days` more.
bool isUsable(const KeyedCertificate& server, X509& authority, const ServerNames& names, int days);
/// Whether the pair is a root that can still sign.
bool isUsableAuthority(const KeyedCertificate& authority);

/// PEM texts (RFC 7468); reading gives nothing when the text is not such a one.
std::string pemOf(X509& certificate);
std::string pemOf(EVP_PKEY& key);
std::optional<KeyedCertificate> readPair(const std::string& certificatePem, const std::string& keyPem);

} // namespace quillmate::server
