#include "server/http/TlsIdentity.h"

namespace quillmate::server
{

namespace
{

gnutls_datum_t datum(const QByteArray& text)
{
    // The library only reads it.
    auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(text.data()));
    return {bytes, static_cast<unsigned>(text.size())};
}

} // namespace

std::unique_ptr<TlsIdentity> TlsIdentity::read(const ServerCertificate& pem)
{
    const gnutls_datum_t certificate = datum(pem.certificate);
    const gnutls_datum_t key = datum(pem.key);
    std::unique_ptr<TlsIdentity> identity(new TlsIdentity);
    const bool usable =
        gnutls_pcert_import_x509_raw(&identity->m_certificate, &certificate, GNUTLS_X509_FMT_PEM, 0) == 0 &&
        gnutls_privkey_init(&identity->m_key) == 0 &&
        gnutls_privkey_import_x509_raw(identity->m_key, &key, GNUTLS_X509_FMT_PEM, nullptr, 0) == 0;
    return usable ? std::move(identity) : nullptr;
}

TlsIdentity::~TlsIdentity()
{
    gnutls_pcert_deinit(&m_certificate);
    gnutls_privkey_deinit(m_key);
}

void TlsIdentity::give(gnutls_pcert_st** certificate, unsigned* count, gnutls_privkey_t* key)
{
    *certificate = &m_certificate;
    *count = 1;
    *key = m_key;
}

} // namespace quillmate::server
