#include "views/chat/ChatViewState.h"

#include "features/RepliedMessage.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "views/HostedViewOf.h"
#include "views/widgets/Clipboard.h"

#include <algorithm>
#include <utility>

namespace quillmate
{

ChatViewState::ChatViewState(std::shared_ptr<const RepliedMessage> message)
    : m_chat(ChatState::make(std::move(message)))
    , m_messages(m_chat)
{
    const ChatState* source = m_chat.get();
    connect(source, &ChatState::newMessageTextChanged, this, &ChatViewState::newMessageTextChanged);
    connect(source, &ChatState::isLoadingChanged, this, &ChatViewState::isLoadingChanged);
    connect(source, &ChatState::failedQuestionChanged, this, &ChatViewState::errorChanged);
    connect(source, &ChatState::messagesReplaced, this, &ChatViewState::errorChanged);
    connect(source, &ChatState::messagesChanged, this, &ChatViewState::messagesChanged);
}

ChatViewState::~ChatViewState()
{
    setShown(false);
}

HostedView ChatViewState::makeContentView()
{
    return hostedViewOf(QStringLiteral("ChatContentView"), makeMainOwned<ChatViewState>(RepliedMessage::none()));
}

QString ChatViewState::chatErrorMessage() const
{
    const auto& failed = m_chat->failedQuestion();
    return failed ? QString::fromStdString(failed->sentence) : QString();
}

int ChatViewState::errorRow() const
{
    const auto& failed = m_chat->failedQuestion();
    if (!failed) {
        return -1;
    }
    const auto& list = m_chat->messages();
    const auto found = std::find_if(list.rbegin(), list.rend(), [&](const Message& m) { return m.id == failed->id; });
    return static_cast<int>(list.rend() - found) - 1;
}

void ChatViewState::copyMessage(int row) const
{
    if (const auto text = m_messages.text(row)) {
        copyToClipboard(*text);
    }
}

void ChatViewState::setShown(bool shown)
{
    if (std::exchange(m_shown, shown) == shown) {
        return;
    }
    if (shown) {
        m_chat->loadMessages();
    } else {
        m_chat->saveMessages();
    }
}

} // namespace quillmate
