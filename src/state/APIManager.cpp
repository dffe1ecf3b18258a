#include "state/APIManager.h"

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "platform/foundation/text/print.h"
#include "state/AuthManager.h"
#include "state/Notifications.h"
#include "state/SettingsKeys.h"

namespace quillmate
{
namespace
{

using URLOfEnvironment = std::string_view ServiceEnvironment::*;

std::string lookUp(URLOfEnvironment url, const char* fallbackLine)
{
    const auto selected = UserDefaults::standard().string(SettingsKeys::selectedApiEndpoint);
    for (const ServiceEnvironment& environment : serviceEnvironments()) {
        if (selected && environment.key == *selected) {
            return std::string(environment.*url);
        }
    }
    print(fallbackLine);
    return std::string(serviceEnvironments().back().*url);
}

} // namespace

const std::array<ServiceEnvironment, 3>& serviceEnvironments()
{
    static constexpr std::array<ServiceEnvironment, 3> environments = {{
        {"dev", "Dev", "https://" QUILLMATE_DEV_HOST, "https://" QUILLMATE_DEV_HOST "/api/v1"},
        {"staging", "Staging", "https://" QUILLMATE_STAGING_HOST, "https://" QUILLMATE_STAGING_HOST "/api/v1"},
        {"live", "Live", "https://" QUILLMATE_LIVE_HOST, "https://" QUILLMATE_LIVE_HOST "/api/v1"},
    }};
    return environments;
}

APIManager& APIManager::shared()
{
    static const std::shared_ptr<APIManager> manager = [] {
        std::shared_ptr<APIManager> made(new APIManager);
        NotificationCenter::defaultCenter().addObserver(made, &APIManager::apiEndpointChanged,
                                                        quillmate::apiEndpointChanged);
        return made;
    }();
    return *manager;
}

APIManager::~APIManager()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

std::string APIManager::apiURL() const
{
    return lookUp(&ServiceEnvironment::apiURL,
                  "Error: Invalid or missing API endpoint in UserDefaults. Falling back to live.");
}

std::string APIManager::baseURL() const
{
    return lookUp(&ServiceEnvironment::baseURL,
                  "Error: Invalid or missing Base API endpoint in UserDefaults. Falling back to live.");
}

void APIManager::apiEndpointChanged() const
{
    print("API Endpoint changed to: " + apiURL());
    print("BASE API Endpoint changed to : " + baseURL());
}

std::string APIManager::selectedApiEndpoint()
{
    return UserDefaults::standard().string(SettingsKeys::selectedApiEndpoint).value_or("live");
}

void APIManager::selectApiEndpoint(const std::string& key)
{
    UserDefaults::standard().setString(SettingsKeys::selectedApiEndpoint, key);
    UserDefaults::standard().removeObject(SettingsKeys::hasSignedIn); // Not there.
    NotificationCenter::defaultCenter().post(quillmate::apiEndpointChanged);
    NotificationCenter::defaultCenter().post(userDidLogout);
    AuthManager::shared().giveUpToken();
}

const std::string& currentApiURL()
{
    static const std::string url = [] {
        std::string first = APIManager::shared().apiURL();
        print("CURRENT API URL IN API MANAGER", first);
        return first;
    }();
    return url;
}

const std::string& currentBaseURL()
{
    static const std::string url = [] {
        std::string first = APIManager::shared().baseURL();
        print("CURRENT BASE API URL IN API MANAGER", first);
        return first;
    }();
    return url;
}

} // namespace quillmate
