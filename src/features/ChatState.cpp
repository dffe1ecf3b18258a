#include "features/ChatState.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/schedule/WorkQueue.h"
#include "platform/foundation/settings/UserDefaults.h"
#include "platform/foundation/text/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SettingsKeys.h"
#include "state/StartChatManager.h"
#include "state/UserDetailsManager.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace quillmate
{
namespace
{

using StoredHistory = std::optional<Result<MessageHistory, JSONError>>;

constexpr auto failureSentence = "Something went wrong, please try again";
constexpr auto noSignInSentence = "The service answers only after a sign-in, and nobody can sign in here. "
                                  "Use the chat in the panel beside a message.";

// Up to this many bytes are read and decoded in less time than a frame takes.
constexpr std::size_t shortHistory = 1'000'000;

StoredHistory storedFor(const RepliedMessage& message, const std::string& key)
{
    const auto bytes = message.data(key);
    if (!bytes) {
        return std::nullopt;
    }
    auto decoded = MessageHistory::decode(*bytes);
    if (!decoded) {
        return decoded;
    }
    MessageHistory history = std::move(decoded).value();
    std::ignore = history.encode(); // Here already, so that nobody waits for it at the next question.
    return history;
}

std::string accessToken()
{
    return AuthManager::shared().accessToken.get().value_or("");
}

/// A completion for any thread that brings its result to the screen in a later turn of the main thread, while the
/// screen is still there.
template<typename Value>
auto onMain(std::weak_ptr<ChatState> screen, void (ChatState::*receive)(const Result<Value, ApiError>&))
{
    return [screen = std::move(screen), receive](Result<Value, ApiError> result) {
        DispatchQueue::main().async([screen, receive, result = std::move(result)] {
            if (const auto alive = screen.lock()) {
                (alive.get()->*receive)(result);
            }
        });
    };
}

} // namespace

std::shared_ptr<ChatState> ChatState::make(std::shared_ptr<const RepliedMessage> message)
{
    return makeMainOwned<ChatState>(std::move(message));
}

ChatState::ChatState(std::shared_ptr<const RepliedMessage> message)
    : m_repliedMessage(std::move(message))
    , m_userDefaultsKey(SettingsKeys::chatHistory(m_repliedMessage->messageId()))
    , m_newMessageText(m_repliedMessage->draft())
{
}

void ChatState::setNewMessageText(std::string text)
{
    if (m_newMessageText != text) {
        m_newMessageText = std::move(text);
        m_repliedMessage->setDraft(m_newMessageText, m_period);
        Q_EMIT newMessageTextChanged();
    }
}

void ChatState::setLoading(bool loading)
{
    if (std::exchange(m_isLoading, loading) != loading) {
        Q_EMIT isLoadingChanged();
    }
}

void ChatState::setFailedQuestion(std::optional<FailedQuestion> failed)
{
    if (m_failed || failed) {
        m_failed = std::move(failed);
        Q_EMIT failedQuestionChanged();
    }
}

void ChatState::append(Message message)
{
    m_history.append(std::move(message));
    m_isUnsaved = true;
    Q_EMIT messagesAppended();
    Q_EMIT messagesChanged();
}

void ChatState::loadMessages()
{
    const auto receive = [](ChatState& chat, StoredHistory& stored) {
        if (stored && !*stored) {
            printPrivate("Failed to load messages: " + stored->error().description);
        } else if (stored) {
            chat.announce(chat.takeOver(std::move(*stored).value()));
        }
    };
    if (!m_repliedMessage->hasKeysAlone() || UserDefaults::standard().size(m_userDefaultsKey) <= shortHistory) {
        auto stored = storedFor(*m_repliedMessage, m_userDefaultsKey);
        receive(*this, stored);
        return;
    }
    auto& mainQueue = DispatchQueue::main(); // Made before the queue that uses it, and so gone after it.
    static WorkQueue queue;
    queue.async([&mainQueue, receive, message = m_repliedMessage, key = m_userDefaultsKey, weak = weak_from_this()] {
        mainQueue.async([receive, weak, stored = std::make_shared<StoredHistory>(storedFor(*message, key))] {
            if (const auto alive = weak.lock()) {
                receive(*alive, *stored);
            }
        });
    });
}

ChatState::Difference ChatState::takeOver(MessageHistory stored)
{
    stored.appendUnknown(m_history);
    const MessageHistory before = std::exchange(m_history, std::move(stored));
    if (before.messages() != messages()) {
        return Difference::Messages;
    }
    return before.hasSameTexts(m_history) ? Difference::None : Difference::Texts;
}

void ChatState::announce(Difference difference)
{
    if (difference != Difference::None) {
        Q_EMIT messagesReplaced();
    }
    if (difference == Difference::Messages) {
        Q_EMIT messagesChanged();
    }
}

void ChatState::saveMessages()
{
    if (!m_isUnsaved || m_period.isOver()) {
        return;
    }
    auto difference = Difference::None;   // Announced once the settings can be used again.
    std::optional<MessageHistory> shared; // With what others have said about their messages, which is not shown here.
    UserDefaults::standard().update(
        m_userDefaultsKey,
        [&](std::optional<std::string_view> stored) {
            SettingsChanges changes;
            std::string kept;
            if (stored && !m_history.continues(*stored)) {
                auto decoded = MessageHistory::decode(*stored);
                if (decoded && m_repliedMessage->hasKeysAlone()) {
                    difference = std::max(difference, takeOver(std::move(decoded).value()));
                } else if (decoded) {
                    shared = std::move(decoded).value();
                    shared->appendUnknown(m_history);
                } else {
                    changes.emplace_back(SettingsKeys::unreadable(m_userDefaultsKey), *stored);
                    kept = decoded.error().description;
                }
            }
            const auto encoded = (shared ? *shared : m_history).encode();
            if (!encoded) {
                print("Failed to save messages: " + encoded.error().description);
                return SettingsChanges();
            }
            if (!changes.empty()) {
                print("The stored messages cannot be read (" + kept + "). They are kept under \"" +
                      changes.front().first + "\".");
            }
            m_isUnsaved = false;
            changes.emplace_back(m_userDefaultsKey, encoded.value());
            return changes;
        },
        m_period.logouts());
    if (!m_repliedMessage->hasKeysAlone() && !m_isUnsaved) {
        m_repliedMessage->keepOwn(m_userDefaultsKey, SettingsData{std::string(m_history.encode().value())}, m_period);
    }
    announce(difference);
}

void ChatState::sendMessage()
{
    if (m_newMessageText.empty()) {
        return;
    }
    append(Message::question(m_newMessageText));
    m_waiting.push_back(messages().back().id);
    setNewMessageText("");
    saveMessages();
    sendNext();
}

void ChatState::sendNext()
{
    if (m_period.isTokenGone()) {
        m_waiting.clear(); // As after the start.
    }
    if (m_isLoading || m_waiting.empty()) {
        return;
    }
    setFailedQuestion(std::nullopt);
    if (m_assistantId && m_threadId) {
        sendQuestion();
    } else {
        startChat();
    }
}

void ChatState::startChat()
{
    setLoading(true);
    if (m_repliedMessage->contentFollows()) { // The chat is about it.
        m_repliedMessage->whenContentArrives([weak = weak_from_this()] {
            if (const auto alive = weak.lock()) {
                alive->setLoading(false);
                alive->sendNext();
            }
        });
        return;
    }
    const auto url = URL::parseAbsolute(currentApiURL() + "/chat/start");
    if (!url) {
        return;
    }
    const ChatStartBody body{UserDetailsManager::shared().email(),
                             m_repliedMessage->content().value_or("Compose session")};
    HandleApiRequests::sendChatStart(*url, accessToken(), body, onMain(weak_from_this(), &ChatState::receiveStart));
}

void ChatState::receiveStart(const Result<ChatStartResponse, ApiError>& result)
{
    setLoading(false);
    if (!result) {
        print("Error from start chat is:", result.error().description());
        handleChatFailure(result.error());
        return;
    }
    if (m_period.isTokenGone()) {
        m_waiting.clear(); // Whoever signs in next does not send this user's messages.
        return;
    }
    m_assistantId = result.value().assistantId;
    m_threadId = result.value().threadId;
    StartChatManager::shared().assistantId.set(m_assistantId);
    StartChatManager::shared().threadId.set(m_threadId);
    sendQuestion();
}

void ChatState::sendQuestion()
{
    const auto& list = messages();
    const auto question =
        std::find_if(list.rbegin(), list.rend(), [this](const Message& m) { return m.id == m_waiting.front(); });
    const auto url = URL::parseAbsolute(currentApiURL() + "/chat/send");
    if (question == list.rend() || !url) {
        return;
    }
    // Before anybody is told of anything, who could change the list.
    const ChatBody body{*m_assistantId, *m_threadId, UserDetailsManager::shared().email(), question->text.value_or("")};
    setLoading(true);
    HandleApiRequests::sendChatMessage(*url, accessToken(), body, onMain(weak_from_this(), &ChatState::receiveAnswer));
}

void ChatState::receiveAnswer(const Result<std::string, ApiError>& result)
{
    setLoading(false);
    if (!result) {
        print("Error from chat message is:", result.error().description());
        handleChatFailure(result.error());
        return;
    }
    if (m_period.isOver()) {
        m_waiting.clear();
        return;
    }
    m_waiting.pop_front();
    append(Message::answer(result.value()));
    saveMessages();
    sendNext();
}

void ChatState::handleChatFailure(const ApiError& error)
{
    if (m_period.isTokenGone()) {
        m_waiting.clear(); // As after the start; the line would stand in another user's time.
        return;
    }
    const bool signInIsMissing = error.asksForSignIn() && accessToken().empty();
    setFailedQuestion(FailedQuestion{m_waiting.front(), signInIsMissing ? noSignInSentence : failureSentence});
    saveMessages();
}

} // namespace quillmate
