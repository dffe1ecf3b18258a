#include "views/session/SessionModalViewState.h"

#include "features/MessageContent.h"
#include "platform/foundation/text/print.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
#include "state/SummarizeManager.h"
#include "views/widgets/Clipboard.h"

#include <utility>

namespace quillmate
{
namespace
{

// An editor lays out every line of its text before it shows the first; past this that takes longer than a blink.
constexpr std::size_t longestShown = 256UL * 1024;

} // namespace

SessionModalViewState::SessionModalViewState(std::shared_ptr<ButtonStateManager> buttonStateManager,
                                             std::shared_ptr<SummarizeStateManager> summarizeStateManager,
                                             DeveloperMenuState& developerMenu, QObject* parent)
    : QObject(parent)
    , m_summarizeStateManager(std::move(summarizeStateManager))
    , m_developerMenu(developerMenu)
    , m_hasSummarySection(ReplyEmailManager::shared().hasSubject())
    , m_reply(std::move(buttonStateManager))
{
    takeSummary();
    take(SummarizeManager::shared().fallbackSummarizeContent.get());
    connect(m_summarizeStateManager.get(), &SummarizeStateManager::sectionChanged, this,
            &SessionModalViewState::summaryChanged);
    connect(m_summarizeStateManager.get(), &SummarizeStateManager::summarizeResponseChanged, this,
            &SessionModalViewState::takeSummary);
}

SessionModalViewState::Summary SessionModalViewState::summary() const
{
    switch (m_summarizeStateManager->section()) {
    case SummarizeStateManager::Section::Result:
        return Summary::Result;
    case SummarizeStateManager::Section::FallbackEditor:
        return Summary::FallbackEditor;
    case SummarizeStateManager::Section::Spinner:
        return Summary::Spinner;
    case SummarizeStateManager::Section::Nothing:
        break;
    }
    return Summary::Nothing;
}

void SessionModalViewState::takeSummary()
{
    m_summary = ShownText::of(m_summarizeStateManager->summarizeResponse().value_or(""));
    Q_EMIT summaryTextChanged();
}

void SessionModalViewState::setTextareaInput(const QString& text)
{
    if (m_textareaInput == text) {
        return;
    }
    m_textareaInput = text;
    m_hiddenBytes = 0;
    const std::string content = text.toStdString();
    SummarizeManager::shared().fallbackSummarizeContent.set(content);
    storeFallbackContent(m_summarizeStateManager->messageId(), content);
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
    const std::string content = loadFallbackContent(m_summarizeStateManager->messageId()).value_or("");
    SummarizeManager::shared().fallbackSummarizeContent.set(content);
    take(content);
    Q_EMIT textareaInputChanged();
}

void SessionModalViewState::take(const std::string& content)
{
    // A longer one stays what is sent until the user types something in its place.
    m_hiddenBytes = content.size() > longestShown ? content.size() : 0;
    m_textareaInput = m_hiddenBytes > 0 ? QString() : QString::fromStdString(content);
}

QString SessionModalViewState::textareaHint() const
{
    if (m_hiddenBytes == 0) {
        return {};
    }
    return QStringLiteral(
               "This message is too long to be shown here (%1 MB). \"Summarize\" sends it as it is; what you paste "
               "here is sent in its place.")
        .arg(static_cast<double>(m_hiddenBytes) / 1e6, 0, 'f', 1);
}

void SessionModalViewState::summarizeClicked()
{
    m_summarizeStateManager->summarizeFallback();
}

void SessionModalViewState::copySummaryClicked() const
{
    copyToClipboard(m_summarizeStateManager->summarizeResponse().value_or(""));
}

void SessionModalViewState::logOutClicked()
{
    print("Logout button clicked");
    AuthManager::shared().logout();
}

} // namespace quillmate
