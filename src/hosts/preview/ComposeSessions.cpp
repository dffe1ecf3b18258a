#include "hosts/preview/ComposeSessions.h"

#include "hosts/preview/ComposeWindowState.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "platform/foundation/schedule/DispatchQueue.h"

#include <QPointer>
#include <QUuid>
#include <algorithm>

namespace quillmate
{

ComposeSessions::~ComposeSessions()
{
    m_queue.finish();
}

void ComposeSessions::begin(const std::shared_ptr<ComposeWindowState>& window)
{
    m_waiting.push_back(window);
    beginNext();
}

void ComposeSessions::beginNext()
{
    if (m_beginning || m_waiting.empty()) {
        return;
    }
    const std::shared_ptr<ComposeWindowState> window = m_waiting.front();
    m_waiting.pop_front();
    const MEComposeSession session(QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString(),
                                   MEComposeContext(window->originalMessage()));
    const auto handler = m_extension.handlerForComposeSession(session);
    m_sessions.push_back({window, handler, session});
    m_beginning = true;
    const QPointer<ComposeSessions> self(this);
    m_queue.async([self, window, handler, session] {
        handler->mailComposeSessionDidBegin(session);
        DispatchQueue::main().async([self, window] {
            if (self) {
                self->begun(window);
            }
        });
    });
}

void ComposeSessions::begun(const std::shared_ptr<ComposeWindowState>& window)
{
    m_beginning = false;
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(),
                                    [&window](const Session& session) { return session.window == window; });
    if (found != m_sessions.end()) { // Else the window was closed meanwhile.
        if (auto controller = found->handler->viewControllerForSession(found->session)) {
            window->showPanel(std::move(controller));
        } else {
            window->showPanelFailure(QStringLiteral("The extension has no panel for this window."));
        }
    }
    beginNext();
}

void ComposeSessions::end(const std::shared_ptr<ComposeWindowState>& window)
{
    window->dropPanel();
    m_waiting.erase(std::remove(m_waiting.begin(), m_waiting.end(), window), m_waiting.end());
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(),
                                    [&window](const Session& session) { return session.window == window; });
    if (found != m_sessions.end()) {
        m_queue.async(
            [handler = found->handler, session = found->session] { handler->mailComposeSessionDidEnd(session); });
        m_sessions.erase(found);
    }
}

} // namespace quillmate
