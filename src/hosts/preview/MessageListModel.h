#pragma once

#include "hosts/preview/mail/MessageStore.h"

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

    /// Forgets the colours with the messages before.
    void setEntries(std::vector<MessageEntry> entries);
    /// The background that was decided on for each message, by the platform's number, 0 for none. Ignored unless there
    /// is one for every message.
    void setDecidedColors(std::vector<int> colors);
    [[nodiscard]] const std::vector<MessageEntry>& entries() const { return m_entries; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    std::vector<MessageEntry> m_entries;
    std::vector<int> m_colors; // Empty until they are decided on.
};

/// How windows name a sender, a subject and a moment; none of them empty for lack of a header field but the date.
[[nodiscard]] QString shownSender(const MessageSummary& summary);
[[nodiscard]] QString shownSubject(const MessageSummary& summary);
/// Short, in local time: the time alone for today, else the day, with the year where it is not this one.
[[nodiscard]] QString shownDate(const QDateTime& date, const QDateTime& now);

/// In full, in local time; empty for an invalid date.
[[nodiscard]] QString shownMoment(const QDateTime& date);

} // namespace quillmate
