#include "hosts/preview/MailWindowState.h"

#include <QLocale>
#include <QPointer>
#include <QQmlEngine>

namespace quillmate
{

MailWindowState::MailWindowState(MessageReader& reader)
    : m_reader(reader)
{
    QQmlEngine::setObjectOwnership(&m_messages, QQmlEngine::CppOwnership);
}

void MailWindowState::setMessages(std::vector<ListedMessage> messages)
{
    m_messages.setMessages(std::move(messages));
    m_listing = false;
    Q_EMIT listingChanged();
    setCurrentIndex(m_messages.rowCount() > 0 ? 0 : -1);
}

void MailWindowState::setCurrentIndex(int index)
{
    if (index == m_currentIndex || index < -1 || index >= m_messages.rowCount()) {
        return;
    }
    m_currentIndex = index;
    m_document.reset();
    m_shown = {};
    m_failure.clear();
    Q_EMIT currentIndexChanged();
    Q_EMIT messageChanged();
    if (index < 0) {
        return;
    }
    m_reader.load(m_messages.location(index), [self = QPointer(this), index](const auto& result) {
        if (!self || self->m_currentIndex != index) {
            return; // The user has gone on to another message.
        }
        if (*result) {
            self->m_document = std::shared_ptr<const MailDocument>(result, &result->value());
            self->m_shown = shown(*self->m_document);
        } else {
            self->m_failure = QString::fromStdString(result->error());
        }
        Q_EMIT self->messageChanged();
    });
}

void MailWindowState::request(ComposeKind kind)
{
    if (kind == ComposeKind::NewMessage) {
        Q_EMIT composeRequested(kind, nullptr);
    } else if (m_document) {
        Q_EMIT composeRequested(kind, m_document);
    }
}

MailWindowState::Shown MailWindowState::shown(const MailDocument& document)
{
    const std::string sender = document.summary.sender.text();
    const bool both = !document.to.empty() && !document.cc.empty();
    const QString rest = document.text.truncated
                             ? QStringLiteral("\n\n[The rest of this message is too long to be shown here.]")
                             : QString();
    return {shownSubject(document.summary),
            sender.empty() ? shownSender(document.summary) : QString::fromStdString(sender),
            QString::fromStdString(document.to + (both ? ", " : "") + document.cc),
            QLocale::c().toString(document.summary.date.toLocalTime(), QStringLiteral("d MMMM yyyy, HH:mm")),
            QString::fromStdString(document.text.text) + rest,
            QString::fromStdString(remoteImagesNotice(document.remoteImages))};
}

} // namespace quillmate
