#include "features/ChatState.h"

#include "features/ChatErrorMessage.h"
#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/text/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SettingsKeys.h"
#include "state/StartChatManager.h"
#include "state/UserDetailsManager.h"

#include <algorithm>
#include <utility>

namespace quillmate
{
namespace
{

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
{
}

void ChatState::setNewMessageText(std::string text)
{
    if (m_newMessageText != text) {
        m_newMessageText = std::move(text);
        Q_EMIT newMessageTextChanged();
    }
}

void ChatState::setLoading(bool loading)
{
    if (std::exchange(m_isLoading, loading) != loading) {
        Q_EMIT isLoadingChanged();
    }
}

void ChatState::append(Message message)
{
    m_history.append(std::move(message));
    Q_EMIT messagesAppended();
    Q_EMIT messagesChanged();
}

void ChatState::loadMessages()
{
    const auto stored = m_repliedMessage->data(m_userDefaultsKey);
    if (!stored) {
        return;
    }
    // Most often it is what this screen has stored itself.
    if (const auto own = m_history.encode(); !messages().empty() && own && own.value() == *stored) {
        return;
    }
    auto decoded = MessageHistory::decode(*stored);
    if (!decoded) {
        print("Failed to load messages: " + decoded.error().description);
        return;
    }
    const MessageHistory before = std::exchange(m_history, std::move(decoded).value());
    if (before.messages() == messages() && before.hasSameTexts(m_history)) {
        return; // Written in another way, but the same.
    }
    Q_EMIT messagesReplaced();
    if (before.messages() != messages()) {
        Q_EMIT messagesChanged();
    }
}

void ChatState::saveMessages()
{
    if (m_period.isOver()) {
        return;
    }
    auto encoded = m_history.encode();
    if (!encoded) {
        print("Failed to save messages: " + encoded.error().description);
        return;
    }
    m_repliedMessage->setData(m_userDefaultsKey, std::move(encoded).value());
}

void ChatState::sendMessage()
{
    if (m_newMessageText.empty()) {
        return;
    }
    append(Message::question(m_newMessageText));
    setNewMessageText("");
    saveMessages();
    if (m_assistantId && m_threadId) {
        sendLastUserMessage();
    } else {
        startChat();
    }
}

void ChatState::startChat()
{
    setLoading(true);
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
        handleChatFailure();
        return;
    }
    if (m_period.isTokenGone()) {
        return; // Whoever signs in next does not send this user's message.
    }
    m_assistantId = result.value().assistantId;
    m_threadId = result.value().threadId;
    StartChatManager::shared().assistantId.set(m_assistantId);
    StartChatManager::shared().threadId.set(m_threadId);
    sendLastUserMessage();
}

const Message* ChatState::newestOfUser() const
{
    const auto& list = messages();
    const auto found = std::find_if(list.rbegin(), list.rend(), [](const Message& m) { return m.isSentByCurrentUser; });
    return found == list.rend() ? nullptr : &*found;
}

void ChatState::sendLastUserMessage()
{
    if (!m_assistantId || !m_threadId) {
        return;
    }
    const Message* newest = newestOfUser();
    if (!newest || !newest->text) {
        return;
    }
    const auto url = URL::parseAbsolute(currentApiURL() + "/chat/send");
    if (!url) {
        return;
    }
    // Before anybody is told of anything, who could change the list.
    const ChatBody body{*m_assistantId, *m_threadId, UserDetailsManager::shared().email(), *newest->text};
    setLoading(true);
    HandleApiRequests::sendChatMessage(*url, accessToken(), body, onMain(weak_from_this(), &ChatState::receiveAnswer));
}

void ChatState::receiveAnswer(const Result<std::string, ApiError>& result)
{
    setLoading(false);
    if (!result) {
        print("Error from chat message is:", result.error().description());
        handleChatFailure();
        return;
    }
    if (m_period.isOver()) {
        return;
    }
    append(Message::answer(result.value()));
    ChatErrorMessage::shared().setChatErrorMessage(std::nullopt);
    saveMessages();
}

void ChatState::handleChatFailure()
{
    if (m_period.isOver()) {
        return; // The message it would stand under is another user's business.
    }
    if (newestOfUser()) {
        ChatErrorMessage::shared().setChatErrorMessage("Something went wrong, please try again");
    } else {
        print("No message sent by the current user was found.");
    }
    saveMessages();
}

} // namespace quillmate
