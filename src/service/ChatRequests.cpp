#include "platform/foundation/URLSession.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "service/RequestBuilder.h"

#include <utility>

namespace quillmate
{
namespace
{

using StartResult = Result<ChatStartResponse, ApiError>;
using MessageResult = Result<std::string, ApiError>;

/// The reply's members, up to where the two requests go their own ways; nothing when no body came at all.
std::optional<Result<JSONValue, ApiError>> readObject(const std::optional<std::string>& data,
                                                      const std::optional<HTTPURLResponse>& response,
                                                      const std::optional<URLError>& error)
{
    using Read = Result<JSONValue, ApiError>;
    if (error) {
        print("Error sending chat request: " + error->description());
        return Read::failure(ApiError::networkError(*error));
    }
    if (!response) {
        print("Invalid response received from the server.");
        return Read::failure(ApiError::invalidResponse());
    }
    if (!isSuccess(response->statusCode)) {
        print("Server error: " + std::to_string(response->statusCode));
        return Read::failure(ApiError::serverError(response->statusCode));
    }
    if (!data) {
        return std::nullopt;
    }
    auto reply = JSONSerialization::jsonObject(*data, JSONSerialization::Fragments::Allowed);
    if (!reply) {
        print("Server error. Please try again.");
        return Read::failure(ApiError::invalidData());
    }
    if (!reply.value().object()) {
        print("Failed to cast JSON response to dictionary.");
        return Read::failure(ApiError::invalidData());
    }
    return std::move(reply).value();
}

StartResult readStart(const JSONValue& reply)
{
    const JSONValue* response = reply.member("response");
    const auto* assistantId = response ? response->stringMember("assistantId") : nullptr;
    const auto* threadId = response ? response->stringMember("threadId") : nullptr;
    if (!assistantId || !threadId) {
        print("The 'assistantId' or 'threadId' key does not exist or is not a string within the 'response' object.");
        return StartResult::failure(ApiError::invalidData());
    }
    return ChatStartResponse{*assistantId, *threadId};
}

MessageResult readAnswer(const JSONValue& reply)
{
    const auto* answer = reply.stringMember("response");
    if (!answer) {
        print("The 'response' key does not exist or is not a string.");
        return MessageResult::failure(ApiError::invalidData());
    }
    return *answer;
}

template<typename Value>
void send(const URL& url, const std::string& accessToken, Result<std::string, JSONError> encoded,
          Result<Value, ApiError> (*read)(const JSONValue&), std::function<void(Result<Value, ApiError>)> completion)
{
    if (!encoded) {
        print("Failed to encode JSON: " + encoded.error().description);
        completion(Result<Value, ApiError>::failure(ApiError::invalidData()));
        return;
    }
    URLRequest request = makePostRequest(url, accessToken, AcceptHeader::Omitted);
    request.body = std::make_shared<const std::string>(std::move(encoded).value());
    URLSession::shared()
        .dataTask(std::move(request),
                  [read, completion = std::move(completion)](auto data, auto response, auto error) {
                      if (const auto reply = readObject(data, response, error)) {
                          completion(*reply ? read(reply->value()) : Result<Value, ApiError>::failure(reply->error()));
                      }
                  })
        ->resume();
}

} // namespace

void HandleApiRequests::sendChatStart(const URL& url, const std::string& accessToken, const ChatStartBody& body,
                                      ChatStartCompletion completion)
{
    print("Start chat url:", url.absoluteString());
    print("Start chat access_token:", accessToken);
    auto encoded = body.encode();
    print("Start chat body:", encoded ? encoded.value() : body.description());
    send(url, accessToken, std::move(encoded), readStart, std::move(completion));
}

void HandleApiRequests::sendChatMessage(const URL& url, const std::string& accessToken, const ChatBody& body,
                                        ChatMessageCompletion completion)
{
    send(url, accessToken, body.encode(), readAnswer, std::move(completion));
}

} // namespace quillmate
