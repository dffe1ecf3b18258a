#include "service/HandleApiRequests.h"

#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/URLSession.h"
#include "platform/foundation/print.h"
#include "service/RequestBuilder.h"

#include <utility>

namespace quillmate
{
namespace
{

using Fragments = JSONSerialization::Fragments;

void receiveUserDetails(const std::optional<std::string>& data, const std::optional<URLError>& error,
                        HandleApiRequests::UserDetailsCompletion completion)
{
    if (error) {
        print("Error: " + error->description());
        return;
    }
    if (!data) {
        print("No data received");
        return;
    }
    const auto reply = JSONSerialization::jsonObject(*data, Fragments::Refused);
    if (!reply) {
        print("Error parsing response data from user details: " + reply.error().description);
        return;
    }
    if (!reply.value().object()) {
        print("Server error. Please try again.");
        return;
    }
    const auto* email = reply.value().stringMember("email");
    const auto* name = reply.value().stringMember("name");
    if (!email || !name) {
        print("Email or name not found in response");
        return;
    }
    DispatchQueue::main().async([email = *email, name = *name, completion = std::move(completion)] {
        UserDetailsManager& manager = UserDetailsManager::shared();
        manager.setEmail(email);
        manager.name.set(name);
        completion(manager);
    });
}

/// The record, or what to tell the user in its place.
void receiveGenerated(const std::optional<std::string>& data, const std::optional<HTTPURLResponse>& response,
                      const std::optional<URLError>& error, const std::string& messageId,
                      const HandleApiRequests::GenerateCompletion& completion)
{
    if (error) {
        completion(std::nullopt, "Error sending request: " + error->localizedDescription);
        return;
    }
    if (!response) {
        completion(std::nullopt, "Invalid response received from the server.");
        return;
    }
    if (!isSuccess(response->statusCode)) {
        completion(std::nullopt, "Server error: " + std::to_string(response->statusCode));
        return;
    }
    if (!data) {
        completion(std::nullopt, "No data received from server.");
        return;
    }
    const auto reply = JSONSerialization::jsonObject(*data, Fragments::Allowed);
    if (!reply) {
        completion(std::nullopt, "Server error! Please try again later.");
        return;
    }
    if (const auto* text = reply.value().stringMember("response")) {
        completion(GeneratedResponse{messageId, *text}, std::nullopt);
    } else {
        completion(std::nullopt, "The 'response' key does not exist or is not a string.");
    }
}

} // namespace

void HandleApiRequests::fetchUserDetails(const std::string& url, const std::string& accessToken,
                                         UserDetailsCompletion completion)
{
    const auto parsed = URL::parseAbsolute(url);
    if (!parsed) {
        print("Invalid URL");
        return;
    }
    print("URL:", url);
    print("ACCESS TOKEN:", accessToken);
    URLSession::shared()
        .dataTask(makeGetRequest(*parsed, accessToken),
                  [completion = std::move(completion)](auto data, const auto&, auto error) {
                      receiveUserDetails(data, error, completion);
                  })
        ->resume();
}

void HandleApiRequests::sendGenerateRequest(const URL& url, const std::string& accessToken,
                                            const GenerateResponseBody& body, const std::string& messageId,
                                            GenerateCompletion completion)
{
    URLRequest request = makePostRequest(url, accessToken, AcceptHeader::Sent);
    auto encoded = body.encode();
    if (!encoded) {
        completion(std::nullopt, "Failed to encode JSON: " + encoded.error().description);
        return;
    }
    request.body = std::make_shared<const std::string>(std::move(encoded).value());
    URLSession::shared()
        .dataTask(std::move(request),
                  [messageId, completion = std::move(completion)](auto data, auto response, auto error) {
                      receiveGenerated(data, response, error, messageId, completion);
                  })
        ->resume();
}

} // namespace quillmate
