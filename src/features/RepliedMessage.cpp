#include "features/RepliedMessage.h"

#include "platform/foundation/UserDefaults.h"
#include "state/ReplyEmailManager.h"
#include "state/SettingsKeys.h"

#include <utility>

namespace quillmate
{

RepliedMessage RepliedMessage::withId(const std::optional<std::string>& messageId)
{
    ReplyEmail current = ReplyEmailManager::shared().record();
    if (current.messageId == messageId) {
        return {true, std::move(current.content)};
    }
    return {false, loadFallbackContent(messageId)};
}

void storeFallbackContent(const std::optional<std::string>& messageId, const std::string& text)
{
    UserDefaults::standard().setString(SettingsKeys::fallbackContent(messageId), text);
}

std::optional<std::string> loadFallbackContent(const std::optional<std::string>& messageId)
{
    return UserDefaults::standard().string(SettingsKeys::fallbackContent(messageId));
}

} // namespace quillmate
