#pragma once

#include "hosts/preview/MessageListModel.h"

#include <QObject>
#include <memory>
#include <qqmlregistration.h>

namespace quillmate
{

/// What the user asks a compose window for.
enum class ComposeKind { Reply, Forward, NewMessage };

/// What the window with the message list shows: the list, and the chosen message read whole. Main thread only.
class MailWindowState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the program")

    Q_PROPERTY(quillmate::MessageListModel* messages READ messages CONSTANT)
    Q_PROPERTY(bool listing READ isListing NOTIFY listingChanged)
    Q_PROPERTY(int currentIndex READ currentIndex WRITE setCurrentIndex NOTIFY currentIndexChanged)
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY messageChanged)
    Q_PROPERTY(QString subject READ subject NOTIFY messageChanged)
    Q_PROPERTY(QString sender READ sender NOTIFY messageChanged)
    Q_PROPERTY(QString recipients READ recipients NOTIFY messageChanged)
    Q_PROPERTY(QString date READ date NOTIFY messageChanged)
    Q_PROPERTY(QString text READ text NOTIFY messageChanged)
    Q_PROPERTY(QString remoteImages READ remoteImages NOTIFY messageChanged)
    Q_PROPERTY(QString failure READ failure NOTIFY messageChanged)

public:
    /// `reader` outlives this object.
    explicit MailWindowState(MessageReader& reader);

    /// Ends the wait for the list and chooses its first message, if there is one.
    void setMessages(std::vector<ListedMessage> messages);

    [[nodiscard]] MessageListModel* messages() { return &m_messages; }
    [[nodiscard]] bool isListing() const { return m_listing; }
    [[nodiscard]] int currentIndex() const { return m_currentIndex; }
    /// -1 for none; anything else out of range is ignored.
    void setCurrentIndex(int index);

    [[nodiscard]] bool isLoaded() const { return m_document != nullptr; }
    [[nodiscard]] bool isLoading() const { return m_currentIndex >= 0 && !m_document && m_failure.isEmpty(); }
    // The chosen message as it is shown; everything is empty while it is not loaded.
    [[nodiscard]] QString subject() const { return m_shown.subject; }
    [[nodiscard]] QString sender() const { return m_shown.sender; }
    [[nodiscard]] QString recipients() const { return m_shown.recipients; }
    [[nodiscard]] QString date() const { return m_shown.date; }
    [[nodiscard]] QString text() const { return m_shown.text; }
    /// What was left out of it, one sentence, empty when nothing was.
    [[nodiscard]] QString remoteImages() const { return m_shown.remoteImages; }
    /// Why the chosen message cannot be shown, empty when it can.
    [[nodiscard]] QString failure() const { return m_failure; }

    /// Each asks for a compose window; the first two need a loaded message and do nothing without one.
    Q_INVOKABLE void reply() { request(ComposeKind::Reply); }
    Q_INVOKABLE void forward() { request(ComposeKind::Forward); }
    Q_INVOKABLE void writeNew() { request(ComposeKind::NewMessage); }

Q_SIGNALS:
    void listingChanged();
    void currentIndexChanged();
    void messageChanged();
    /// `original` is null for a new message.
    void composeRequested(quillmate::ComposeKind kind, std::shared_ptr<const quillmate::MailDocument> original);

private:
    struct Shown {
        QString subject, sender, recipients, date, text, remoteImages;
    };

    static Shown shown(const MailDocument& document);
    void request(ComposeKind kind);

    MessageReader& m_reader;
    MessageListModel m_messages;
    std::shared_ptr<const MailDocument> m_document;
    Shown m_shown;
    QString m_failure;
    int m_currentIndex = -1;
    bool m_listing = true;
};

} // namespace quillmate
