#include "server/http/CertificateAuthority.h"

#include <algorithm>
#include <ctime>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

namespace quillmate::server
{

namespace
{

constexpr long daySeconds = 86400;
constexpr long authorityDays = 3650;
constexpr long serverDays = 397;

struct Freer {
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
    void operator()(X509_STORE* store) const { X509_STORE_free(store); }
    void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
    void operator()(BIGNUM* number) const { BN_free(number); }
};
template<typename T>
using Owned = std::unique_ptr<T, Freer>;

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
    KeyedCertificate made{CertificatePointer(X509_new()), KeyPointer(EVP_EC_gen("P-256"))};
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

} // namespace

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

bool isUsable(const KeyedCertificate& server, X509& authority, const ServerNames& names, int days)
{
    return X509_check_private_key(server.certificate.get(), server.key.get()) == 1 &&
           lastsFor(*server.certificate, days) && matches(*server.certificate, names) &&
           chainVerifies(*server.certificate, authority);
}

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

std::optional<KeyedCertificate> readPair(const std::string& certificatePem, const std::string& keyPem)
{
    const Owned<BIO> certificate = readerOf(certificatePem);
    const Owned<BIO> key = readerOf(keyPem);
    if (!certificate || !key) {
        return std::nullopt;
    }
    KeyedCertificate pair{CertificatePointer(PEM_read_bio_X509(certificate.get(), nullptr, nullptr, nullptr)),
                          KeyPointer(PEM_read_bio_PrivateKey(key.get(), nullptr, nullptr, nullptr))};
    return pair.certificate && pair.key ? std::optional(std::move(pair)) : std::nullopt;
}

} // namespace quillmate::server
