#include "views/SessionModalViewState.h"

#include "features/SummaryRequest.h"
#include "platform/foundation/print.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SummarizeManager.h"

#include <utility>

namespace quillmate
{

SessionModalViewState::SessionModalViewState(std::shared_ptr<ButtonStateManager> buttonStateManager,
                                             std::shared_ptr<SummarizeStateManager> summarizeStateManager,
                                             DeveloperMenuState& developerMenu, QObject* parent)
    : QObject(parent)
    , m_buttonStateManager(std::move(buttonStateManager))
    , m_summarizeStateManager(std::move(summarizeStateManager))
    , m_developerMenu(developerMenu)
    , m_hasSummarySection(ReplyEmailManager::shared().hasSubject())
    , m_textareaInput(QString::fromStdString(SummarizeManager::shared().fallbackSummarizeContent.get()))
{
}

void SessionModalViewState::setTextareaInput(const QString& text)
{
    if (m_textareaInput == text) {
        return;
    }
    m_textareaInput = text;
    const std::string content = text.toStdString();
    SummarizeManager::shared().fallbackSummarizeContent.set(content);
    storeFallbackContent(content);
    Q_EMIT textareaInputChanged();
}

void SessionModalViewState::summarySectionAppeared()
{
    const bool signedIn = AuthManager::shared().accessToken.with([](const auto& token) { return token.has_value(); });
    if (m_hasSummarySection && signedIn) {
        m_summarizeStateManager->summarize();
    }
}

void SessionModalViewState::fallbackEditorAppeared()
{
    const std::string content = loadFallbackContent().value_or("");
    SummarizeManager::shared().fallbackSummarizeContent.set(content);
    const QString text = QString::fromStdString(content);
    if (m_textareaInput != text) {
        m_textareaInput = text;
        Q_EMIT textareaInputChanged();
    }
}

void SessionModalViewState::summarizeClicked()
{
    m_summarizeStateManager->summarizeFallback();
}

void SessionModalViewState::logOutClicked()
{
    print("Logout button clicked");
    AuthManager::shared().logout();
}

} // namespace quillmate
