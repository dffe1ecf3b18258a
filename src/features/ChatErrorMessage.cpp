#include "features/ChatErrorMessage.h"

#include <utility>

namespace quillmate
{

ChatErrorMessage& ChatErrorMessage::shared()
{
    static ChatErrorMessage message;
    return message;
}

void ChatErrorMessage::setChatErrorMessage(std::optional<std::string> message)
{
    if (m_chatErrorMessage != message) {
        m_chatErrorMessage = std::move(message);
        Q_EMIT chatErrorMessageChanged();
    }
}

} // namespace quillmate
