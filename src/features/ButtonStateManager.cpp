#include "features/ButtonStateManager.h"

#include "features/ReplyRequest.h"
#include "platform/foundation/MainOwned.h"
#include "platform/foundation/UserDefaults.h"
#include "state/ReplyEmailManager.h"
#include "state/SettingsKeys.h"

#include <utility>

namespace quillmate
{

std::shared_ptr<ButtonStateManager> ButtonStateManager::make()
{
    return makeMainOwned<ButtonStateManager>();
}

ButtonStateManager::ButtonStateManager()
    : m_messageId(ReplyEmailManager::shared().messageId())
    , m_generateResponseKey(SettingsKeys::generateResponse(m_messageId))
{
}

void ButtonStateManager::setGenerateResponseLoading(bool loading)
{
    if (std::exchange(m_isGenerateResponseLoading, loading) != loading) {
        Q_EMIT isGenerateResponseLoadingChanged();
    }
}

void ButtonStateManager::setGenerateResponse(std::optional<std::string> response)
{
    if (m_generateResponse != response) {
        m_generateResponse = std::move(response);
        Q_EMIT generateResponseChanged();
    }
    updateSection();
}

void ButtonStateManager::setShowToast(bool show)
{
    if (std::exchange(m_showToast, show) != show) {
        Q_EMIT showToastChanged();
    }
}

void ButtonStateManager::setToastMessage(std::string message)
{
    if (m_toastMessage != message) {
        m_toastMessage = std::move(message);
        Q_EMIT toastMessageChanged();
    }
}

void ButtonStateManager::loadStoredResponses()
{
    setGenerateResponse(UserDefaults::standard().string(m_generateResponseKey));
}

void ButtonStateManager::updateSection()
{
    const bool shown = m_generateResponse && !isFirstReply(m_messageId.value_or(""));
    const Section section = shown ? Section::Reply : Section::Introduction;
    if (std::exchange(m_section, section) != section) {
        Q_EMIT sectionChanged();
    }
}

void ButtonStateManager::announce(std::string message)
{
    setToastMessage(std::move(message));
    setShowToast(true);
}

} // namespace quillmate
