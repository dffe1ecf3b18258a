#include "hosts/preview/MessageListModel.h"

#include <QLocale>

namespace quillmate
{

QString shownSender(const MessageSummary& summary)
{
    const std::string& text = summary.sender.name.empty() ? summary.sender.address : summary.sender.name;
    return text.empty() ? QStringLiteral("Unknown sender") : QString::fromStdString(text);
}

QString shownSubject(const MessageSummary& summary)
{
    return summary.subject.empty() ? QStringLiteral("No subject") : QString::fromStdString(summary.subject);
}

QString shownDate(const QDateTime& date, const QDateTime& now)
{
    if (!date.isValid()) {
        return {};
    }
    const QDateTime local = date.toLocalTime();
    const QDateTime today = now.toLocalTime();
    const QLocale english = QLocale::c();
    if (local.date() == today.date()) {
        return english.toString(local, QStringLiteral("HH:mm"));
    }
    const bool thisYear = local.date().year() == today.date().year();
    return english.toString(local, thisYear ? QStringLiteral("d MMM") : QStringLiteral("d MMM yyyy"));
}

QString shownMoment(const QDateTime& date)
{
    return date.isValid() ? QLocale::c().toString(date.toLocalTime(), QStringLiteral("d MMMM yyyy, HH:mm")) : QString();
}

void MessageListModel::setEntries(std::vector<MessageEntry> entries)
{
    beginResetModel();
    m_entries = std::move(entries);
    m_colors.clear();
    endResetModel();
}

void MessageListModel::setDecidedColors(std::vector<int> colors)
{
    if (colors.size() != m_entries.size() || colors.empty()) {
        return;
    }
    m_colors = std::move(colors);
    Q_EMIT dataChanged(index(0), index(rowCount() - 1), {DecidedColorRole});
}

int MessageListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant MessageListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const auto row = static_cast<std::size_t>(index.row());
    const MessageSummary& summary = m_entries[row].summary;
    switch (role) {
    case SenderRole:
        return shownSender(summary);
    case SubjectRole:
        return shownSubject(summary);
    case DateRole:
        return shownDate(summary.date, QDateTime::currentDateTime());
    case SnippetRole:
        return QString::fromStdString(summary.snippet);
    case DecidedColorRole:
        return m_colors.empty() ? 0 : m_colors[row];
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
