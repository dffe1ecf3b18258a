#include "platform/foundation/URLSession.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "service/RequestBuilder.h"

#include <utility>

namespace quillmate
{
namespace
{

void receiveTrainingReply(const std::optional<std::string>& data, const std::optional<HTTPURLResponse>& response,
                          const std::optional<URLError>& error, const HandleApiRequests::TrainingCompletion& completion)
{
    if (error) {
        print("Error sending request: " + error->description());
        return;
    }
    if (!response) {
        print("Invalid response received from the server.");
        return;
    }
    if (!isSuccess(response->statusCode)) {
        print("Server error: " + std::to_string(response->statusCode));
        return;
    }
    if (!data) {
        return;
    }
    const auto reply = JSONSerialization::jsonObject(*data, JSONSerialization::Fragments::Allowed);
    if (!reply) {
        print("Server error. Please try again.");
        return;
    }
    if (const auto* text = reply.value().stringMember("success")) {
        completion(*text);
    } else {
        print("The 'sucess' key does not exist or is not a string.");
    }
}

} // namespace

void HandleApiRequests::sendTrainingData(const URL& url, const std::string& accessToken, const TrainingDataBody& body,
                                         TrainingCompletion completion)
{
    URLRequest request = makePostRequest(url, accessToken, AcceptHeader::Omitted);
    auto encoded = body.encode();
    print("TRAINIG DATA BODY", encoded ? encoded.value() : body.description());
    if (!encoded) {
        print("Failed to encode JSON: " + encoded.error().description);
        return;
    }
    request.body = std::make_shared<const std::string>(std::move(encoded).value());
    URLSession::shared()
        .dataTask(std::move(request),
                  [completion = std::move(completion)](auto data, auto response, auto error) {
                      receiveTrainingReply(data, response, error, completion);
                  })
        ->resume();
}

} // namespace quillmate
