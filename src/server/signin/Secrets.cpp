#include "server/signin/Secrets.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QRandomGenerator>

#include <array>
#include <openssl/crypto.h>

namespace quillmate::server
{

std::string randomSecret()
{
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), static_cast<qsizetype>(words.size()));
    const QByteArray bytes(reinterpret_cast<const char*>(words.data()), sizeof(words));
    return bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals).toStdString();
}

std::string secretHash(std::string_view secret)
{
    const QByteArrayView bytes(secret.data(), static_cast<qsizetype>(secret.size()));
    return QCryptographicHash::hash(bytes.toByteArray(), QCryptographicHash::Sha256).toStdString();
}

bool sameSecret(std::string_view left, std::string_view right)
{
    // Hashes of equal length are compared whole, so neither length nor position shows.
    const std::string leftHash = secretHash(left);
    return CRYPTO_memcmp(leftHash.data(), secretHash(right).data(), leftHash.size()) == 0;
}

} // namespace quillmate::server
