#include "hosts/preview/ServiceRoutes.h"

#include "state/APIManager.h"

#include <algorithm>
#include <string_view>

namespace quillmate
{
namespace
{

std::string hostOf(const ServiceEnvironment& service)
{
    constexpr std::string_view scheme = "https://";
    std::string host(service.baseURL.substr(scheme.size()));
    std::transform(host.begin(), host.end(), host.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return host;
}

} // namespace

bool routesAllServiceHosts(const NetworkEnvironment& environment)
{
    const auto& services = serviceEnvironments();
    return std::all_of(services.begin(), services.end(), [&environment](const ServiceEnvironment& service) {
        return environment.connectTo.contains(hostOf(service));
    });
}

NetworkEnvironment withoutServiceRoutes(NetworkEnvironment environment)
{
    for (const ServiceEnvironment& service : serviceEnvironments()) {
        environment.connectTo.erase(hostOf(service));
    }
    return environment;
}

NetworkEnvironment withServiceAt(NetworkEnvironment environment, const SocketEndpoint& endpoint,
                                 const std::string& rootCertificateFile)
{
    for (const ServiceEnvironment& service : serviceEnvironments()) {
        environment.connectTo.try_emplace(hostOf(service), endpoint);
    }
    environment.rootCertificateFiles.push_back(rootCertificateFile);
    return environment;
}

} // namespace quillmate
