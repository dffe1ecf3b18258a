#pragma once

#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

/// What the chat screens show under a message that could not be answered: one for all of them, and for as long as the
/// process runs. Main thread only.
class ChatErrorMessage : public QObject
{
    Q_OBJECT

public:
    static ChatErrorMessage& shared();

    [[nodiscard]] const std::optional<std::string>& chatErrorMessage() const { return m_chatErrorMessage; }
    void setChatErrorMessage(std::optional<std::string> message);

Q_SIGNALS:
    void chatErrorMessageChanged();

private:
    ChatErrorMessage() = default;

    std::optional<std::string> m_chatErrorMessage;
};

} // namespace quillmate
