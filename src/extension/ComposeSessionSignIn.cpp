// The controller's sign-in in the browser.

#include "extension/ComposeSessionViewController.h"

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/RequestSender.h"
#include "service/ServiceRequests.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"

namespace quillmate
{
namespace
{

constexpr auto sessionPath = "/plugin-auth/session-request/";
constexpr double secondsBetweenPolls = 2.0;

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
        return;
    }
    sendRequest(std::move(request).value(), readSession, [weak = weak_from_this()](const auto& session) {
        if (!session || !session.value().loginURL) {
            return;
        }
        openLater(*session.value().loginURL);
        print("BASE URL IN LOGIN FUNCTION IS:", APIManager::shared().baseURL());
        const std::string pollURL = APIManager::shared().baseURL() + sessionPath + session.value().id;
        if (const auto controller = weak.lock()) {
            controller->pollForToken(pollURL);
        }
    });
}

void ComposeSessionViewController::pollForToken(const std::string& url)
{
    auto request = buildSessionRequest(url);
    if (!request) {
        print(request.error());
        return;
    }
    sendRequest(std::move(request).value(), readPoll,
                [weak = weak_from_this(), url](const auto& session) { receivePoll(weak, url, session); });
}

void ComposeSessionViewController::receivePoll(const std::weak_ptr<ComposeSessionViewController>& weak,
                                               const std::string& url,
                                               const Result<SessionResponse, ReplyFailure>& session)
{
    if (!session && session.error().stage == ReplyStage::Parsing) {
        return;
    }
    if (!session || !session.value().accessToken) {
        if (session) {
            print("Access token is null. Continuing request...");
        }
        if (const auto controller = weak.lock()) {
            controller->schedulePoll(url);
        }
        return;
    }
    const std::string& token = *session.value().accessToken;
    print("Access token received: " + token);
    AuthManager::shared().accessToken.set(token);
    if (const auto controller = weak.lock()) {
        controller->m_isLoggedIn = true;
    }
    DispatchQueue::main().async([weak] {
        if (const auto controller = weak.lock()) {
            if (controller->isLoggedIn()) {
                controller->showSessionView();
            } else {
                controller->showLoginView();
            }
        }
    });
}

void ComposeSessionViewController::schedulePoll(const std::string& url)
{
    // The wait keeps the panel: the next poll is always sent, and its reply finds out whether the panel is still
    // wanted.
    DispatchQueue::main().asyncAfter(secondsBetweenPolls,
                                     [self = shared_from_this(), url] { self->pollForToken(url); });
}

} // namespace quillmate
