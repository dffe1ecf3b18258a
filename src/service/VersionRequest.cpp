#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"
#include "state/IncommingUpdatesManager.h"

namespace quillmate
{
namespace
{

constexpr ReplyTable versionTable{.method = ReplyTable::Method::Get,
                                  .transport = "Error: ",
                                  .body = "No data received",
                                  .parsing = "Error parsing response data from server: ",
                                  .object = "Server error. Please try again.",
                                  .rendering = "JSON response is: "};

std::optional<LatestVersion> versionIn(const JSONValue& object)
{
    return LatestVersion{textUnder(object, "current_version"), textUnder(object, "download_url")};
}

void publish(const LatestVersion& latest)
{
    IncommingUpdatesManager& manager = IncommingUpdatesManager::shared();
    if (latest.version) {
        print("The new available version is:", *latest.version);
    }
    manager.newVersion.set(latest.version);
    manager.updateUrl.set(latest.downloadURL);
    manager.setIncommingUpdatesAvailable(latest.downloadURL.has_value());
}

} // namespace

BuiltRequest buildVersionRequest(const std::string& url, std::string_view currentVersion)
{
    const auto components = URL::parse(url);
    if (!components) {
        return BuiltRequest::failure("Invalid URL");
    }
    const auto complete =
        URL::parseAbsolute(components->withQueryItem("currentVersion", currentVersion).absoluteString());
    return complete ? URLRequest{*complete} : BuiltRequest::failure("Failed to construct URL with query parameter");
}

Reading<LatestVersion> readLatestVersion(const ServiceReply& reply)
{
    auto reading = readReply<LatestVersion>(reply, versionTable, versionIn);
    if (reading.result && !reading.result.value().version) {
        reading.lines.emplace_back("New app version is null in response");
    }
    if (reading.result && !reading.result.value().downloadURL) {
        reading.lines.emplace_back("New download URL is null in response");
    }
    return reading;
}

void HandleApiRequests::fetchLatestVersion(const std::string& url, const std::string& currentVersion)
{
    auto request = buildVersionRequest(url, currentVersion);
    if (!request) {
        print(request.error());
        return;
    }
    print("Sending request to URL:", request.value().url.absoluteString());
    const auto receive = [](Result<LatestVersion, ReplyFailure> latest) {
        if (latest) {
            DispatchQueue::main().async([latest = std::move(latest).value()] { publish(latest); });
        } else if (latest.error().stage == ReplyStage::Object) {
            DispatchQueue::main().async([] { IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false); });
        }
    };
    sendRequest(std::move(request).value(), readLatestVersion, receive, RequestOrigin::Program);
}

} // namespace quillmate
