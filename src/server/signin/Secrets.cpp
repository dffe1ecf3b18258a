#include "server/signin/Secrets.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QRandomGenerator>

#include <array>
#include <openssl/crypto.h>

namespace quillmate::server
{

namespace
{

std::string urlSafe(const QByteArray& bytes)
{
    return bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals).toStdString();
}

} // namespace

std::string randomSecret()
{
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), static_cast<qsizetype>(words.size()));
    return urlSafe(QByteArray(reinterpret_cast<const char*>(words.data()), sizeof(words)));
}

std::string secretHash(std::string_view secret)
{
    const QByteArrayView bytes(secret.data(), static_cast<qsizetype>(secret.size()));
    return QCryptographicHash::hash(bytes.toByteArray(), QCryptographicHash::Sha256).toStdString();
}

std::string derivedSecret(std::string_view secret)
{
    return urlSafe(QByteArray::fromStdString(secretHash(secret)));
}

bool sameSecret(std::string_view left, std::string_view right)
{
    // Hashes of equal length are compared whole, so neither length nor position shows.
    const std::string leftHash = secretHash(left);
    return CRYPTO_memcmp(leftHash.data(), secretHash(right).data(), leftHash.size()) == 0;
}

} // namespace quillmate::server
