#include "hosts/link/LinkPanels.h"

#include "hosts/link/PanelWindow.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "platform/foundation/DispatchQueue.h"

#include <QPointer>

#include <utility>

namespace quillmate
{

LinkPanels::LinkPanels() = default;
LinkPanels::~LinkPanels() = default;

void LinkPanels::show(const std::string& session, std::shared_ptr<MEExtensionViewController> controller,
                      const std::optional<WindowFrame>& compose)
{
    auto window = std::make_unique<PanelWindow>(std::move(controller));
    if (compose) {
        window->placeBeside(*compose);
    }
    connect(window.get(), &PanelWindow::closedByUser, this, [this, session, closed = window.get()] {
        // The window is in the middle of its own event. By the time that is over, another may stand in its place.
        DispatchQueue::main().async([self = QPointer<LinkPanels>(this), session, closed] {
            if (!self) {
                return;
            }
            const auto shown = self->m_windows.find(session);
            if (shown != self->m_windows.end() && shown->second.get() == closed) {
                self->close(session);
                if (self->m_windows.empty()) {
                    Q_EMIT self->lastClosedByUser();
                }
            }
        });
    });
    window->show();
    m_windows.insert_or_assign(session, std::move(window));
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
