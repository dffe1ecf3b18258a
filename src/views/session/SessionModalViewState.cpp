#include "views/session/SessionModalViewState.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/text/print.h"
#include "state/AuthManager.h"
#include "views/widgets/Clipboard.h"

#include <utility>

namespace quillmate
{
namespace
{

// An editor lays out every line of its text before it shows the first; past this that takes longer than a blink.
constexpr std::size_t longestShown = 256UL * 1024;

} // namespace

SessionModalViewState::SessionModalViewState(std::shared_ptr<const RepliedMessage> message,
                                             std::shared_ptr<ButtonStateManager> buttonStateManager,
                                             std::shared_ptr<SummarizeStateManager> summarizeStateManager,
                                             DeveloperMenuState& developerMenu, QObject* parent)
    : QObject(parent)
    , m_message(message)
    , m_summarizeStateManager(std::move(summarizeStateManager))
    , m_developerMenu(developerMenu)
    , m_reply(buttonStateManager)
    , m_chat(std::move(message))
{
    takeSummary();
    connect(m_summarizeStateManager.get(), &SummarizeStateManager::isSummarizeLoadingChanged, this,
            &SessionModalViewState::isSummarizingChanged);
    connect(
        m_summarizeStateManager.get(), &SummarizeStateManager::fallbackFailed, this,
        [manager = std::move(buttonStateManager)](const QString& reason) { manager->announce(reason.toStdString()); });
    connect(m_summarizeStateManager.get(), &SummarizeStateManager::sectionChanged, this,
            &SessionModalViewState::summaryChanged);
    connect(m_summarizeStateManager.get(), &SummarizeStateManager::summarizeResponseChanged, this,
            &SessionModalViewState::takeSummary);
    connect(m_summarizeStateManager.get(), &SummarizeStateManager::contentChanged, this,
            &SessionModalViewState::textareaInputChanged); // The hint speaks of it.
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
    m_message->storeFallbackContent(text.toStdString(), m_period);
    Q_EMIT textareaInputChanged();
}

bool SessionModalViewState::hasSummarySection() const
{
    return m_message->hasSubject();
}

void SessionModalViewState::summarySectionAppeared()
{
    const bool signedIn = AuthManager::shared().accessToken.with([](const auto& token) { return token.has_value(); });
    if (hasSummarySection() && signedIn) {
        m_summarizeStateManager->summarize();
    }
}

void SessionModalViewState::fallbackEditorAppeared()
{
    take(m_message->fallbackContent().value_or(""));
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
        return m_message->hasContent()
                   ? QStringLiteral(
                         "\"Summarize\" sends the original message; what you paste here is sent in its place.")
                   : QStringLiteral("Paste the text of the message here; \"Summarize\" sends it.");
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
