#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"

namespace quillmate
{
namespace
{

constexpr ReplyTable chatTableWith(std::string_view keys)
{
    return {.transport = "Error sending chat request: ",
            .parsing = "Server error. Please try again.",
            .object = "Failed to cast JSON response to dictionary.",
            .keys = keys};
}

std::optional<ChatStartResponse> startedIn(const JSONValue& object)
{
    const JSONValue* response = object.member("response");
    const auto assistantId = response ? textUnder(*response, "assistantId") : std::nullopt;
    const auto threadId = response ? textUnder(*response, "threadId") : std::nullopt;
    return assistantId && threadId ? std::optional(ChatStartResponse{*assistantId, *threadId}) : std::nullopt;
}

/// Nothing when no body was delivered at all: the caller does not hear of that.
std::optional<ApiError> errorOf(const ReplyFailure& failure)
{
    switch (failure.stage) {
    case ReplyStage::Transport:
        return ApiError::networkError(failure.error.value_or(URLError()));
    case ReplyStage::Response:
        return ApiError::invalidResponse();
    case ReplyStage::Status:
        return ApiError::serverError(failure.statusCode);
    case ReplyStage::Body:
        return std::nullopt;
    case ReplyStage::Parsing:
    case ReplyStage::Object:
    case ReplyStage::Keys:
        break;
    }
    return ApiError::invalidData();
}

template<typename Value>
void send(BuiltRequest request, Reading<Value> (*read)(const ServiceReply&),
          std::function<void(Result<Value, ApiError>)> completion)
{
    using Outcome = Result<Value, ApiError>;
    if (!request) {
        print(request.error());
        completion(Outcome::failure(ApiError::invalidData()));
        return;
    }
    sendRequest(std::move(request).value(), read, [completion = std::move(completion)](auto result) {
        if (result) {
            completion(Outcome(std::move(result).value()));
        } else if (const auto error = errorOf(result.error())) {
            completion(Outcome::failure(*error));
        }
    });
}

} // namespace

BodyMembers ChatStartBody::members() const
{
    return {{"email", email},
            {"plugin_source", pluginSource},
            {"plugin_version", pluginVersion},
            {"email_content", emailContent}};
}

BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const ChatStartBody& body)
{
    return makePostRequest(url, accessToken, AcceptHeader::Omitted, body.members());
}

BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const ChatBody& body)
{
    return makePostRequest(url, accessToken, AcceptHeader::Omitted,
                           {{"assistantId", body.assistantId},
                            {"threadId", body.threadId},
                            {"email", body.email},
                            {"content", body.content},
                            {"plugin_source", pluginSource},
                            {"plugin_version", pluginVersion}});
}

Reading<ChatStartResponse> readChatStart(const ServiceReply& reply)
{
    constexpr ReplyTable table = chatTableWith(
        "The 'assistantId' or 'threadId' key does not exist or is not a string within the 'response' object.");
    return readReply<ChatStartResponse>(reply, table, startedIn);
}

Reading<std::string> readChatAnswer(const ServiceReply& reply)
{
    constexpr ReplyTable table = chatTableWith("The 'response' key does not exist or is not a string.");
    return readText(reply, table, "response");
}

void HandleApiRequests::sendChatStart(const URL& url, const std::string& accessToken, const ChatStartBody& body,
                                      ChatStartCompletion completion)
{
    URLSession::shared().perform([url, accessToken, body, completion = std::move(completion)] {
        print("Start chat url:", url.absoluteString());
        printPrivate("Start chat access_token:", accessToken);
        auto request = buildRequest(url, accessToken, body);
        printPrivate("Start chat body:", describe(request, body.members()));
        send(std::move(request), readChatStart, completion);
    });
}

void HandleApiRequests::sendChatMessage(const URL& url, const std::string& accessToken, const ChatBody& body,
                                        ChatMessageCompletion completion)
{
    send(buildRequest(url, accessToken, body), readChatAnswer, std::move(completion));
}

} // namespace quillmate
