#include "features/ButtonStateManager.h"

#include "platform/foundation/MainOwned.h"
#include "platform/foundation/UserDefaults.h"
#include "state/ReplyEmailManager.h"
#include "state/SettingsKeys.h"

namespace quillmate
{

std::shared_ptr<ButtonStateManager> ButtonStateManager::make()
{
    return makeMainOwned<ButtonStateManager>();
}

ButtonStateManager::ButtonStateManager()
    : m_generateResponseKey(SettingsKeys::generateResponse(ReplyEmailManager::shared().messageId()))
{
}

void ButtonStateManager::loadStoredResponses()
{
    auto stored = UserDefaults::standard().string(m_generateResponseKey);
    if (m_generateResponse != stored) {
        m_generateResponse = std::move(stored);
        Q_EMIT generateResponseChanged();
    }
}

} // namespace quillmate
