#pragma once

#include "features/ChatState.h"

#include <memory>
#include <optional>
#include <string>

#include <QAbstractListModel>

namespace quillmate
{

/// The messages of a chat, oldest first, as its list shows them. Main thread only.
class ChatMessages : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        SentByCurrentUser = Qt::UserRole,
        /// Whether there is anything to be drawn for the message.
        HasBody,
        /// The question or the answer, or its beginning.
        Body,
        /// Says so when only a part is shown.
        Note,
        /// Whether the body begins with right-to-left script.
        RightToLeft
    };

    explicit ChatMessages(std::shared_ptr<ChatState> chat);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// The whole text of a row; absent where there is no such row or it has none.
    [[nodiscard]] std::optional<std::string> text(int row) const;

private:
    void appended();

    const std::shared_ptr<ChatState> m_chat;
    int m_count = 0;
};

} // namespace quillmate
