#pragma once

#include "base/SharedText.h"
#include "state/SignInPeriod.h"

#include <memory>
#include <optional>
#include <string>

#include <QObject>

namespace quillmate
{

struct GeneratedResponse;
class RepliedMessage;

/// The reply of one panel and its toast, as the views show them, and the requests that drive them. Main thread only.
class ButtonStateManager : public QObject, public std::enable_shared_from_this<ButtonStateManager>
{
    Q_OBJECT

public:
    /// What the reply section shows: what it is for, with a button for the first reply, or the reply.
    enum class Section { Introduction, Reply };

    static std::shared_ptr<ButtonStateManager> make(std::shared_ptr<const RepliedMessage> message);
    explicit ButtonStateManager(std::shared_ptr<const RepliedMessage> message);

    /// A reply request is under way.
    [[nodiscard]] bool isGenerateResponseLoading() const { return m_isGenerateResponseLoading; }
    void setGenerateResponseLoading(bool loading);
    /// The reply shown, absent while there is none.
    [[nodiscard]] const std::optional<std::string>& generateResponse() const { return m_generateResponse; }
    void setGenerateResponse(std::optional<std::string> response);
    /// The toast is visible.
    [[nodiscard]] bool showToast() const { return m_showToast; }
    void setShowToast(bool show);
    [[nodiscard]] const std::string& toastMessage() const { return m_toastMessage; }
    void setToastMessage(std::string message);
    [[nodiscard]] Section section() const { return m_section; }

    /// Shows the reply that is stored for this message, or none.
    void loadStoredResponses();
    /// Looks again whether a reply has been generated for this message.
    void updateSection();
    /// Shows a text in the toast, which is a new one, whatever stood in it.
    void announce(std::string message);
    /// Asks the service for a reply, shows and stores it, or shows why there is none. A message of which no text is
    /// known, neither its own nor a pasted one, costs a toast and no request. What arrives after the sign-out that
    /// ended the panel is dropped. Nothing while a request is under way.
    void generate();
    /// Sends the message and the reply that is shown to the service as training data, and shows what it says of it, or
    /// that it failed. Nothing while a request is under way.
    void submitTrainingData();

Q_SIGNALS:
    void isGenerateResponseLoadingChanged();
    void generateResponseChanged();
    void showToastChanged();
    void toastMessageChanged();
    /// A new toast stands.
    void announced();
    void sectionChanged();

private:
    /// Whether no reply has ever been generated for this message.
    [[nodiscard]] bool isFirstReply() const;
    void markReplyGenerated();
    [[nodiscard]] SharedText contentToAnswer() const;
    void requestReply();
    /// Any thread; acts in a later turn of the main thread, while the panel is still there.
    static void deliverReplyResult(const std::weak_ptr<ButtonStateManager>& weak,
                                   std::optional<GeneratedResponse> record, std::optional<std::string> errorMessage);
    void receiveReply(const std::optional<GeneratedResponse>& record, const std::optional<std::string>& errorMessage);
    void deliverTrainingResult(const std::string& message);

    const std::shared_ptr<const RepliedMessage> m_message;
    const std::string m_generateResponseKey;
    const SignInPeriod m_period;
    bool m_isGenerateResponseLoading = false;
    bool m_isSubmitting = false;
    std::optional<std::string> m_generateResponse;
    bool m_showToast = false;
    std::string m_toastMessage;
    Section m_section = Section::Introduction;
};

} // namespace quillmate
