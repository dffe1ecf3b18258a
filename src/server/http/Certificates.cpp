#include "server/http/Certificates.h"

#include "base/PrivateFiles.h"

#include <algorithm>
#include <ctime>
#include <memory>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>
#include <optional>

namespace quillmate::server
{

namespace
{

constexpr long daySeconds = 86400;
constexpr long authorityDays = 3650;
constexpr long serverDays = 397;
constexpr long renewalDays = 30;
constexpr unsigned publicMode = 0644;
constexpr unsigned privateMode = 0600;

struct Freer {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
    void operator()(X509_STORE* store) const { X509_STORE_free(store); }
    void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
    void operator()(BIGNUM* number) const { BN_free(number); }
};
template<typename T>
using Owned = std::unique_ptr<T, Freer>;

/// The names a server certificate is for.
struct ServerNames {
    std::vector<std::string> hosts;
    std::vector<std::string> addresses;
};

/// A certificate and the private key to its public key.
struct KeyedCertificate {
    Owned<X509> certificate;
    Owned<EVP_PKEY> key;
};

bool addExtension(X509& certificate, X509& issuer, int kind, const std::string& value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, &issuer, &certificate, nullptr, nullptr, 0);
    const Owned<X509_EXTENSION> extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
    return extension && X509_add_ext(&certificate, extension.get(), -1) == 1;
}

bool setSerial(X509& certificate)
{
    // RFC 5280, 4.1.2.2: positive, at most 20 octets.
    const Owned<BIGNUM> serial(BN_new());
    return serial && BN_rand(serial.get(), 127, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1 &&
           BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(&certificate)) != nullptr;
}

bool setName(X509_NAME* name, const char* commonName)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(commonName);
    return X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, bytes, -1, -1, 0) == 1;
}

/// A certificate without extensions and signature.
std::optional<KeyedCertificate> begin(const char* commonName, long days)
{
    KeyedCertificate made{Owned<X509>(X509_new()), Owned<EVP_PKEY>(EVP_EC_gen("P-256"))};
    if (!made.certificate || !made.key) {
        return std::nullopt;
    }
    X509& certificate = *made.certificate;
    // A day back, for clients whose clock is a little behind.
    const bool filled = X509_set_version(&certificate, 2) == 1 && setSerial(certificate) &&
                        X509_gmtime_adj(X509_getm_notBefore(&certificate), -daySeconds) != nullptr &&
                        X509_gmtime_adj(X509_getm_notAfter(&certificate), days * daySeconds) != nullptr &&
                        X509_set_pubkey(&certificate, made.key.get()) == 1 &&
                        setName(X509_get_subject_name(&certificate), commonName);
    return filled ? std::optional(std::move(made)) : std::nullopt;
}

std::string joined(const std::vector<std::string>& values, const std::string& prefix)
{
    std::string text;
    for (const std::string& value : values) {
        text += text.empty() ? "" : ",";
        text += prefix;
        text += value;
    }
    return text;
}

bool matches(X509& certificate, const ServerNames& names)
{
    const bool hosts = std::all_of(names.hosts.begin(), names.hosts.end(), [&](const std::string& host) {
        return X509_check_host(&certificate, host.c_str(), host.size(), 0, nullptr) == 1;
    });
    return hosts && std::all_of(names.addresses.begin(), names.addresses.end(), [&](const std::string& address) {
               return X509_check_ip_asc(&certificate, address.c_str(), 0) == 1;
           });
}

bool lastsFor(X509& certificate, long days)
{
    std::time_t then = std::time(nullptr) + days * daySeconds;
    std::time_t now = std::time(nullptr);
    return X509_cmp_time(X509_get0_notAfter(&certificate), &then) > 0 &&
           X509_cmp_time(X509_get0_notBefore(&certificate), &now) < 0;
}

