#include "platform/foundation/net/NetworkEnvironment.h"

#include "base/AsciiText.h"

#include <QFile>
#include <QHostAddress>
#include <QSslCertificate>
#include <QString>

#include <charconv>
#include <cstdlib>

namespace quillmate
{
namespace
{

using Read = Result<NetworkEnvironment, std::string>;

bool isHostName(std::string_view text)
{
    const auto isLabelCharacter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    };
    bool labelStarts = true;
    for (const char c : text) {
        if (c == '.' ? labelStarts : (!isLabelCharacter(c) || (labelStarts && c == '-'))) {
            return false;
        }
        labelStarts = c == '.';
    }
    return !text.empty() && !labelStarts && text.back() != '-';
}

std::optional<SocketEndpoint> parseEndpoint(std::string_view text)
{
    const auto colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(colon + 1);
    SocketEndpoint endpoint;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), endpoint.port);
    if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size() || endpoint.port == 0) {
        return std::nullopt;
    }
    std::string_view address = text.substr(0, colon);
    if (address.starts_with('[') && address.ends_with(']')) {
        address = address.substr(1, address.size() - 2);
        const QHostAddress parsedAddress(QString::fromUtf8(address.data(), static_cast<qsizetype>(address.size())));
        if (parsedAddress.protocol() != QAbstractSocket::IPv6Protocol) {
            return std::nullopt;
        }
    } else if (!isHostName(address)) {
        return std::nullopt;
    }
    endpoint.address = address;
    return endpoint;
}

} // namespace

Read NetworkEnvironment::fromValues(const char* connectTo, const char* rootCertificateFile)
{
    NetworkEnvironment environment;
    const std::string map = connectTo ? connectTo : "";
    std::string_view rest = map;
    while (!rest.empty()) {
        const auto comma = rest.find(',');
        const std::string_view entry = rest.substr(0, comma);
        const auto equals = entry.find('=');
        const auto endpoint = equals == std::string_view::npos ? std::nullopt : parseEndpoint(entry.substr(equals + 1));
        if (!endpoint || !isHostName(entry.substr(0, equals)) ||
            (comma != std::string_view::npos && comma + 1 == rest.size())) {
            return Read::failure("QUILLMATE_CONNECT_TO is \"" + map +
                                 "\": write it as HOST=ADDRESS:PORT[,HOST=ADDRESS:PORT...], or unset it");
        }
        environment.connectTo.insert_or_assign(lowerCase(entry.substr(0, equals)), *endpoint);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    }
    if (rootCertificateFile && *rootCertificateFile) {
        QFile file(QString::fromLocal8Bit(rootCertificateFile));
        if (!file.open(QIODevice::ReadOnly)) {
            return Read::failure("QUILLMATE_CA_FILE is \"" + std::string(rootCertificateFile) +
                                 "\", which cannot be read (" + file.errorString().toStdString() +
                                 "): name a PEM file, or unset it");
        }
        if (QSslCertificate::fromDevice(&file, QSsl::Pem).isEmpty()) {
            return Read::failure("QUILLMATE_CA_FILE is \"" + std::string(rootCertificateFile) +
                                 "\", which holds no certificate: name a PEM file with one, or unset it");
        }
        environment.rootCertificateFiles.emplace_back(rootCertificateFile);
    }
    return environment;
}

Read NetworkEnvironment::fromProcessEnvironment()
{
    return fromValues(std::getenv("QUILLMATE_CONNECT_TO"), std::getenv("QUILLMATE_CA_FILE"));
}

} // namespace quillmate
