#include "hosts/link/LinkPanels.h"

#include "hosts/link/PanelWindow.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "platform/foundation/schedule/DispatchQueue.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace quillmate
{

LinkPanels::LinkPanels() = default;
LinkPanels::~LinkPanels() = default;

void LinkPanels::show(const std::string& session, const MakeController& make, const std::optional<WindowFrame>& compose)
{
    if (const auto found = m_windows.find(session); found != m_windows.end()) {
        if (compose) {
            found->second->placeBeside(*compose);
        }
        found->second->comeForward();
        return;
    }
    auto window = std::make_unique<PanelWindow>(make());
    if (compose) {
        window->placeBeside(*compose);
    }
    connect(window.get(), &PanelWindow::closedByUser, this, [this] {
        // The window is in the middle of its own event, and counts as open until that is over.
        DispatchQueue::main().async([self = QPointer<LinkPanels>(this)] {
            const auto isOpen = [](const auto& entry) { return entry.second->isVisible(); };
            if (self && std::none_of(self->m_windows.begin(), self->m_windows.end(), isOpen)) {
                Q_EMIT self->lastClosedByUser();
            }
        });
    });
    window->show();
    m_windows.emplace(session, std::move(window));
    Q_EMIT shown();
}

void LinkPanels::follow(const std::string& session, const WindowFrame& compose)
{
    if (const auto found = m_windows.find(session); found != m_windows.end()) {
        found->second->placeBeside(compose);
    }
}

void LinkPanels::close(const std::string& session)
{
    m_windows.erase(session);
}

} // namespace quillmate
