#include "hosts/preview/ComposeWindowState.h"

#include "platform/appkit/MEExtensionViewController.h"

#include <QQmlEngine>
#include <cmath>

namespace quillmate
{
namespace
{

Draft draftFor(ComposeKind kind, const MailDocument* original)
{
    if (original == nullptr || kind == ComposeKind::NewMessage) {
        return {};
    }
    return kind == ComposeKind::Reply ? replyDraft(*original) : forwardDraft(*original);
}

} // namespace

ComposeWindowState::ComposeWindowState(ComposeKind kind, std::shared_ptr<const MailDocument> original, QObject* parent)
    : QObject(parent)
    , m_original(std::move(original))
    , m_draft(draftFor(kind, m_original.get()))
{
    m_title = m_draft.subject.empty() ? QStringLiteral("New message") : subject();
}

ComposeWindowState::~ComposeWindowState()
{
    dropPanel();
}

std::shared_ptr<const MEMessage> ComposeWindowState::originalMessage() const
{
    return m_original ? m_original->message : nullptr;
}

void ComposeWindowState::showPanel(std::shared_ptr<MEExtensionViewController> controller)
{
    controller->loadViewIfNeeded();
    m_panel = controller->view()->item();
    m_controller = std::move(controller);
    m_panelMinimumHeight = static_cast<int>(std::ceil(m_panel->implicitHeight()));
    m_panelFailure.clear();
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
