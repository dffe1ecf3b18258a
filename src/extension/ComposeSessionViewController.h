#pragma once

#include "base/Result.h"
#include "platform/appkit/MEExtensionViewController.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace quillmate
{

class RepliedMessage;
class Timer;
struct ReplyFailure;
struct SessionResponse;

/// The panel beside one compose window: the sign-in screen while nobody is signed in, else the session panel. Runs the
/// browser sign-in, and checks for updates every 12 hours for as long as it lives. Main thread, but for what the
/// network reports.
class ComposeSessionViewController final : public MEExtensionViewController,
                                           public std::enable_shared_from_this<ComposeSessionViewController>
{
public:
    /// The panel about a message, for good. Whoever lets go last, the panel ends on the main thread.
    static std::shared_ptr<ComposeSessionViewController> make(std::shared_ptr<const RepliedMessage> message);
    explicit ComposeSessionViewController(std::shared_ptr<const RepliedMessage> message);
    ~ComposeSessionViewController() override;

    /// Set when a sign-in of this panel brought a token; never unset. Any thread.
    [[nodiscard]] bool isLoggedIn() const { return m_isLoggedIn; }

    void viewDidLoad() override;
    /// Asks whether there is a newer version; nothing when the own version is unknown.
    void triggerUpdateCheck();
    void handleLogout();
    void buttonClicked();

    /// Starts a sign-in: asks for a session, opens its page in the browser, polls until a token arrives. Each call is a
    /// sign-in of its own. A sign-in ends when its panel is gone as a reply arrives.
    void login();
    /// Lays the sign-in screen over what is shown.
    void showLoginView();
    /// Replaces all that is shown by the session panel.
    void showSessionView();

private:
    void updateView();
    void requestSession(const std::string& url);
    void pollForToken(const std::string& url);
    void schedulePoll(const std::string& url);
    // On the network's thread, when the panel may be gone.
    static void receivePoll(const std::weak_ptr<ComposeSessionViewController>& weak, const std::string& url,
                            const Result<SessionResponse, ReplyFailure>& session);

    const std::shared_ptr<const RepliedMessage> m_message;
    std::atomic<bool> m_isLoggedIn = false;
    std::shared_ptr<Timer> m_updateTimer;
    std::vector<std::shared_ptr<NSViewController>> m_loginHosts; // Of the sign-in screens that lie over each other.
};

} // namespace quillmate
