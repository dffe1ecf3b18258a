// The controller's sign-in in the browser.

#include "extension/ComposeSessionViewController.h"

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/RequestSender.h"
#include "service/ServiceRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/ServicePlace.h"
#include "views/login/LoginProgress.h"

#include <utility>

namespace quillmate
{
namespace
{

constexpr auto sessionPath = "/plugin-auth/session-request/";
constexpr double secondsBetweenPolls = 2.0;
// Nobody else waits for a service of this machine, and who has signed in there wants to go on.
constexpr double secondsBetweenPollsHere = 0.4;
// The second press of a double one comes before it; whoever has lost the page presses after it.
constexpr double secondsBeforeAnotherPage = 3.0;

const QString noPage = QStringLiteral("The service gave no page to sign in on. Press \"Login\" to try again.");

/// What the user is told when a request for a session has brought no page.
QString problemOf(const Result<SessionResponse, ReplyFailure>& session)
{
    if (session || session.error().stage != ReplyStage::Transport || !session.error().error) {
        return noPage;
    }
    return QStringLiteral("The service cannot be reached. %1 Press \"Login\" to try again.")
        .arg(QString::fromStdString(session.error().error->localizedDescription));
}

void openLater(const std::string& page)
{
    DispatchQueue::main().async([page] {
        if (const auto url = URL::parse(page)) {
            NSWorkspace::shared().open(*url);
        }
    });
}

} // namespace

void ComposeSessionViewController::login()
{
    if (AuthManager::shared().accessToken.get()) { // Another panel has signed in.
        // The button that was pressed goes with its screen.
        DispatchQueue::main().async([weak = weak_from_this()] {
            if (const auto controller = weak.lock()) {
                controller->updateView();
            }
        });
        return;
    }
    if (std::exchange(m_isOpeningLoginPage, true)) {
        return;
    }
    m_loginProgress->ask();
    APIManager& manager = APIManager::shared();
    print("CURRENT BASE API URL IN API MANAGER", manager.baseURL());
    print("URL is:", manager.baseURL());
    print("CURRENT BASE API URL IN API MANAGER", manager.baseURL());
    requestSession(manager.baseURL() + sessionPath);
}

void ComposeSessionViewController::requestSession(const std::string& url)
{
    auto request = buildSessionRequest(url);
    if (!request) {
        print(request.error());
        m_isOpeningLoginPage = false;
        m_loginProgress->finish(noPage);
        return;
    }
    const auto allowLogin = [weak = weak_from_this()] {
        if (const auto controller = weak.lock()) {
            controller->m_isOpeningLoginPage = false;
        }
    };
    sendRequest(std::move(request).value(), readSession,
                [weak = weak_from_this(), allowLogin, period = SignInPeriod()](const auto& session) {
                    const bool hasPage = session && session.value().loginURL;
                    DispatchQueue::main().async(
                        [weak, problem = hasPage || period.isTokenGone() ? QString() : problemOf(session)] {
                            if (const auto controller = weak.lock()) {
                                controller->m_loginProgress->finish(problem);
                            }
                        });
                    if (!hasPage || period.isTokenGone()) {
                        DispatchQueue::main().async(allowLogin);
                        return;
                    }
                    DispatchQueue::main().asyncAfter(secondsBeforeAnotherPage, allowLogin);
                    openLater(*session.value().loginURL);
                    print("BASE URL IN LOGIN FUNCTION IS:", APIManager::shared().baseURL());
                    const SignIn signIn{APIManager::shared().baseURL() + sessionPath + session.value().id, period};
                    if (const auto controller = weak.lock()) {
                        controller->pollForToken(signIn);
                    }
                });
}

void ComposeSessionViewController::pollForToken(const SignIn& signIn)
{
    auto request = buildSessionRequest(signIn.pollURL);
    if (!request) {
        print(request.error());
        return;
    }
    sendRequest(std::move(request).value(), readPoll,
                [weak = weak_from_this(), signIn](const auto& session) { receivePoll(weak, signIn, session); });
}

void ComposeSessionViewController::receivePoll(const std::weak_ptr<ComposeSessionViewController>& weak,
                                               const SignIn& signIn,
                                               const Result<SessionResponse, ReplyFailure>& session)
{
    if (signIn.period.isTokenGone() || (!session && session.error().stage == ReplyStage::Parsing)) {
        return;
    }
    if (!session || !session.value().accessToken) {
        if (session) {
            print("Access token is null. Continuing request...");
        }
        if (const auto controller = weak.lock()) {
            controller->schedulePoll(signIn);
        }
        return;
    }
    printPrivate("Access token received: " + *session.value().accessToken);
    // On the main thread, where nobody logs out or chooses another environment between the look and the step.
    DispatchQueue::main().async([weak, signIn, token = *session.value().accessToken] {
        const auto controller = weak.lock();
        const bool hasEnded = controller ? controller->hasEnded(signIn)
                                         : signIn.period.isTokenGone() || AuthManager::shared().accessToken.get();
        if (hasEnded) {
            return;
        }
        AuthManager::shared().signIn(token, signIn.period.logouts());
        if (controller) {
            controller->m_isLoggedIn = true;
            controller->enterSession(token);
            controller->view()->bringWindowForward(); // The browser has the keyboard, and its page nothing more to say.
        }
    });
}

bool ComposeSessionViewController::hasEnded(const SignIn& signIn)
{
    if (signIn.period.isTokenGone()) {
        return true;
    }
    const auto accessToken = AuthManager::shared().accessToken.get();
    if (accessToken && !m_loginHosts.empty()) {
        enterSession(*accessToken);
    }
    return accessToken.has_value();
}

void ComposeSessionViewController::schedulePoll(const SignIn& signIn)
{
    // The wait keeps the panel: unless the sign-in ends the next poll is sent, and its reply finds out whether the
    // panel is still wanted.
    const double pause = isServiceOfThisMachine() ? secondsBetweenPollsHere : secondsBetweenPolls;
    DispatchQueue::main().asyncAfter(pause, [self = shared_from_this(), signIn] {
        if (!self->hasEnded(signIn)) {
            self->pollForToken(signIn);
        }
    });
}

} // namespace quillmate
