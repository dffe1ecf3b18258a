#include "hosts/preview/MessageListModel.h"

#include <QLocale>

namespace quillmate
{
namespace
{

/// Short, in local time: the time alone for today, else the day, with the year where it is not this one.
QString shownDate(const QDateTime& date)
{
    const QDateTime local = date.toLocalTime(); // An invalid one gives an empty text.
    const QDate today = QDate::currentDate();
    return QLocale::c().toString(local, local.date() == today                 ? QStringLiteral("HH:mm")
                                        : local.date().year() == today.year() ? QStringLiteral("d MMM")
                                                                              : QStringLiteral("d MMM yyyy"));
}

} // namespace

QString shownSender(const MessageSummary& summary)
{
    const std::string& text = summary.sender.name.empty() ? summary.sender.address : summary.sender.name;
    return text.empty() ? QStringLiteral("Unknown sender") : QString::fromStdString(text);
}

QString shownSubject(const MessageSummary& summary)
{
    return summary.subject.empty() ? QStringLiteral("No subject") : QString::fromStdString(summary.subject);
}

void MessageListModel::setMessages(std::vector<ListedMessage> messages)
{
    beginResetModel();
    m_messages = std::move(messages);
    endResetModel();
}

const MessageLocation& MessageListModel::location(int row) const
{
    return m_messages[static_cast<std::size_t>(row)].entry.location;
}

int MessageListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_messages.size());
}

QVariant MessageListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const auto& [entry, color] = m_messages[static_cast<std::size_t>(index.row())];
    switch (role) {
    case SenderRole:
        return shownSender(entry.summary);
    case SubjectRole:
        return shownSubject(entry.summary);
    case DateRole:
        return shownDate(entry.summary.date);
    case SnippetRole:
        return QString::fromStdString(entry.summary.snippet);
    case DecidedColorRole:
        return color;
    default:
        return {};
    }
}

QHash<int, QByteArray> MessageListModel::roleNames() const
{
    return {{SenderRole, "sender"},
            {SubjectRole, "subject"},
            {DateRole, "date"},
            {SnippetRole, "snippet"},
            {DecidedColorRole, "decidedColor"}};
}

} // namespace quillmate
