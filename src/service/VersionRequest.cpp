#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/URLSession.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "service/RequestBuilder.h"
#include "state/IncommingUpdatesManager.h"

#include <utility>

namespace quillmate
{
namespace
{

void publishVersion(const std::string* version)
{
    if (!version) {
        print("New app version is null in response");
        DispatchQueue::main().async([] { IncommingUpdatesManager::shared().newVersion.set(std::nullopt); });
        return;
    }
    DispatchQueue::main().async([version = *version] {
        print("The new available version is:", version);
        IncommingUpdatesManager::shared().newVersion.set(version);
    });
}

void publishLink(const std::string* link)
{
    if (!link) {
        print("New download URL is null in response");
    }
    DispatchQueue::main().async([link = link ? std::optional(*link) : std::nullopt] {
        IncommingUpdatesManager& manager = IncommingUpdatesManager::shared();
        manager.updateUrl.set(link);
        manager.setIncommingUpdatesAvailable(link.has_value());
    });
}

void receiveVersion(const std::optional<std::string>& data, const std::optional<URLError>& error)
{
    if (error) {
        print("Error: " + error->description());
        return;
    }
    if (!data) {
        print("No data received");
        return;
    }
    const auto reply = JSONSerialization::jsonObject(*data, JSONSerialization::Fragments::Refused);
    if (!reply) {
        print("Error parsing response data from server: " + reply.error().description);
        return;
    }
    if (!reply.value().object()) {
        print("Server error. Please try again.");
        DispatchQueue::main().async([] { IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false); });
        return;
    }
    const auto rendering = JSONEncoder::encode(reply.value());
    print("JSON response is:", rendering ? rendering.value() : rendering.error().description);
    // The version's block is queued first, so the main thread applies it first.
    publishVersion(reply.value().stringMember("current_version"));
    publishLink(reply.value().stringMember("download_url"));
}

} // namespace

void HandleApiRequests::fetchLatestVersion(const std::string& url, const std::string& currentVersion)
{
    const auto components = URL::parse(url);
    if (!components) {
        print("Invalid URL");
        return;
    }
    const auto complete =
        URL::parseAbsolute(components->withQueryItem("currentVersion", currentVersion).absoluteString());
    if (!complete) {
        print("Failed to construct URL with query parameter");
        return;
    }
    URLRequest request = makeGetRequest(*complete);
    print("Sending request to URL:", complete->absoluteString());
    URLSession::shared()
        .dataTask(std::move(request), [](auto data, const auto&, auto error) { receiveVersion(data, error); })
        ->resume();
}

} // namespace quillmate
