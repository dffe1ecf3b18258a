#pragma once

#include "base/SharedText.h"
#include "service/HandleApiRequests.h"
#include "state/SignInPeriod.h"
#include "state/SummarizedResponse.h"

#include <memory>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

class RepliedMessage;

/// The summary of one panel as its views show it, and the requests that drive it. Main thread only.
class SummarizeStateManager : public QObject, public std::enable_shared_from_this<SummarizeStateManager>
{
    Q_OBJECT

public:
    /// What the summary section shows.
    enum class Section { Nothing, Result, FallbackEditor, Spinner };

    static std::shared_ptr<SummarizeStateManager> make(std::shared_ptr<const RepliedMessage> message);
    explicit SummarizeStateManager(std::shared_ptr<const RepliedMessage> message);

    /// A summary request is under way.
    [[nodiscard]] bool isSummarizeLoading() const { return m_isSummarizeLoading; }
    void setSummarizeLoading(bool loading);
    /// The summary shown, absent while none is known.
    [[nodiscard]] const std::optional<std::string>& summarizeResponse() const { return m_summarizeResponse; }
    void setSummarizeResponse(std::optional<std::string> response);
    /// No summary came of the last request, or there is nothing to ask with.
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }
    void setFailed(bool failed);
    [[nodiscard]] Section section() const { return m_section; }

    /// Shows the summary that is stored for this message, or none.
    void loadStoredSummary();
    /// The automatic summary: asks for one unless there is one or one is under way, shows and stores it. A message
    /// without a text is left to the editor.
    void summarize();
    /// The summary of what the fallback editor holds, else of the message: shows it, does not store it. Nothing while
    /// a request is under way.
    void summarizeFallback();

Q_SIGNALS:
    void isSummarizeLoadingChanged();
    void summarizeResponseChanged();
    void sectionChanged();
    /// More is known of the message's own text.
    void contentChanged();
    /// What the person asked for came to nothing, and why.
    void fallbackFailed(const QString& reason);

private:
    void updateSection();
    void contentArrived();
    /// Sends one summary request. The completion runs exactly once, on any thread. What was received stands in
    /// `SummarizeManager.responses` by then.
    void requestSummary(SharedText content, HandleApiRequests::SummaryCompletion completion) const;
    void receiveAutomatic(const std::optional<SummarizedResponse>& record);
    void receiveFallback(const std::optional<SummarizedResponse>& record);

    const std::shared_ptr<const RepliedMessage> m_message;
    const std::string m_summarizeResponseKey;
    const SignInPeriod m_period;
    bool m_isSummarizeLoading = false;
    bool m_hasFailed = false;
    bool m_awaitsContent = false; // The text of the message is on its way.
    std::optional<std::string> m_summarizeResponse;
    Section m_section = Section::Nothing;
};

} // namespace quillmate
