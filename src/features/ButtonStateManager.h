#pragma once

#include <memory>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

/// The reply of one panel as its views show it. Main thread only.
class ButtonStateManager : public QObject
{
    Q_OBJECT

public:
    /// Fixes the key of the stored reply by the message that is being replied to now.
    static std::shared_ptr<ButtonStateManager> make();
    ButtonStateManager();

    /// The reply shown, absent while there is none.
    [[nodiscard]] const std::optional<std::string>& generateResponse() const { return m_generateResponse; }
    [[nodiscard]] const std::string& generateResponseKey() const { return m_generateResponseKey; }

    /// Shows the reply that is stored for this message, or none.
    void loadStoredResponses();

Q_SIGNALS:
    void generateResponseChanged();

private:
    const std::string m_generateResponseKey;
    std::optional<std::string> m_generateResponse;
};

} // namespace quillmate
