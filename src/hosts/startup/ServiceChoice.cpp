#include "hosts/startup/ServiceChoice.h"

#include "base/ApplicationFolders.h"
#include "base/PrivateFiles.h"
#include "platform/foundation/text/print.h"
#include "state/APIManager.h"

#include <algorithm>
#include <string_view>
#include <system_error>

namespace quillmate
{
namespace
{

// Where nobody offers a service: a build that was given no host of its own asks nobody there.
constexpr std::string_view nobodysOrigin = "https://quillmate.example";

bool hasOwnHost()
{
    const auto& services = serviceEnvironments();
    return std::none_of(services.begin(), services.end(), [](const ServiceEnvironment& service) {
        return service.key == "live" && service.baseURL == nobodysOrigin;
    });
}

std::filesystem::path choiceFile()
{
    return applicationConfigurationFolder() / "service";
}

} // namespace

const char* nameOf(ServiceChoice choice)
{
    return choice == ServiceChoice::Local ? "local" : "remote";
}

std::optional<ServiceChoice> serviceChoiceNamed(std::string_view name)
{
    for (const ServiceChoice choice : {ServiceChoice::Local, ServiceChoice::Remote}) {
        if (name == nameOf(choice)) {
            return choice;
        }
    }
    return std::nullopt;
}

Result<ServiceOffer, std::string> serviceOffer(const char* value, const NetworkEnvironment& environment,
                                               std::optional<ServiceChoice> stored)
{
    const std::string_view said = value ? value : "";
    const auto named = serviceChoiceNamed(said);
    if (!said.empty() && !named) {
        return Failure("QUILLMATE_SERVICE is \"" + std::string(said) + "\": write local or remote, or unset it");
    }
    ServiceOffer offer;
    offer.hasRemote = hasOwnHost();
    offer.isFixed = named || !environment.connectTo.empty();
    if (offer.isFixed) {
        offer.choice = named.value_or(ServiceChoice::Remote);
    } else if (offer.hasRemote) { // Where there is but one service a choice of another build's means nothing.
        offer.choice = stored.value_or(ServiceChoice::Remote);
    }
    return offer;
}

std::optional<ServiceChoice> storedServiceChoice()
{
    const std::filesystem::path file = choiceFile();
    std::error_code error;
    if (!std::filesystem::exists(file, error) && !error) {
        return std::nullopt;
    }
    std::string word = readFile(file).value_or("");
    word.erase(word.find_last_not_of(" \t\r\n") + 1);
    const auto choice = serviceChoiceNamed(word);
    if (!choice) {
        print("The choice of a service in " + file.string() + " cannot be read and counts as none. Choose again.");
    }
    return choice;
}

Result<void, std::string> storeServiceChoice(ServiceChoice choice)
{
    const std::filesystem::path file = choiceFile();
    if (auto made = makePrivateFolder(file.parent_path()); !made) {
        return made;
    }
    return writeFileWhole(file, std::string(nameOf(choice)) + '\n', 0600);
}

} // namespace quillmate
