#include "features/MessageContent.h"

#include "platform/foundation/settings/UserDefaults.h"
#include "state/ReplyEmailManager.h"
#include "state/SettingsKeys.h"

#include <utility>

namespace quillmate
{

MessageContent MessageContent::ofMessage(const std::optional<std::string>& messageId)
{
    ReplyEmail current = ReplyEmailManager::shared().record();
    if (current.messageId == messageId) {
        return {true, std::move(current.content)};
    }
    auto kept = messageId ? loadFallbackContent(messageId) : std::nullopt;
    return {false, kept && kept->empty() ? std::nullopt : std::move(kept)};
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
