#include "server/http/Certificates.h"

#include "base/PrivateFiles.h"
#include "server/http/CertificateAuthority.h"

#include <algorithm>

namespace quillmate::server
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
    if (!kept || !server || !isUsable(*server, *authority->certificate, names, renewalDays)) {
        server = kept ? makeServerCertificate(*authority, names) : std::nullopt;
        if (!server || !isUsable(*server, *authority->certificate, names, renewalDays)) {
            authority = makeAuthority(names.hosts);
            server = authority ? makeServerCertificate(*authority, names) : std::nullopt;
            if (!server || !isUsable(*server, *authority->certificate, names, renewalDays)) {
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
                             QByteArray::fromStdString(pemOf(*server->key)),
                             QByteArray::fromStdString(pemOf(*authority->certificate))};
}

} // namespace quillmate::server
