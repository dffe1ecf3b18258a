#include "hosts/preview/MailWindowState.h"

#include "hosts/preview/MessageReader.h"

#include <QPointer>
#include <QQmlEngine>

namespace quillmate
{

MailWindowState::MailWindowState(MessageReader& reader, QObject* parent)
    : QObject(parent)
    , m_reader(reader)
{
    QQmlEngine::setObjectOwnership(&m_messages, QQmlEngine::CppOwnership);
}

void MailWindowState::setEntries(std::vector<MessageEntry> entries)
{
    m_messages.setEntries(std::move(entries));
    endListing();
    setCurrentIndex(m_messages.rowCount() > 0 ? 0 : -1);
}

void MailWindowState::endListing()
{
    if (m_listing) {
        m_listing = false;
        Q_EMIT listingChanged();
    }
}

void MailWindowState::setCurrentIndex(int index)
{
    if (index == m_currentIndex || index < -1 || index >= m_messages.rowCount()) {
        return;
    }
    m_currentIndex = index;
    m_document.reset();
    m_failure.clear();
    Q_EMIT currentIndexChanged();
    Q_EMIT messageChanged();
    if (index < 0) {
        return;
    }
    const MessageLocation& location = m_messages.entries()[static_cast<std::size_t>(index)].location;
    m_reader.load(location, [self = QPointer(this), index](const auto& result) {
        if (!self || self->m_currentIndex != index) {
            return; // The user has gone on to another message.
        }
        if (*result) {
            self->m_document = std::shared_ptr<const MailDocument>(result, &result->value());
        } else {
            self->m_failure = QString::fromStdString(result->error().text);
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

QString MailWindowState::subject() const
{
    return m_document ? shownSubject(m_document->summary) : QString();
}

QString MailWindowState::sender() const
{
    if (!m_document) {
        return {};
    }
    const std::string text = m_document->summary.sender.text();
    return text.empty() ? shownSender(m_document->summary) : QString::fromStdString(text);
}

QString MailWindowState::recipients() const
{
    if (!m_document) {
        return {};
    }
    const bool both = !m_document->to.empty() && !m_document->cc.empty();
    return QString::fromStdString(m_document->to + (both ? ", " : "") + m_document->cc);
}

QString MailWindowState::date() const
{
    return m_document ? shownMoment(m_document->summary.date) : QString();
}

QString MailWindowState::remoteImages() const
{
    return m_document ? QString::fromStdString(remoteImagesNotice(m_document->remoteImages)) : QString();
}

QString MailWindowState::text() const
{
    if (!m_document) {
        return {};
    }
    QString text = QString::fromStdString(m_document->text.text);
    if (m_document->text.truncated) {
        text += QStringLiteral("\n\n[The rest of this message is too long to be shown here.]");
    }
    return text;
}

} // namespace quillmate
