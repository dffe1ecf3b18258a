#pragma once

#include "base/Result.h"

#include <QByteArray>

#include <string>
#include <vector>

namespace quillmate::server
{

/// What the TLS server needs, as PEM texts.
struct ServerCertificate {
    QByteArray certificate;
    QByteArray key;
};

/// The server certificate of a data folder. `ca.pem` and `ca-key.pem` are made once and kept; `server.pem` and
/// `server-key.pem` are made anew when they are missing, damaged, within 30 days of their end, or not for all of
/// `hosts`, `localhost`, the loopback addresses and `addresses`. A root that cannot sign for these hosts is replaced.
/// Keys have mode 0600. The folder must exist. The failure is one sentence.
Result<ServerCertificate, std::string> serverCertificate(const std::string& folder, std::vector<std::string> hosts,
                                                         std::vector<std::string> addresses);

} // namespace quillmate::server
