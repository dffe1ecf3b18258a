#pragma once

#include "features/ChatState.h"
#include "views/chat/ChatMessages.h"

#include <memory>

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

struct HostedView;
class RepliedMessage;

/// The chat screen's state. Main thread only.
class ChatViewState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made with its screen")
    Q_PROPERTY(QAbstractListModel* messages READ messages CONSTANT)
    Q_PROPERTY(QString newMessageText READ newMessageText WRITE setNewMessageText NOTIFY newMessageTextChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(QString chatErrorMessage READ chatErrorMessage NOTIFY errorChanged)
    /// The row of the question that failed, under which the error message stands; -1 when there is none.
    Q_PROPERTY(int errorRow READ errorRow NOTIFY errorChanged)

public:
    /// The chat about a message.
    explicit ChatViewState(std::shared_ptr<const RepliedMessage> message);
    ~ChatViewState() override;

    /// The stand-alone chat with a new state.
    static HostedView makeContentView();

    [[nodiscard]] QAbstractListModel* messages() { return &m_messages; }
    [[nodiscard]] QString newMessageText() const { return QString::fromStdString(m_chat->newMessageText()); }
    void setNewMessageText(const QString& text) { m_chat->setNewMessageText(text.toStdString()); }
    [[nodiscard]] bool isLoading() const { return m_chat->isLoading(); }
    [[nodiscard]] QString chatErrorMessage() const;
    [[nodiscard]] int errorRow() const;
    [[nodiscard]] ChatState& chat() { return *m_chat; }

    Q_INVOKABLE void sendMessage() { m_chat->sendMessage(); }
    Q_INVOKABLE void sendAgain() { m_chat->sendAgain(); }
    /// Copies the whole text of a row; without one the clipboard stays as it is.
    Q_INVOKABLE void copyMessage(int row) const;
    /// The screen is shown, or hidden; the same again does nothing.
    Q_INVOKABLE void setShown(bool shown);

    void appeared() {} // The screen tells by itself whether it is shown.
    void disappeared() {}

Q_SIGNALS:
    void newMessageTextChanged();
    void isLoadingChanged();
    void errorChanged();
    /// The list holds other messages than before.
    void messagesChanged();

private:
    const std::shared_ptr<ChatState> m_chat;
    ChatMessages m_messages;
    bool m_shown = false;
};

} // namespace quillmate
