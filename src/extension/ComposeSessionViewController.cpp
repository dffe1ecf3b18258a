#include "extension/ComposeSessionViewController.h"

#include "extension/Coordinator.h"
#include "platform/appkit/NSHostingController.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/schedule/Timer.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AppVersion.h"
#include "state/AuthManager.h"
#include "state/Notifications.h"
#include "views/login/LoginViewState.h"
#include "views/session/SessionTabsViewState.h"

#include <utility>

namespace quillmate
{
namespace
{

constexpr double secondsBetweenUpdateChecks = 43200.0; // 12 hours

} // namespace

std::shared_ptr<ComposeSessionViewController>
ComposeSessionViewController::make(std::shared_ptr<const RepliedMessage> message)
{
    return makeMainOwned<ComposeSessionViewController>(std::move(message));
}

ComposeSessionViewController::ComposeSessionViewController(std::shared_ptr<const RepliedMessage> message)
    : m_message(std::move(message))
    , m_loginProgress(makeMainOwned<LoginProgress>())
{
}

ComposeSessionViewController::~ComposeSessionViewController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

void ComposeSessionViewController::viewDidLoad()
{
    MEExtensionViewController::viewDidLoad();
    updateView();
    NotificationCenter::defaultCenter().addObserver(shared_from_this(), &ComposeSessionViewController::handleLogout,
                                                    userDidLogout);
    if (m_updateTimer) {
        m_updateTimer->invalidate();
    }
    m_updateTimer = Timer::scheduledTimer(secondsBetweenUpdateChecks, weak_from_this(),
                                          &ComposeSessionViewController::triggerUpdateCheck, true);
}

void ComposeSessionViewController::changeMessage(std::shared_ptr<const RepliedMessage> message)
{
    m_message = std::move(message);
    const bool showsSession = !children().empty() && m_loginHosts.empty();
    if (showsSession) { // A sign-in screen says nothing of the message.
        showSessionView();
    }
}

void ComposeSessionViewController::updateView()
{
    if (const auto accessToken = AuthManager::shared().accessToken.get()) {
        enterSession(*accessToken);
    } else {
        showLoginView();
    }
}

void ComposeSessionViewController::enterSession(const std::string& accessToken)
{
    showSessionView();
    HandleApiRequests::fetchUserDetails(currentApiURL() + "/me", accessToken, [](UserDetailsManager&) {});
}

void ComposeSessionViewController::triggerUpdateCheck()
{
    const std::string url = currentBaseURL() + "/apple-version";
    if (const auto& version = appVersion()) {
        HandleApiRequests::fetchLatestVersion(url, *version);
    }
}

void ComposeSessionViewController::handleLogout()
{
    showLoginView();
}

void ComposeSessionViewController::buttonClicked()
{
    login();
}

void ComposeSessionViewController::showLoginView()
{
    const auto host = std::make_shared<NSHostingController>(LoginViewState::makeView(
        *m_message,
        [weak = weak_from_this()] {
            if (const auto controller = weak.lock()) {
                controller->login();
            }
        },
        m_loginProgress));
    const bool hadKeyboard = view()->hasKeyboard();
    // What lies below stays, but the keyboard and a screen reader have no business there.
    for (const auto& covered : view()->subviews()) {
        covered->setHidden(true);
    }
    view()->addSubview(host->view());
    host->view()->pinEdgesToSuperview();
    // Not a child controller, so nobody else would keep it.
    m_loginHosts.push_back(host);
    if (hadKeyboard) {
        host->view()->takeKeyboard();
    }
}

void ComposeSessionViewController::showSessionView()
{
    const auto root = view();
    const bool hadKeyboard = root->hasKeyboard();
    while (!root->subviews().empty()) {
        const auto shown = root->subviews().back();
        shown->removeFromSuperview();
    }
    m_loginHosts.clear();
    while (!children().empty()) {
        const auto child = children().back();
        child->removeFromParent();
    }
    const auto coordinator = std::make_shared<Coordinator>(Coordinator{weak_from_this()});
    const auto host = std::make_shared<NSHostingController>(SessionTabsViewState::makeView(m_message, coordinator));
    addChild(host);
    root->addSubview(host->view());
    host->view()->pinEdgesToSuperview();
    if (hadKeyboard) {
        host->view()->takeKeyboard(); // What had it is gone.
    }
}

} // namespace quillmate
