#pragma once

#include "hosts/preview/MessageReader.h"

#include <QAbstractListModel>
#include <qqmlregistration.h>

namespace quillmate
{

/// The messages of the list, in their order. Main thread only.
class MessageListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its window")

public:
    enum Role { SenderRole = Qt::UserRole + 1, SubjectRole, DateRole, SnippetRole, DecidedColorRole };

    using QAbstractListModel::QAbstractListModel;

    void setMessages(std::vector<ListedMessage> messages);
    [[nodiscard]] const MessageLocation& location(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<ListedMessage> m_messages;
};

/// How windows name a sender and a subject, neither empty for lack of a header field.
[[nodiscard]] QString shownSender(const MessageSummary& summary);
[[nodiscard]] QString shownSubject(const MessageSummary& summary);

} // namespace quillmate
