#include "views/chat/ChatViewState.h"

#include "features/ChatErrorMessage.h"
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
    connect(source, &ChatState::messagesAppended, this, &ChatViewState::errorChanged);
    connect(source, &ChatState::messagesReplaced, this, &ChatViewState::errorChanged);
    connect(source, &ChatState::messagesChanged, this, &ChatViewState::messagesChanged);
    connect(&ChatErrorMessage::shared(), &ChatErrorMessage::chatErrorMessageChanged, this,
            &ChatViewState::errorChanged);
}

ChatViewState::~ChatViewState()
{
    setShown(false);
}

HostedView ChatViewState::makeContentView()
{
    return hostedViewOf(QStringLiteral("ChatContentView"), makeMainOwned<ChatViewState>(RepliedMessage::none()));
}

QString ChatViewState::chatErrorMessage()
{
    return QString::fromStdString(ChatErrorMessage::shared().chatErrorMessage().value_or(""));
}

int ChatViewState::errorRow() const
{
    const auto& list = m_chat->messages();
    if (list.empty() || !list.back().isSentByCurrentUser || !ChatErrorMessage::shared().chatErrorMessage()) {
        return -1;
    }
    // A foreign history may hold the same id twice; then the first one is not the last.
    const bool unique = std::find(list.begin(), list.end(), list.back()) == list.end() - 1;
    return unique ? static_cast<int>(list.size()) - 1 : -1;
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