bool chainVerifies(X509& certificate, X509& authority)
{
    const Owned<X509_STORE> store(X509_STORE_new());
    const Owned<X509_STORE_CTX> context(X509_STORE_CTX_new());
    if (!store || !context || X509_STORE_add_cert(store.get(), &authority) != 1 ||
        X509_STORE_CTX_init(context.get(), store.get(), &certificate, nullptr) != 1) {
        return false;
    }
    X509_STORE_CTX_set_purpose(context.get(), X509_PURPOSE_SSL_SERVER);
    X509_VERIFY_PARAM_set_flags(X509_STORE_CTX_get0_param(context.get()), X509_V_FLAG_X509_STRICT);
    return X509_verify_cert(context.get()) == 1;
}

std::string textOf(BIO& bio)
{
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(&bio, &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

Owned<BIO> readerOf(const std::string& text)
{
    return Owned<BIO>(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

/// A new root (ECDSA P-256, ten years) whose name constraints (RFC 5280, 4.2.1.10) allow it these hosts only.
std::optional<KeyedCertificate> makeAuthority(const std::vector<std::string>& hosts)
{
    auto made = begin("Quillmate local service root", authorityDays);
    if (!made) {
        return std::nullopt;
    }
    X509& root = *made->certificate;
    const bool complete =
        X509_set_issuer_name(&root, X509_get_subject_name(&root)) == 1 &&
        addExtension(root, root, NID_basic_constraints, "critical,CA:TRUE,pathlen:0") &&
        addExtension(root, root, NID_key_usage, "critical,keyCertSign,cRLSign") &&
        addExtension(root, root, NID_subject_key_identifier, "hash") &&
        addExtension(root, root, NID_name_constraints, "critical," + joined(hosts, "permitted;DNS:")) &&
        X509_sign(&root, made->key.get(), EVP_sha256()) > 0;
    return complete ? std::move(made) : std::nullopt;
}

/// A new server certificate of that root (397 days).
std::optional<KeyedCertificate> makeServerCertificate(const KeyedCertificate& authority, const ServerNames& names)
{
    auto made = begin("Quillmate local service", serverDays);
    if (!made) {
        return std::nullopt;
    }
    X509& server = *made->certificate;
    X509& root = *authority.certificate;
    const std::string alternatives = joined(names.hosts, "DNS:") + ',' + joined(names.addresses, "IP:");
    const bool complete = X509_set_issuer_name(&server, X509_get_subject_name(&root)) == 1 &&
                          addExtension(server, root, NID_basic_constraints, "critical,CA:FALSE") &&
                          addExtension(server, root, NID_key_usage, "critical,digitalSignature") &&
                          addExtension(server, root, NID_ext_key_usage, "serverAuth") &&
                          addExtension(server, root, NID_subject_key_identifier, "hash") &&
                          addExtension(server, root, NID_authority_key_identifier, "keyid:always") &&
                          addExtension(server, root, NID_subject_alt_name, alternatives) &&
                          X509_sign(&server, authority.key.get(), EVP_sha256()) > 0;
    return complete ? std::move(made) : std::nullopt;
}

/// Whether the pair fits together and a client that trusts the root would accept the certificate as a server's for all
/// these names, now and for a month more.
bool isUsable(const KeyedCertificate& server, X509& authority, const ServerNames& names)
{
    return X509_check_private_key(server.certificate.get(), server.key.get()) == 1 &&
           lastsFor(*server.certificate, renewalDays) && matches(*server.certificate, names) &&
           chainVerifies(*server.certificate, authority);
}

/// Whether the pair is a root that can still sign.
bool isUsableAuthority(const KeyedCertificate& authority)
{
    X509* root = authority.certificate.get();
    return X509_check_private_key(root, authority.key.get()) == 1 && X509_check_ca(root) == 1 &&
           X509_verify(root, authority.key.get()) == 1 && lastsFor(*root, serverDays);
}

std::string pemOf(X509& certificate)
{
    const Owned<BIO> bio(BIO_new(BIO_s_mem()));
    return bio && PEM_write_bio_X509(bio.get(), &certificate) == 1 ? textOf(*bio) : std::string();
}

std::string pemOf(EVP_PKEY& key)
{
    // The traditional form names the kind of key, as the files that are there already do.
    const Owned<BIO> bio(BIO_new(BIO_s_mem()));
    return bio && PEM_write_bio_PrivateKey_traditional(bio.get(), &key, nullptr, nullptr, 0, nullptr, nullptr) == 1
               ? textOf(*bio)
               : std::string();
}

/// Nothing when one of the texts is not such a one.
std::optional<KeyedCertificate> readPair(const std::string& certificatePem, const std::string& keyPem)
{
    const Owned<BIO> certificate = readerOf(certificatePem);
    const Owned<BIO> key = readerOf(keyPem);
    if (!certificate || !key) {
        return std::nullopt;
    }
    KeyedCertificate pair{Owned<X509>(PEM_read_bio_X509(certificate.get(), nullptr, nullptr, nullptr)),
                          Owned<EVP_PKEY>(PEM_read_bio_PrivateKey(key.get(), nullptr, nullptr, nullptr))};
    return pair.certificate && pair.key ? std::optional(std::move(pair)) : std::nullopt;
}

std::optional<KeyedCertificate> load(const std::string& certificatePath, const std::string& keyPath)
{
    const auto certificate = readFile(certificatePath);
    const auto key = readFile(keyPath);
    return certificate && key ? readPair(*certificate, *key) : std::nullopt;
}

Result<void, std::string> save(const KeyedCertificate& pair, const std::string& certificatePath,
                               const std::string& keyPath)
{
    // The key first: an end in between leaves a pair that does not fit together, which the next start replaces.
    if (auto written = writeFileWhole(keyPath, pemOf(*pair.key), privateMode); !written) {
        return written;
    }
    return writeFileWhole(certificatePath, pemOf(*pair.certificate), publicMode);
}

void makeUnique(std::vector<std::string>& values)
{
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

} // namespace

Result<ServerCertificate, std::string> serverCertificate(const std::string& folder, std::vector<std::string> hosts,
                                                         std::vector<std::string> addresses)
{
    using Made = Result<ServerCertificate, std::string>;
    hosts.emplace_back("localhost");
    addresses.insert(addresses.end(), {"127.0.0.1", "::1"});
    makeUnique(hosts);
    makeUnique(addresses);
    const ServerNames names{std::move(hosts), std::move(addresses)};
    const std::string authorityPath = folder + "/ca.pem";
    const std::string authorityKeyPath = folder + "/ca-key.pem";
    const std::string serverPath = folder + "/server.pem";
    const std::string serverKeyPath = folder + "/server-key.pem";
    const std::string noCertificate = "cannot make a certificate in " + folder;

    const FolderLock lock(folder);
    auto authority = load(authorityPath, authorityKeyPath);
    const bool kept = authority && isUsableAuthority(*authority);
    auto server = load(serverPath, serverKeyPath);
    if (!kept || !server || !isUsable(*server, *authority->certificate, names)) {
        server = kept ? makeServerCertificate(*authority, names) : std::nullopt;
        if (!server || !isUsable(*server, *authority->certificate, names)) {
            authority = makeAuthority(names.hosts);
            server = authority ? makeServerCertificate(*authority, names) : std::nullopt;
            if (!server || !isUsable(*server, *authority->certificate, names)) {
                return Made::failure(noCertificate);
            }
            if (auto saved = save(*authority, authorityPath, authorityKeyPath); !saved) {
                return Made::failure(saved.error());
            }
        }
        if (auto saved = save(*server, serverPath, serverKeyPath); !saved) {
            return Made::failure(saved.error());
        }
    }
    return ServerCertificate{QByteArray::fromStdString(pemOf(*server->certificate)),
                             QByteArray::fromStdString(pemOf(*server->key))};
}

} // namespace quillmate::server
