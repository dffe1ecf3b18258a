#include "views/chat/ChatMessages.h"

#include "views/widgets/ShownText.h"

#include <utility>

namespace quillmate
{
namespace
{

const std::optional<std::string>& bodyOf(const Message& message)
{
    return message.isSentByCurrentUser ? message.text : message.response;
}

} // namespace

ChatMessages::ChatMessages(std::shared_ptr<ChatState> chat)
    : m_chat(std::move(chat))
    , m_count(static_cast<int>(m_chat->messages().size()))
{
    connect(m_chat.get(), &ChatState::messagesAppended, this, &ChatMessages::appended);
    connect(m_chat.get(), &ChatState::messagesReplaced, this, [this] {
        beginResetModel();
        m_count = static_cast<int>(m_chat->messages().size());
        endResetModel();
    });
}

void ChatMessages::appended()
{
    const int count = static_cast<int>(m_chat->messages().size());
    beginInsertRows({}, m_count, count - 1);
    m_count = count;
    endInsertRows();
}

int ChatMessages::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_count;
}

QVariant ChatMessages::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Message& message = m_chat->messages()[static_cast<std::size_t>(index.row())];
    const auto& body = bodyOf(message);
    switch (role) {
    case SentByCurrentUser:
        return message.isSentByCurrentUser;
    case HasBody:
        return body.has_value();
    case Body:
        return ShownText::of(body.value_or("")).text;
    case Note:
        return ShownText::of(body.value_or("")).note;
    case RightToLeft:
        return ShownText::of(body.value_or("")).text.isRightToLeft();
    default:
        return {};
    }
}

QHash<int, QByteArray> ChatMessages::roleNames() const
{
    return {{SentByCurrentUser, "sentByCurrentUser"},
            {HasBody, "hasBody"},
            {Body, "body"},
            {Note, "note"},
            {RightToLeft, "rightToLeft"}};
}

std::optional<std::string> ChatMessages::text(int row) const
{
    if (row < 0 || row >= m_count) {
        return std::nullopt;
    }
    return bodyOf(m_chat->messages()[static_cast<std::size_t>(row)]);
}

} // namespace quillmate
