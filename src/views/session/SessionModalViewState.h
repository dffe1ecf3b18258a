#pragma once

#include "features/SummarizeStateManager.h"
#include "state/SignInPeriod.h"
#include "views/chat/ChatViewState.h"
#include "views/session/DeveloperMenuState.h"
#include "views/session/ReplySectionState.h"

#include <memory>

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

class RepliedMessage;

/// The panel body's state. Main thread only.
class SessionModalViewState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its panel")
    Q_PROPERTY(Summary summary READ summary NOTIFY summaryChanged)
    Q_PROPERTY(QString summaryText READ summaryText NOTIFY summaryTextChanged)
    /// Says so when only a part of the summary is shown.
    Q_PROPERTY(QString summaryNote READ summaryNote NOTIFY summaryTextChanged)
    /// A summary that the person asked for is under way.
    Q_PROPERTY(bool isSummarizing READ isSummarizing NOTIFY isSummarizingChanged)
    Q_PROPERTY(quillmate::DeveloperMenuState* developerMenu READ developerMenu CONSTANT)
    Q_PROPERTY(quillmate::ReplySectionState* reply READ reply CONSTANT)
    Q_PROPERTY(quillmate::ChatViewState* chat READ chat CONSTANT)
    /// Whether there is a message being replied to, and so a summary section.
    Q_PROPERTY(bool hasSummarySection READ hasSummarySection CONSTANT)
    /// What the fallback editor shows.
    Q_PROPERTY(QString textareaInput READ textareaInput WRITE setTextareaInput NOTIFY textareaInputChanged)
    /// Stands in the empty editor: what "Summarize" sends.
    Q_PROPERTY(QString textareaHint READ textareaHint NOTIFY textareaInputChanged)

public:
    /// What the summary section shows.
    enum class Summary { Nothing, Result, FallbackEditor, Spinner };
    Q_ENUM(Summary)

    SessionModalViewState(std::shared_ptr<const RepliedMessage> message,
                          std::shared_ptr<ButtonStateManager> buttonStateManager,
                          std::shared_ptr<SummarizeStateManager> summarizeStateManager,
                          DeveloperMenuState& developerMenu, QObject* parent);

    [[nodiscard]] Summary summary() const;
    [[nodiscard]] QString summaryText() const { return m_summary.text; }
    [[nodiscard]] QString summaryNote() const { return m_summary.note; }
    [[nodiscard]] bool isSummarizing() const { return m_summarizeStateManager->isSummarizeLoading(); }
    [[nodiscard]] DeveloperMenuState* developerMenu() const { return &m_developerMenu; }
    [[nodiscard]] ReplySectionState* reply() { return &m_reply; }
    [[nodiscard]] ChatViewState* chat() { return &m_chat; }
    [[nodiscard]] bool hasSummarySection() const;
    [[nodiscard]] QString textareaInput() const { return m_textareaInput; }
    [[nodiscard]] QString textareaHint() const;
    /// An edit: keeps the text for this message.
    void setTextareaInput(const QString& text);

    /// The summary section is on screen: starts the automatic summary when the user is signed in.
    void summarySectionAppeared();
    Q_INVOKABLE void fallbackEditorAppeared();
    Q_INVOKABLE void summarizeClicked();
    Q_INVOKABLE void copySummaryClicked() const;
    Q_INVOKABLE void logOutClicked();

Q_SIGNALS:
    void summaryChanged();
    void summaryTextChanged();
    void isSummarizingChanged();
    void textareaInputChanged();

private:
    /// What the editor is to show of a kept text.
    void take(const std::string& content);
    void takeSummary();

    const std::shared_ptr<const RepliedMessage> m_message;
    const SignInPeriod m_period;
    const std::shared_ptr<SummarizeStateManager> m_summarizeStateManager;
    DeveloperMenuState& m_developerMenu;
    ReplySectionState m_reply;
    ChatViewState m_chat;
    ShownText m_summary;
    QString m_textareaInput;
    std::size_t m_hiddenBytes = 0; // Length of a kept text that is not shown.
};

} // namespace quillmate
