#include "features/SummarizeStateManager.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/text/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SettingsKeys.h"
#include "state/SummarizeManager.h"

#include <utility>

namespace quillmate
{
namespace
{

void recordResponse(const std::string& messageId, const std::optional<SummarizedResponse>& record)
{
    SummarizeManager::shared().responses.with([&](auto& responses) {
        if (record) {
            responses.insert_or_assign(messageId, *record);
        } else {
            responses.erase(messageId);
        }
    });
}

} // namespace

std::shared_ptr<SummarizeStateManager> SummarizeStateManager::make(std::shared_ptr<const RepliedMessage> message)
{
    return makeMainOwned<SummarizeStateManager>(std::move(message));
}

SummarizeStateManager::SummarizeStateManager(std::shared_ptr<const RepliedMessage> message)
    : m_message(std::move(message))
    , m_summarizeResponseKey(SettingsKeys::summarizeResponse(m_message->messageId()))
{
}

void SummarizeStateManager::setSummarizeLoading(bool loading)
{
    if (std::exchange(m_isSummarizeLoading, loading) != loading) {
        Q_EMIT isSummarizeLoadingChanged();
    }
    updateSection();
}

void SummarizeStateManager::setSummarizeResponse(std::optional<std::string> response)
{
    if (m_summarizeResponse != response) {
        m_summarizeResponse = std::move(response);
        Q_EMIT summarizeResponseChanged();
    }
    updateSection();
}

void SummarizeStateManager::setFailed(bool failed)
{
    m_hasFailed = failed;
    updateSection();
}

void SummarizeStateManager::updateSection()
{
    Section section = Section::Nothing;
    if (m_summarizeResponse) {
        section = Section::Result;
    } else if (m_hasFailed) {
        section = Section::FallbackEditor;
    } else if (m_isSummarizeLoading || m_awaitsContent) {
        section = Section::Spinner;
    }
    if (std::exchange(m_section, section) != section) {
        Q_EMIT sectionChanged();
    }
}

void SummarizeStateManager::loadStoredSummary()
{
    setSummarizeResponse(m_message->string(m_summarizeResponseKey));
}

void SummarizeStateManager::requestSummary(SharedText content, HandleApiRequests::SummaryCompletion completion) const
{
    if (m_period.isTokenGone()) {
        completion(std::nullopt);
        return;
    }
    const auto accessToken = AuthManager::shared().accessToken.get();
    const auto url = URL::parseAbsolute(currentApiURL() + "/summarize");
    if (!url) {
        completion(std::nullopt);
        return;
    }
    if (!accessToken) {
        print("Access token is null in summarize API call");
        completion(std::nullopt);
        return;
    }
    const std::string sentId = m_message->messageId().value_or("");
    HandleApiRequests::sendSummarizeRequest(
        *url, *accessToken, std::move(content), sentId,
        [sentId, period = m_period, completion = std::move(completion)](std::optional<SummarizedResponse> record) {
            if (!period.isTokenGone()) {
                recordResponse(sentId, record);
            }
            completion(std::move(record));
        });
}

void SummarizeStateManager::summarize()
{
    if (m_summarizeResponse || m_isSummarizeLoading) {
        return;
    }
    const bool hasContent = m_message->hasContent();
    m_awaitsContent = !hasContent && m_message->contentFollows();
    setFailed(!hasContent && !m_awaitsContent);
    if (!hasContent) {
        m_message->whenContentArrives([weak = weak_from_this()] {
            if (const auto manager = weak.lock()) {
                manager->contentArrived();
            }
        });
        return;
    }
    // What the person has pasted for it is theirs, and stays.
    RepliedMessage::keepOwnContent(m_message, m_period);
    requestSummary(*m_message->content(), [weak = weak_from_this()](std::optional<SummarizedResponse> record) {
        DispatchQueue::main().async([weak, record = std::move(record)] {
            if (const auto manager = weak.lock()) {
                manager->receiveAutomatic(record);
            }
        });
    });
    setSummarizeLoading(true);
}

void SummarizeStateManager::contentArrived()
{
    Q_EMIT contentChanged();
    // What the person has pasted meanwhile stays where they are at work on it.
    const bool hasPasted = m_hasFailed && !m_message->fallbackContent().value_or("").empty();
    if (!hasPasted && !m_period.isTokenGone()) {
        summarize();
    }
}

void SummarizeStateManager::receiveAutomatic(const std::optional<SummarizedResponse>& record)
{
    if (record && !m_period.isOver()) {
        setSummarizeResponse(record->response);
        m_message->setBoolean(SettingsKeys::summarizeFlag(m_message->messageId()), true, m_period);
        if (m_message->messageId()) {
            m_message->setString(m_summarizeResponseKey, record->response, m_period);
        } else { // The key is that of all messages without an id.
            m_message->keepOwn(m_summarizeResponseKey, record->response, m_period);
        }
        loadStoredSummary();
    }
    m_hasFailed = !record && !m_period.isTokenGone();
    setSummarizeLoading(false);
}

void SummarizeStateManager::summarizeFallback()
{
    if (m_isSummarizeLoading) {
        return;
    }
    SharedText content = m_message->fallbackContent().value_or("");
    if (content.empty() && m_message->hasContent()) {
        content = *m_message->content();
    }
    if (content.empty()) {
        Q_EMIT fallbackFailed(QStringLiteral("Message content is empty."));
        return;
    }
    setSummarizeLoading(true);
    requestSummary(std::move(content), [self = shared_from_this()](std::optional<SummarizedResponse> record) {
        DispatchQueue::main().async([self, record = std::move(record)] { self->receiveFallback(record); });
    });
}

void SummarizeStateManager::receiveFallback(const std::optional<SummarizedResponse>& record)
{
    if (m_period.isTokenGone()) {
        setSummarizeLoading(false);
        return;
    }
    if (record) {
        printPrivate("Summarization successful: SummarizedResponse(messageId: \"" + record->messageId +
                     "\", response: \"" + record->response + "\")");
        setSummarizeResponse(record->response);
    } else {
        print("Failed to summarize.");
        Q_EMIT fallbackFailed(QStringLiteral("Failed to summarize."));
    }
    setSummarizeLoading(false);
}

} // namespace quillmate
