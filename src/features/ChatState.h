#pragma once

#include "features/MessageHistory.h"
#include "service/ApiError.h"
#include "service/ServiceRequests.h"
#include "state/SignInPeriod.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

class RepliedMessage;

/// A question that was not answered, and what is to be said of it.
struct FailedQuestion {
    UUID id;
    std::string sentence;
};

/// One chat screen's conversation about its panel's message, and the requests that drive it, one at a time: a question
/// waits until those before it are answered. Kept in the settings store after every change, together with what other
/// screens of the same message have stored. Main thread only.
class ChatState : public QObject, public std::enable_shared_from_this<ChatState>
{
    Q_OBJECT

public:
    static std::shared_ptr<ChatState> make(std::shared_ptr<const RepliedMessage> message);
    explicit ChatState(std::shared_ptr<const RepliedMessage> message);

    [[nodiscard]] const std::vector<Message>& messages() const { return m_history.messages(); }
    [[nodiscard]] const std::string& newMessageText() const { return m_newMessageText; }
    void setNewMessageText(std::string text);
    /// A request is under way.
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    void setLoading(bool loading);
    /// The chat that this screen has opened on the service; not stored.
    [[nodiscard]] const std::optional<std::string>& assistantId() const { return m_assistantId; }
    [[nodiscard]] const std::optional<std::string>& threadId() const { return m_threadId; }

    /// The question whose request failed. Those behind it wait with it, until it is sent again. Absent while a request
    /// is under way.
    [[nodiscard]] const std::optional<FailedQuestion>& failedQuestion() const { return m_failed; }
    void setFailedQuestion(std::optional<FailedQuestion> failed);

    /// Takes the stored conversation, if there is one that can be read; a long one in a later turn.
    void loadMessages();
    /// Stores the conversation if something was said here since the last time, and takes over what others have said;
    /// not after the sign-out that emptied the store.
    void saveMessages();
    /// Sends the new text after the questions that wait, opening a chat first if need be; an empty one does nothing.
    void sendMessage();
    /// Sends the question that failed, and those behind it.
    void sendAgain() { sendNext(); }

Q_SIGNALS:
    /// Messages were added at the end.
    void messagesAppended();
    /// Another list stands in the place of the old one.
    void messagesReplaced();
    /// The list holds other messages than before, by their ids.
    void messagesChanged();
    void newMessageTextChanged();
    void isLoadingChanged();
    void failedQuestionChanged();

private:
    void append(Message message);
    /// Between two lists, the less first.
    enum class Difference { None, Texts, Messages };
    /// Puts what was stored before what is only known here.
    Difference takeOver(MessageHistory stored);
    void announce(Difference difference);
    /// Goes on with the first question that waits, unless a request is under way.
    void sendNext();
    void startChat();
    void receiveStart(const Result<ChatStartResponse, ApiError>& result);
    void sendQuestion();
    void receiveAnswer(const Result<std::string, ApiError>& result);
    void handleChatFailure(const ApiError& error);

    const std::shared_ptr<const RepliedMessage> m_repliedMessage;
    const std::string m_userDefaultsKey;
    const SignInPeriod m_period;
    MessageHistory m_history;
    bool m_isUnsaved = false;
    std::string m_newMessageText;
    std::deque<UUID> m_waiting; // The questions without an answer, in the order in which they are sent.
    std::optional<FailedQuestion> m_failed;
    bool m_isLoading = false;
    std::optional<std::string> m_assistantId;
    std::optional<std::string> m_threadId;
};

} // namespace quillmate
