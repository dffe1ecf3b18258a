#pragma once

#include "features/MessageHistory.h"
#include "service/ApiError.h"
#include "service/ServiceRequests.h"
#include "state/SignInPeriod.h"

#include <memory>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

class RepliedMessage;

/// One chat screen's conversation about its panel's message, and the requests that drive it. Kept in the settings store
/// after every change. Main thread only.
class ChatState : public QObject, public std::enable_shared_from_this<ChatState>
{
    Q_OBJECT

public:
    static std::shared_ptr<ChatState> make(std::shared_ptr<const RepliedMessage> message);
    explicit ChatState(std::shared_ptr<const RepliedMessage> message);

    [[nodiscard]] const std::vector<Message>& messages() const { return m_history.messages(); }
    [[nodiscard]] const std::string& newMessageText() const { return m_newMessageText; }
    void setNewMessageText(std::string text);
    /// A request is under way. The first of several that ends makes it false.
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    void setLoading(bool loading);
    /// The chat that this screen has opened on the service; not stored.
    [[nodiscard]] const std::optional<std::string>& assistantId() const { return m_assistantId; }
    [[nodiscard]] const std::optional<std::string>& threadId() const { return m_threadId; }

    /// Takes the stored conversation, if there is one that can be read.
    void loadMessages();
    /// Stores the conversation; not after the sign-out that emptied the store.
    void saveMessages();
    /// Sends the new text, opening a chat first if need be; an empty one does nothing.
    void sendMessage();

Q_SIGNALS:
    /// Messages were added at the end.
    void messagesAppended();
    /// Another list stands in the place of the old one.
    void messagesReplaced();
    /// The list holds other messages than before, by their ids.
    void messagesChanged();
    void newMessageTextChanged();
    void isLoadingChanged();

private:
    void append(Message message);
    void startChat();
    void receiveStart(const Result<ChatStartResponse, ApiError>& result);
    void sendLastUserMessage();
    void receiveAnswer(const Result<std::string, ApiError>& result);
    void handleChatFailure();
    [[nodiscard]] const Message* newestOfUser() const;

    const std::shared_ptr<const RepliedMessage> m_repliedMessage;
    const std::string m_userDefaultsKey;
    const SignInPeriod m_period;
    MessageHistory m_history;
    std::string m_newMessageText;
    bool m_isLoading = false;
    std::optional<std::string> m_assistantId;
    std::optional<std::string> m_threadId;
};

} // namespace quillmate
