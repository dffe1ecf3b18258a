#include "views/SessionTabsViewState.h"

#include "platform/foundation/MainOwned.h"
#include "service/HandleApiRequests.h"
#include "state/APIManager.h"
#include "state/AppVersion.h"
#include "views/HostedViewOf.h"
#include "views/PanelHeight.h"

#include <utility>

namespace quillmate
{

SessionTabsViewState::SessionTabsViewState(std::shared_ptr<void> coordinator)
    : m_coordinator(std::move(coordinator))
    , m_customHeight(panelHeight())
    , m_buttonStateManager(ButtonStateManager::make())
    , m_summarizeStateManager(SummarizeStateManager::make())
    , m_modal(m_buttonStateManager, m_summarizeStateManager, m_developerMenu, nullptr)
{
}

HostedView SessionTabsViewState::makeView(std::shared_ptr<void> coordinator)
{
    return hostedViewOf(QStringLiteral("SessionTabsView"), makeMainOwned<SessionTabsViewState>(std::move(coordinator)));
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

void SessionTabsViewState::disappeared()
{
    m_developerMenu.removeKeyMonitor();
}

} // namespace quillmate
