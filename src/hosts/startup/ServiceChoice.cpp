#include "hosts/startup/ServiceChoice.h"

#include "state/APIManager.h"

#include <algorithm>
#include <string_view>

namespace quillmate
{
namespace
{

// Where nobody offers a service: a build that was given no host of its own asks nobody there.
constexpr std::string_view nobodysOrigin = "https://quillmate.example";

} // namespace

Result<ServiceChoice, std::string> serviceChoice(const char* value, const NetworkEnvironment& environment)
{
    const std::string_view said = value ? value : "";
    if (said == "local") {
        return ServiceChoice::Local;
    }
    if (said == "remote") {
        return ServiceChoice::Remote;
    }
    if (!said.empty()) {
        return Failure("QUILLMATE_SERVICE is \"" + std::string(said) + "\": write local or remote, or unset it");
    }
    const bool leadsElsewhere = !environment.connectTo.empty();
    const auto& services = serviceEnvironments();
    const bool hasOwnHost = std::none_of(services.begin(), services.end(), [](const ServiceEnvironment& service) {
        return service.key == "live" && service.baseURL == nobodysOrigin;
    });
    return leadsElsewhere || hasOwnHost ? ServiceChoice::Remote : ServiceChoice::Local;
}

} // namespace quillmate
