#include "hosts/preview/ComposeWindowState.h"

#include "platform/appkit/MEExtensionViewController.h"

#include <QQmlEngine>

namespace quillmate
{
namespace
{

ComposeDraft draftFor(ComposeKind kind, const MailDocument* original)
{
    if (original == nullptr) {
        return {};
    }
    return kind == ComposeKind::Reply ? composeReply(*original) : composeForward(*original);
}

} // namespace

ComposeWindowState::ComposeWindowState(ComposeKind kind, std::shared_ptr<const MailDocument> original)
    : m_original(std::move(original))
    , m_draft(draftFor(kind, m_original.get()))
{
}

ComposeWindowState::~ComposeWindowState()
{
    dropPanel();
}

QString ComposeWindowState::title() const
{
    return m_draft.subject.empty() ? QStringLiteral("New message") : subject();
}

std::shared_ptr<const MEMessage> ComposeWindowState::originalMessage() const
{
    return m_original ? m_original->message : nullptr;
}

void ComposeWindowState::showPanel(std::shared_ptr<MEExtensionViewController> controller)
{
    m_controller = std::move(controller);
    m_panel = m_controller->view()->item();
    QQmlEngine::setObjectOwnership(m_panel, QQmlEngine::CppOwnership);
    Q_EMIT panelChanged();
}

void ComposeWindowState::dropPanel()
{
    if (m_panel) {
        m_panel->setParentItem(nullptr);
        m_panel.clear();
        Q_EMIT panelChanged();
    }
    m_controller.reset();
}

void ComposeWindowState::showPanelFailure(const QString& sentence)
{
    m_panelFailure = sentence;
    Q_EMIT panelChanged();
}

} // namespace quillmate
