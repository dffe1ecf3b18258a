#pragma once

#include "base/Result.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// Where a connection is made: an IP address or a host name, and a port.
struct SocketEndpoint {
    std::string address;
    std::uint16_t port = 0;
    bool operator==(const SocketEndpoint&) const = default;
};

/// What the surroundings of a program say about its connections.
struct NetworkEnvironment {
    /// Per host name in lower case: where to connect in its place. Everything else goes on naming the host.
    std::map<std::string, SocketEndpoint> connectTo;
    /// PEM files with further roots to trust, beside the system's.
    std::vector<std::string> rootCertificateFiles;

    /// Reads QUILLMATE_CONNECT_TO ("HOST=ADDRESS:PORT[,…]", an IPv6 address in brackets) and QUILLMATE_CA_FILE. The
    /// failure is one sentence that names the variable and what to do.
    static Result<NetworkEnvironment, std::string> fromProcessEnvironment();
    /// The same from given values, null for an unset variable.
    static Result<NetworkEnvironment, std::string> fromValues(const char* connectTo, const char* rootCertificateFile);

    bool operator==(const NetworkEnvironment&) const = default;
};

} // namespace quillmate
