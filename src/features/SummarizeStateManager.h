#pragma once

#include "service/HandleApiRequests.h"
#include "state/SignInPeriod.h"
#include "state/SummarizedResponse.h"

#include <memory>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

/// The summary of one panel as its views show it, and the requests that drive it. Main thread only.
class SummarizeStateManager : public QObject, public std::enable_shared_from_this<SummarizeStateManager>
{
    Q_OBJECT

public:
    /// What the summary section shows.
    enum class Section { Nothing, Result, FallbackEditor, Spinner };

    /// Fixes the key of the stored summary by the message that is being replied to now.
    static std::shared_ptr<SummarizeStateManager> make();
    SummarizeStateManager();

    /// A summary request is under way.
    [[nodiscard]] bool isSummarizeLoading() const { return m_isSummarizeLoading; }
    void setSummarizeLoading(bool loading);
    /// The summary shown, absent while none is known.
    [[nodiscard]] const std::optional<std::string>& summarizeResponse() const { return m_summarizeResponse; }
    void setSummarizeResponse(std::optional<std::string> response);
    /// The message that this summary is about.
    [[nodiscard]] const std::optional<std::string>& messageId() const { return m_messageId; }
    [[nodiscard]] Section section() const { return m_section; }

    /// Shows the summary that is stored for this message, or none.
    void loadStoredSummary();
    /// The automatic summary: asks for one unless there is one or one is under way, shows and stores it.
    void summarize();
    /// The summary of what the fallback editor holds: shows it, does not store it.
    void summarizeFallback();

Q_SIGNALS:
    void isSummarizeLoadingChanged();
    void summarizeResponseChanged();
    void sectionChanged();

private:
    void updateSection();
    /// The message's text as long as it is the one being replied to and its text is known, else the text kept for it:
    /// another message may be the current one by now, and neither's text goes under the other's id.
    [[nodiscard]] std::string contentToSummarize() const;
    /// Sends one summary request. The completion runs at most once, on any thread; never when the refresh of the user's
    /// details that goes before the request fails. What was received stands in `SummarizeManager.responses` by then.
    void requestSummary(HandleApiRequests::SummaryCompletion completion) const;
    void receiveAutomatic(const std::optional<SummarizedResponse>& record);
    void receiveFallback(const std::optional<SummarizedResponse>& record);

    const std::optional<std::string> m_messageId;
    const std::string m_summarizeResponseKey;
    const SignInPeriod m_period;
    bool m_isSummarizeLoading = false;
    std::optional<std::string> m_summarizeResponse;
    Section m_section = Section::Nothing;
};

} // namespace quillmate
