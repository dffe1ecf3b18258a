#include "views/login/LoginViewState.h"

#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/text/print.h"
#include "state/AuthManager.h"
#include "views/HostedViewOf.h"
#include "views/session/PanelHeight.h"

#include <utility>

namespace quillmate
{
namespace
{

QString explanationOf(AuthManager::SignInLoss loss)
{
    switch (loss) {
    case AuthManager::SignInLoss::None:
        break;
    case AuthManager::SignInLoss::Restart:
        return QStringLiteral(
            "Quillmate has been started anew, and a sign-in lasts only as long as it runs. Please log "
            "in again: everything that was kept is still there.");
    case AuthManager::SignInLoss::Refusal:
        return QStringLiteral("The service has ended your sign-in. Please log in again: everything that was kept is "
                              "still there.");
    }
    return {};
}

} // namespace

LoginViewState::LoginViewState(const RepliedMessage& message, std::function<void()> onLoginButtonTap,
                               std::shared_ptr<LoginProgress> progress)
    : m_onLoginButtonTap(std::move(onLoginButtonTap))
    , m_progress(std::move(progress))
    , m_explanation(explanationOf(AuthManager::shared().signInLoss()))
    , m_customHeight(panelHeight(message))
{
}

HostedView LoginViewState::makeView(const RepliedMessage& message, std::function<void()> onLoginButtonTap,
                                    std::shared_ptr<LoginProgress> progress)
{
    return hostedViewOf(QStringLiteral("LoginView"),
                        makeMainOwned<LoginViewState>(message, std::move(onLoginButtonTap), std::move(progress)));
}

void LoginViewState::appeared()
{
    // Once only: a screen that is shown again has no monitor until it is made anew.
    if (!std::exchange(m_hasAddedEventMonitor, true)) {
        m_developerMenu.installKeyMonitor();
    }
    print("i enter in the login content view page");
}

void LoginViewState::disappeared()
{
    m_developerMenu.removeKeyMonitor();
}

} // namespace quillmate
