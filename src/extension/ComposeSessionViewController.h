#pragma once

#include "base/Result.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "state/SignInPeriod.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace quillmate
{

class LoginProgress;
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
    /// The panel about a message. Whoever lets go last, the panel ends on the main thread.
    static std::shared_ptr<ComposeSessionViewController> make(std::shared_ptr<const RepliedMessage> message);
    explicit ComposeSessionViewController(std::shared_ptr<const RepliedMessage> message);
    ~ComposeSessionViewController() override;

    /// Set when a sign-in of this panel brought a token; never unset. Any thread.
    [[nodiscard]] bool isLoggedIn() const { return m_isLoggedIn; }

    /// The panel is about this message from now on, and shows what is known of it.
    void changeMessage(std::shared_ptr<const RepliedMessage> message);

    void viewDidLoad() override;
    /// Asks whether there is a newer version; nothing when the own version is unknown.
    void triggerUpdateCheck();
    void handleLogout();
    void buttonClicked();

    /// Starts a sign-in: asks for a session, opens its page in the browser, polls until a token arrives. It ends as
    /// well when a token has come another way, which is as good, when somebody logs out or chooses another environment,
    /// and when its panel is gone as a reply arrives. Calls that follow each other as a double press does are one.
    /// While the process holds a token, the session panel is shown at once.
    void login();
    /// Lays the sign-in screen over what is shown.
    void showLoginView();
    /// Replaces all that is shown by the session panel.
    void showSessionView();

private:
    void updateView();
    /// The session panel, and who the user is.
    void enterSession(const std::string& accessToken);
    void requestSession(const std::string& url);

    /// A sign-in on its way.
    struct SignIn {
        std::string pollURL;
        SignInPeriod period;
    };
    void pollForToken(const SignIn& signIn);
    void schedulePoll(const SignIn& signIn);
    /// Whether the sign-in has ended by now; shows the session panel when that was for a token. Main thread.
    bool hasEnded(const SignIn& signIn);
    // On the network's thread, when the panel may be gone.
    static void receivePoll(const std::weak_ptr<ComposeSessionViewController>& weak, const SignIn& signIn,
                            const Result<SessionResponse, ReplyFailure>& session);

    std::shared_ptr<const RepliedMessage> m_message;
    std::atomic<bool> m_isLoggedIn = false;
    bool m_isOpeningLoginPage = false;
    const std::shared_ptr<LoginProgress> m_loginProgress;
    std::shared_ptr<Timer> m_updateTimer;
    std::vector<std::shared_ptr<NSViewController>> m_loginHosts; // Of the sign-in screens that lie over each other.
};

} // namespace quillmate
