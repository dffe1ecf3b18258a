#include "service/RequestBuilder.h"

#include "base/JSON.h"

namespace quillmate
{
namespace
{

constexpr auto json = "application/json";

std::pair<std::string, std::string> authorization(std::string_view accessToken)
{
    return {"Authorization", "Bearer " + std::string(accessToken)};
}

} // namespace

URLRequest makeGetRequest(const URL& url, std::string_view accessToken)
{
    return {url, "GET", {authorization(accessToken)}};
}

BuiltRequest makePostRequest(const URL& url, std::string_view accessToken, AcceptHeader accept,
                             const BodyMembers& members)
{
    auto encoded = JSONEncoder::encode(members);
    if (!encoded) {
        return BuiltRequest::failure("Failed to encode JSON: " + encoded.error().description);
    }
    URLRequest request{url, "POST", {{"Content-Type", json}}};
    if (accept == AcceptHeader::Sent) {
        request.headers.emplace_back("Accept", json);
    }
    request.headers.push_back(authorization(accessToken));
    request.body = std::make_shared<const std::string>(std::move(encoded).value());
    return request;
}

std::string describe(const BuiltRequest& request, const BodyMembers& members)
{
    if (request) {
        return *request.value().body;
    }
    std::vector<std::string> readable;
    readable.reserve(members.size()); // The members below look into it.
    BodyMembers shown;
    for (const auto& [key, text] : members) {
        std::string& kept = readable.emplace_back(text);
        for (char& byte : kept) {
            byte = byte >= ' ' && byte <= '~' ? byte : '?';
        }
        shown.emplace_back(key, kept);
    }
    return JSONEncoder::encode(shown).value();
}

} // namespace quillmate
