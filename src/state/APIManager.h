#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace quillmate
{

/// One of the service's environments.
struct ServiceEnvironment {
    std::string_view key;
    /// As the developer menus show it.
    std::string_view name;
    /// The origin: https, the host, nothing behind it.
    std::string_view baseURL;
    std::string_view apiURL;
};

/// All of them, in the order of the developer menus.
[[nodiscard]] const std::array<ServiceEnvironment, 3>& serviceEnvironments();

/// Where the service is, by the environment that is chosen in the settings. Any thread.
class APIManager : public std::enable_shared_from_this<APIManager>
{
public:
    static APIManager& shared();
    ~APIManager();
    APIManager(const APIManager&) = delete;
    APIManager& operator=(const APIManager&) = delete;

    /// The URL of the chosen environment's interface, read afresh; live, with a diagnostic line, when none or no known
    /// one is chosen.
    [[nodiscard]] std::string apiURL() const;
    /// As `apiURL`, the origin alone.
    [[nodiscard]] std::string baseURL() const;

    /// What `serviceEnvironments` calls the chosen environment, "live" when nothing is chosen; an unknown choice as it
    /// is.
    [[nodiscard]] static std::string selectedApiEndpoint();
    /// A developer chooses another environment: stores the key, posts "apiEndpointChanged" and "UserDidLogout", forgets
    /// the token. Main thread.
    static void selectApiEndpoint(const std::string& key);

private:
    APIManager() = default;
    void apiEndpointChanged() const;
};

/// The API URL as it was at the first use in this process. Taking it writes one diagnostic line.
[[nodiscard]] const std::string& currentApiURL();
/// The base URL as it was at the first use in this process. Taking it writes one diagnostic line.
[[nodiscard]] const std::string& currentBaseURL();

} // namespace quillmate
