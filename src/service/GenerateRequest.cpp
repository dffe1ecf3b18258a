#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"

namespace quillmate
{
namespace
{

constexpr ReplyTable generateTable{.audience = ReplyTable::Audience::User,
                                   .transport = "Error sending request: ",
                                   .body = "No data received from server.",
                                   .parsing = "Server error! Please try again later.",
                                   .keys = "The 'response' key does not exist or is not a string."};

} // namespace

BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const GenerateResponseBody& body)
{
    return makePostRequest(url, accessToken, AcceptHeader::Sent,
                           {{"messageId", body.messageId},
                            {"content", body.content},
                            {"email", body.email},
                            {"plugin_source", pluginSource},
                            {"plugin_version", pluginVersion}});
}

Reading<std::string> readGenerated(const ServiceReply& reply)
{
    return readText(reply, generateTable, "response");
}

void HandleApiRequests::sendGenerateRequest(const URL& url, const std::string& accessToken,
                                            const GenerateResponseBody& body, const std::string& messageId,
                                            GenerateCompletion completion)
{
    URLSession::shared().perform([url, accessToken, body, messageId, completion = std::move(completion)] {
        auto request = buildRequest(url, accessToken, body);
        if (!request) {
            completion(std::nullopt, request.error());
            return;
        }
        sendRequest(std::move(request).value(), readGenerated, [messageId, completion](const auto& generated) {
            if (generated) {
                completion(GeneratedResponse{messageId, generated.value()}, std::nullopt);
            } else {
                completion(std::nullopt, generated.error().text);
            }
        });
    });
}

} // namespace quillmate
