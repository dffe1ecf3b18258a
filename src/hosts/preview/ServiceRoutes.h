#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"

#include <string>

namespace quillmate
{

/// Whether the environment leads every service host of the build somewhere already.
[[nodiscard]] bool routesAllServiceHosts(const NetworkEnvironment& environment);

/// The environment without what it says of the service hosts of the build.
[[nodiscard]] NetworkEnvironment withoutServiceRoutes(NetworkEnvironment environment);

/// The environment with the service hosts it says nothing of led to `endpoint`, and `rootCertificateFile` trusted
/// besides.
[[nodiscard]] NetworkEnvironment withServiceAt(NetworkEnvironment environment, const SocketEndpoint& endpoint,
                                               const std::string& rootCertificateFile);

} // namespace quillmate
