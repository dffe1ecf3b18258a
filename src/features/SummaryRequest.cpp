#include "features/SummaryRequest.h"

#include "platform/foundation/UserDefaults.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SettingsKeys.h"
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

} // namespace

void requestSummary(std::function<void(std::optional<SummarizedResponse>)> completion)
{
    const auto accessToken = AuthManager::shared().accessToken.get();
    // Content and id are taken in one look, so that the text of one message never goes under the id of another.
    ReplyEmail message = ReplyEmailManager::shared().record();
    const std::string messageId = message.messageId.value_or("");

    SummarizeRequestBody body;
    body.content =
        message.content ? std::move(*message.content) : SummarizeManager::shared().fallbackSummarizeContent.get();
    body.email = UserDetailsManager::shared().email();
    UserDefaults::standard().setString(SettingsKeys::fallbackContent(message.messageId), body.content);

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
        *url, *accessToken, std::move(body), messageId,
        [messageId, completion = std::move(completion)](std::optional<SummarizedResponse> record) {
            recordResponse(messageId, record);
            completion(std::move(record));
        });
}

void storeFallbackContent(const std::string& text)
{
    UserDefaults::standard().setString(SettingsKeys::fallbackContent(ReplyEmailManager::shared().messageId()), text);
}

std::optional<std::string> loadFallbackContent()
{
    return UserDefaults::standard().string(SettingsKeys::fallbackContent(ReplyEmailManager::shared().messageId()));
}

} // namespace quillmate
