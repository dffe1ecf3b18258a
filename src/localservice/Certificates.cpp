#include "localservice/Certificates.h"

#include "localservice/CertificateAuthority.h"
#include "localservice/PrivateFiles.h"

#include <algorithm>

namespace quillmate::localservice
{

namespace
{

constexpr int renewalDays = 30;
constexpr unsigned publicMode = 0644;
constexpr unsigned privateMode = 0600;

std::optional<KeyedCertificate> load(const std::string& certificatePath, const std::string& keyPath)
{
    const auto certificate = readFile(certificatePath);
    const auto key = readFile(keyPath);
    return certificate && key ? readPair(*certificate, *key) : std::nullopt;
}

std::optional<std::string> save(const KeyedCertificate& pair, const std::string& certificatePath,
                                const std::string& keyPath)
{
    // The key first: an end in between leaves a pair that does not fit together, which the next start replaces.
    if (auto failure = writeFileWhole(keyPath, pemOf(*pair.key), privateMode)) {
        return failure;
    }
    return writeFileWhole(certificatePath, pemOf(*pair.certificate), publicMode);
}

void makeUnique(std::vector<std::string>& values)
{
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

} // namespace

std::variant<ServerCertificate, std::string>
serverCertificate(const std::string& folder, std::vector<std::string> hosts, std::vector<std::string> addresses)
{
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
    if (!kept || !server || !isUsable(*server, *authority->certificate, names, renewalDays)) {
        server = kept ? makeServerCertificate(*authority, names) : std::nullopt;
        if (!server || !isUsable(*server, *authority->certificate, names, renewalDays)) {
            authority = makeAuthority(names.hosts);
            server = authority ? makeServerCertificate(*authority, names) : std::nullopt;
            if (!server || !isUsable(*server, *authority->certificate, names, renewalDays)) {
                return noCertificate;
            }
            if (auto failure = save(*authority, authorityPath, authorityKeyPath)) {
                return *failure;
            }
        }
        if (auto failure = save(*server, serverPath, serverKeyPath)) {
            return *failure;
        }
    }
    return ServerCertificate{QByteArray::fromStdString(pemOf(*server->certificate)),
                             QByteArray::fromStdString(pemOf(*server->key)),
                             QByteArray::fromStdString(pemOf(*authority->certificate))};
}

} // namespace quillmate::localservice
