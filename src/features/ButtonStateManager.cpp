#include "features/ButtonStateManager.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/text/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SettingsKeys.h"

#include <utility>

namespace quillmate
{

std::shared_ptr<ButtonStateManager> ButtonStateManager::make(std::shared_ptr<const RepliedMessage> message)
{
    return makeMainOwned<ButtonStateManager>(std::move(message));
}

ButtonStateManager::ButtonStateManager(std::shared_ptr<const RepliedMessage> message)
    : m_message(std::move(message))
    , m_generateResponseKey(SettingsKeys::generateResponse(m_message->messageId()))
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

bool ButtonStateManager::isFirstReply() const
{
    return !m_message->boolean(SettingsKeys::generateResponseFlag(m_message->messageId()));
}

void ButtonStateManager::markReplyGenerated()
{
    m_message->setBoolean(SettingsKeys::generateResponseFlag(m_message->messageId()), true, m_period);
}

void ButtonStateManager::updateSection()
{
    const Section section = m_generateResponse && !isFirstReply() ? Section::Reply : Section::Introduction;
    if (std::exchange(m_section, section) != section) {
        Q_EMIT sectionChanged();
    }
}

void ButtonStateManager::announce(std::string message)
{
    setToastMessage(std::move(message));
    setShowToast(true);
    Q_EMIT announced();
}

void ButtonStateManager::loadStoredResponses()
{
    setGenerateResponse(m_message->string(m_generateResponseKey));
}

/// The message's own text, else what the user pasted for it; an empty text gives the service nothing to answer.
SharedText ButtonStateManager::contentToAnswer() const
{
    return m_message->hasContent() ? *m_message->content() : SharedText(m_message->fallbackContent().value_or(""));
}

void ButtonStateManager::generate()
{
    if (!m_isGenerateResponseLoading && !m_period.isTokenGone()) {
        setGenerateResponseLoading(true);
        requestReply();
    }
}

void ButtonStateManager::requestReply()
{
    if (m_message->contentFollows()) {
        m_message->whenContentArrives([weak = weak_from_this()] {
            if (const auto manager = weak.lock()) {
                manager->requestReply();
            }
        });
        return;
    }
    const auto fail = [this](const char* logLine, const char* errorText) {
        print(logLine);
        deliverReplyResult(weak_from_this(), std::nullopt, errorText);
    };
    const auto accessToken = AuthManager::shared().accessToken.get();
    SharedText content = contentToAnswer();
    if (content.empty()) {
        fail("Message content is empty.", "Message content is empty.");
        return;
    }
    const auto url = URL::parseAbsolute(currentApiURL() + "/response");
    if (!url) {
        fail("Invalid URL", "Invalid URL");
        return;
    }
    if (!accessToken) {
        fail("Access token is null in generate response API call", "Access token is null");
        return;
    }
    const GenerateResponseBody body{m_message->messageId().value_or(""), std::move(content),
                                    UserDetailsManager::shared().email()};
    HandleApiRequests::sendGenerateRequest(*url, *accessToken, body, body.messageId,
                                           [weak = weak_from_this()](auto record, auto errorText) {
                                               deliverReplyResult(weak, std::move(record), std::move(errorText));
                                           });
}

void ButtonStateManager::deliverReplyResult(const std::weak_ptr<ButtonStateManager>& weak,
                                            std::optional<GeneratedResponse> record,
                                            std::optional<std::string> errorMessage)
{
    DispatchQueue::main().async([weak, record = std::move(record), errorMessage = std::move(errorMessage)] {
        if (const auto manager = weak.lock()) {
            manager->receiveReply(record, errorMessage);
        }
    });
}

void ButtonStateManager::receiveReply(const std::optional<GeneratedResponse>& record,
                                      const std::optional<std::string>& errorMessage)
{
    if (record && !m_period.isOver()) {
        setGenerateResponse(record->response);
        markReplyGenerated();
        m_message->setString(m_generateResponseKey, record->response, m_period);
        updateSection();
        announce("Response generated successfully.");
    } else if (errorMessage && !m_period.isOver()) {
        announce(*errorMessage);
    }
    setGenerateResponseLoading(false);
}

void ButtonStateManager::submitTrainingData()
{
    if (m_isSubmitting || m_period.isTokenGone()) {
        return;
    }
    const auto url = URL::parseAbsolute(currentApiURL() + "/create-training-data");
    if (!url) {
        print("Invalid URL");
        deliverTrainingResult("");
        return;
    }
    const std::string accessToken = AuthManager::shared().accessToken.get().value_or("");
    const TrainingDataBody body{UserDetailsManager::shared().email(), m_message->content().value_or(""),
                                m_generateResponse.value_or("No response available")};
    if (m_message->messageId().value_or("").empty()) {
        print("Session message id is nil");
    }
    m_isSubmitting = true;
    const auto deliver = [weak = weak_from_this()](std::string message) {
        DispatchQueue::main().async([weak, message = std::move(message)] {
            if (const auto manager = weak.lock()) {
                manager->deliverTrainingResult(message);
            }
        });
    };
    HandleApiRequests::sendTrainingData(*url, accessToken, body, deliver, [deliver] { deliver(""); });
}

void ButtonStateManager::deliverTrainingResult(const std::string& message)
{
    m_isSubmitting = false;
    if (!m_period.isOver()) {
        announce(message.empty() ? "Failed to submit training data." : "Success: " + message);
    }
}

} // namespace quillmate
