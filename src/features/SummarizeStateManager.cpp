#include "features/SummarizeStateManager.h"

#include "features/MessageContent.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "platform/foundation/text/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ReplyEmailManager.h"
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

std::shared_ptr<SummarizeStateManager> SummarizeStateManager::make()
{
    return makeMainOwned<SummarizeStateManager>();
}

SummarizeStateManager::SummarizeStateManager()
    : m_messageId(ReplyEmailManager::shared().messageId())
    , m_summarizeResponseKey(SettingsKeys::summarizeResponse(m_messageId))
{
    updateSection();
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

void SummarizeStateManager::updateSection()
{
    Section section = Section::Nothing;
    if (m_summarizeResponse) {
        section = Section::Result;
    } else if (SummarizeManager::shared().requestFailed) {
        section = Section::FallbackEditor;
    } else if (m_isSummarizeLoading) {
        section = Section::Spinner;
    }
    if (std::exchange(m_section, section) != section) {
        Q_EMIT sectionChanged();
    }
}

void SummarizeStateManager::loadStoredSummary()
{
    setSummarizeResponse(UserDefaults::standard().string(m_summarizeResponseKey));
}

std::string SummarizeStateManager::contentToSummarize() const
{
    MessageContent content = MessageContent::ofMessage(m_messageId);
    if (content.text) {
        return std::move(*content.text);
    }
    return content.isCurrent ? SummarizeManager::shared().fallbackSummarizeContent.get() : std::string();
}

void SummarizeStateManager::requestSummary(HandleApiRequests::SummaryCompletion completion) const
{
    const auto accessToken = AuthManager::shared().accessToken.get();
    SummarizeRequestBody body{contentToSummarize(), UserDetailsManager::shared().email()};
    storeFallbackContent(m_messageId, body.content);

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
    const std::string sentId = m_messageId.value_or("");
    HandleApiRequests::sendSummarizeRequest(
        *url, *accessToken, std::move(body), sentId,
        [sentId, completion = std::move(completion)](std::optional<SummarizedResponse> record) {
            recordResponse(sentId, record);
            completion(std::move(record));
        });
}

void SummarizeStateManager::summarize()
{
    if (m_summarizeResponse || m_isSummarizeLoading) {
        return;
    }
    requestSummary([weak = weak_from_this()](std::optional<SummarizedResponse> record) {
        DispatchQueue::main().async([weak, record = std::move(record)] {
            if (const auto manager = weak.lock()) {
                manager->receiveAutomatic(record);
            }
        });
    });
    setSummarizeLoading(true);
}

void SummarizeStateManager::receiveAutomatic(const std::optional<SummarizedResponse>& record)
{
    if (record && !m_period.isOver()) {
        setSummarizeResponse(record->response);
        UserDefaults& defaults = UserDefaults::standard();
        defaults.setBoolean(SettingsKeys::summarizeFlag(m_messageId), true);
        defaults.setString(m_summarizeResponseKey, record->response);
        loadStoredSummary();
    }
    setSummarizeLoading(false);
}

void SummarizeStateManager::summarizeFallback()
{
    setSummarizeLoading(true);
    requestSummary([self = shared_from_this()](std::optional<SummarizedResponse> record) {
        DispatchQueue::main().async([self, record = std::move(record)] { self->receiveFallback(record); });
    });
}

void SummarizeStateManager::receiveFallback(const std::optional<SummarizedResponse>& record)
{
    if (m_period.isOver()) {
        setSummarizeLoading(false);
        return;
    }
    if (record) {
        print("Summarization successful: SummarizedResponse(messageId: \"" + record->messageId + "\", response: \"" +
              record->response + "\")");
        setSummarizeResponse(record->response);
    } else {
        print("Failed to summarize.");
    }
    setSummarizeLoading(false);
}

} // namespace quillmate
