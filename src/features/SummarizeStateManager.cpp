#include "features/SummarizeStateManager.h"

#include "features/SummaryRequest.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/MainOwned.h"
#include "platform/foundation/UserDefaults.h"
#include "platform/foundation/print.h"
#include "state/ReplyEmailManager.h"
#include "state/SettingsKeys.h"
#include "state/SummarizeManager.h"

namespace quillmate
{

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
    if (m_isSummarizeLoading != loading) {
        m_isSummarizeLoading = loading;
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
    if (m_section != section) {
        m_section = section;
        Q_EMIT sectionChanged();
    }
}

void SummarizeStateManager::loadStoredSummary()
{
    setSummarizeResponse(UserDefaults::standard().string(m_summarizeResponseKey));
}

void SummarizeStateManager::summarize()
{
    if (m_summarizeResponse || m_isSummarizeLoading) {
        return;
    }
    requestSummary(m_messageId, [weak = weak_from_this()](std::optional<SummarizedResponse> record) {
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
    requestSummary(m_messageId, [self = shared_from_this()](std::optional<SummarizedResponse> record) {
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
