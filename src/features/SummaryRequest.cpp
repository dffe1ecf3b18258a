#include "features/SummaryRequest.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SummarizeManager.h"
#include "state/UserDetailsManager.h"

#include <utility>

namespace quillmate
{
namespace
{

void recordResponse(const std::string& messageId, const std::optional<SummarizedResponse>& record)
{
    SummarizeManager::shared().responses.with([&](auto& responses) {
        if (record) {
            responses.insert_or_assign(messageId, *record);
        } else {
            responses.erase(messageId);
        }
    });
}

std::string contentOf(const std::optional<std::string>& messageId)
{
    RepliedMessage message = RepliedMessage::withId(messageId);
    if (message.content) {
        return std::move(*message.content);
    }
    return message.isCurrent ? SummarizeManager::shared().fallbackSummarizeContent.get() : std::string();
}

} // namespace

void requestSummary(const std::optional<std::string>& messageId,
                    std::function<void(std::optional<SummarizedResponse>)> completion)
{
    const auto accessToken = AuthManager::shared().accessToken.get();
    const std::string sentId = messageId.value_or("");
    SummarizeRequestBody body;
    body.content = contentOf(messageId);
    body.email = UserDetailsManager::shared().email();
    storeFallbackContent(messageId, body.content);

    const auto url = URL::parseAbsolute(currentApiURL() + "/summarize");
    if (!url) {
        completion(std::nullopt);
        return;
    }
    if (!accessToken) {
        print("Access token is null in summarize API call");
        completion(std::nullopt);
        return;
    }
    HandleApiRequests::sendSummarizeRequest(
        *url, *accessToken, std::move(body), sentId,
        [sentId, completion = std::move(completion)](std::optional<SummarizedResponse> record) {
            recordResponse(sentId, record);
            completion(std::move(record));
        });
}

} // namespace quillmate
