#include "features/ReplyRequest.h"

#include "features/ButtonStateManager.h"
#include "features/RepliedMessage.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/UserDefaults.h"
#include "platform/foundation/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SettingsKeys.h"
#include "state/UserDetailsManager.h"

#include <utility>

namespace quillmate
{
namespace
{

/// The message's own text, else what the user pasted for it; an empty text gives the service nothing to answer.
std::optional<std::string> contentToAnswer(const std::optional<std::string>& messageId)
{
    auto content = RepliedMessage::withId(messageId).content;
    if (!content || content->empty()) {
        content = loadFallbackContent(messageId);
    }
    return content && content->empty() ? std::nullopt : content;
}

void showResult(ButtonStateManager& manager, const std::optional<GeneratedResponse>& record,
                const std::optional<std::string>& errorMessage)
{
    if (manager.period().isOver()) {
        manager.setGenerateResponseLoading(false);
        return;
    }
    if (record) {
        manager.setGenerateResponse(record->response);
        markReplyGenerated(manager.messageId().value_or(""));
        UserDefaults::standard().setString(manager.generateResponseKey(), record->response);
        manager.updateSection();
        manager.announce("Response generated successfully.");
    } else if (errorMessage) {
        manager.announce(*errorMessage);
    }
    manager.setGenerateResponseLoading(false);
}

} // namespace

bool isFirstReply(const std::string& messageId)
{
    return !UserDefaults::standard().boolean(SettingsKeys::generateResponseFlag(messageId));
}

void markReplyGenerated(const std::string& messageId)
{
    UserDefaults::standard().setBoolean(SettingsKeys::generateResponseFlag(messageId), true);
}

void requestReply(const std::shared_ptr<ButtonStateManager>& manager)
{
    const std::weak_ptr<ButtonStateManager> weak = manager;
    const auto fail = [&weak](const char* logLine, const char* errorText) {
        print(logLine);
        deliverReplyResult(std::nullopt, errorText, weak);
    };
    const auto accessToken = AuthManager::shared().accessToken.get();
    auto content = contentToAnswer(manager->messageId());
    if (!content) {
        fail("Message content is empty.", "Message content is empty.");
        return;
    }
    GenerateResponseBody body;
    body.messageId = manager->messageId().value_or("");
    body.content = std::move(*content);
    body.email = UserDetailsManager::shared().email();
    const auto url = URL::parseAbsolute(currentApiURL() + "/response");
    if (!url) {
        fail("Invalid URL", "Invalid URL");
        return;
    }
    if (!accessToken) {
        fail("Access token is null in generate response API call", "Access token is null");
        return;
    }
    HandleApiRequests::sendGenerateRequest(
        *url, *accessToken, body, body.messageId,
        [weak](auto record, auto errorText) { deliverReplyResult(std::move(record), std::move(errorText), weak); });
}

void deliverReplyResult(std::optional<GeneratedResponse> record, std::optional<std::string> errorMessage,
                        std::weak_ptr<ButtonStateManager> manager)
{
    DispatchQueue::main().async(
        [record = std::move(record), errorMessage = std::move(errorMessage), weak = std::move(manager)] {
            if (const auto alive = weak.lock()) {
                showResult(*alive, record, errorMessage);
            }
        });
}

} // namespace quillmate
