#include "views/session/SessionTabsViewState.h"

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/schedule/MainOwned.h"
#include "platform/foundation/text/print.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AppVersion.h"
#include "state/IncommingUpdatesManager.h"
#include "views/HostedViewOf.h"
#include "views/session/PanelHeight.h"

#include <utility>

namespace quillmate
{

SessionTabsViewState::SessionTabsViewState(const std::shared_ptr<const RepliedMessage>& message,
                                           std::shared_ptr<void> coordinator)
    : m_coordinator(std::move(coordinator))
    , m_customHeight(panelHeight(*message))
    , m_buttonStateManager(ButtonStateManager::make(message))
    , m_summarizeStateManager(SummarizeStateManager::make(message))
    , m_modal(message, m_buttonStateManager, m_summarizeStateManager, m_developerMenu, nullptr)
{
    connect(&IncommingUpdatesManager::shared(), &IncommingUpdatesManager::incommingUpdatesAvailableChanged, this,
            &SessionTabsViewState::incommingUpdatesAvailableChanged);
}

HostedView SessionTabsViewState::makeView(const std::shared_ptr<const RepliedMessage>& message,
                                          std::shared_ptr<void> coordinator)
{
    return hostedViewOf(QStringLiteral("SessionTabsView"),
                        makeMainOwned<SessionTabsViewState>(message, std::move(coordinator)));
}

void SessionTabsViewState::appeared()
{
    if (const auto& version = appVersion()) {
        HandleApiRequests::fetchLatestVersion(currentApiURL() + "/apple-version", *version);
    }
    // Before the summary section's turn: a stored summary makes a request needless.
    m_summarizeStateManager->loadStoredSummary();
    m_buttonStateManager->loadStoredResponses();
    m_developerMenu.installKeyMonitor();
    m_modal.summarySectionAppeared();
}

bool SessionTabsViewState::incommingUpdatesAvailable()
{
    return IncommingUpdatesManager::shared().incommingUpdatesAvailable();
}

void SessionTabsViewState::remindMeLaterClicked() const
{
    print("Remind me later clicked");
    IncommingUpdatesManager::shared().setIncommingUpdatesAvailable(false);
}

void SessionTabsViewState::updateNowClicked() const
{
    print("Update now clicked");
    const auto link = IncommingUpdatesManager::shared().updateUrl.get();
    if (const auto url = link ? URL::parse(*link) : std::nullopt) {
        NSWorkspace::shared().open(*url);
    }
}

void SessionTabsViewState::disappeared()
{
    m_developerMenu.removeKeyMonitor();
}

} // namespace quillmate
