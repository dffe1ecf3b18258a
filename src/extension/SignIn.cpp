#include "extension/ComposeSessionViewController.h"

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/URLSession.h"
#include "platform/foundation/print.h"
#include "state/APIManager.h"
#include "state/AuthManager.h"
#include "state/SessionResponse.h"

namespace quillmate
{
namespace
{

constexpr auto sessionPath = "/plugin-auth/session-request/";
constexpr double secondsBetweenPolls = 2.0;

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
    const auto parsed = URL::parseAbsolute(url);
    if (!parsed) {
        print("Invalid URL");
        return;
    }
    URLSession::shared()
        .dataTask({*parsed},
                  [weak = weak_from_this()](auto data, const auto&, auto error) { receiveSession(weak, data, error); })
        ->resume();
}

void ComposeSessionViewController::receiveSession(const std::weak_ptr<ComposeSessionViewController>& weak,
                                                  const std::optional<std::string>& data,
                                                  const std::optional<URLError>& error)
{
    if (error) {
        print("Error making GET request: " + error->description());
        return;
    }
    if (!data) {
        print("No data received");
        return;
    }
    const auto session = SessionResponse::decode(*data);
    if (!session) {
        print("Error parsing JSON response: " + session.error().description);
        return;
    }
    if (!session.value().loginURL) {
        return;
    }
    DispatchQueue::main().async([text = *session.value().loginURL] {
        if (const auto page = URL::parse(text)) {
            NSWorkspace::shared().open(*page);
        }
    });
    const std::string baseURL = APIManager::shared().baseURL();
    print("BASE URL IN LOGIN FUNCTION IS:", baseURL);
    const std::string pollURL = APIManager::shared().baseURL() + sessionPath + session.value().id;
    if (const auto controller = weak.lock()) {
        controller->pollForToken(pollURL);
    }
}

void ComposeSessionViewController::pollForToken(const std::string& url)
{
    const auto parsed = URL::parseAbsolute(url);
    if (!parsed) {
        print("Invalid URL");
        return;
    }
    URLSession::shared()
        .dataTask({*parsed}, [weak = weak_from_this(), url](auto data, const auto&,
                                                            auto error) { receivePoll(weak, url, data, error); })
        ->resume();
}

void ComposeSessionViewController::receivePoll(const std::weak_ptr<ComposeSessionViewController>& weak,
                                               const std::string& url, const std::optional<std::string>& data,
                                               const std::optional<URLError>& error)
{
    const auto continuePolling = [&] {
        if (const auto controller = weak.lock()) {
            controller->schedulePoll(url);
        }
    };
    if (error) {
        print("Error making GET request: " + error->description());
        continuePolling();
        return;
    }
    if (!data) {
        print("No data received");
        continuePolling();
        return;
    }
    const auto session = SessionResponse::decode(*data);
    if (!session) {
        print("Error parsing access token JSON response: " + session.error().description);
        return;
    }
    const auto& token = session.value().accessToken;
    if (!token) {
        print("Access token is null. Continuing request...");
        continuePolling();
        return;
    }
    print("Access token received: " + *token);
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
