#include "views/LoginViewState.h"

#include "platform/appkit/NSHostingController.h"
#include "platform/foundation/MainOwned.h"
#include "platform/foundation/print.h"
#include "views/PanelHeight.h"
#include "views/ViewsModule.h"

#include <utility>

namespace quillmate
{

LoginViewState::LoginViewState(std::function<void()> onLoginButtonTap)
    : m_onLoginButtonTap(std::move(onLoginButtonTap))
    , m_customHeight(panelHeight())
{
}

HostedView LoginViewState::makeView(std::function<void()> onLoginButtonTap)
{
    registerViews();
    const auto state = makeMainOwned<LoginViewState>(std::move(onLoginButtonTap));
    const std::weak_ptr<LoginViewState> weak = state;
    return {QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Views/LoginView.qml")),
            {{QStringLiteral("viewState"), QVariant::fromValue(state.get())}},
            state,
            [weak] {
                if (const auto alive = weak.lock()) {
                    alive->appeared();
                }
            },
            [weak] {
                if (const auto alive = weak.lock()) {
                    alive->disappeared();
                }
            }};
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
