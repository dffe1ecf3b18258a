#include "views/session/ReplySectionState.h"

#include "platform/foundation/schedule/DispatchQueue.h"
#include "views/widgets/Clipboard.h"

#include <QPointer>

#include <utility>

namespace quillmate
{
namespace
{

constexpr double toastSeconds = 5.0;
constexpr double tooltipSeconds = 2.0;

} // namespace

ReplySectionState::ReplySectionState(std::shared_ptr<ButtonStateManager> manager)
    : m_manager(std::move(manager))
{
    takeReply();
    const ButtonStateManager* source = m_manager.get();
    connect(source, &ButtonStateManager::sectionChanged, this, &ReplySectionState::sectionChanged);
    connect(source, &ButtonStateManager::generateResponseChanged, this, &ReplySectionState::takeReply);
    connect(source, &ButtonStateManager::isGenerateResponseLoadingChanged, this, &ReplySectionState::isLoadingChanged);
    connect(source, &ButtonStateManager::toastMessageChanged, this, [this] {
        m_toast = ShownText::of(m_manager->toastMessage());
        Q_EMIT toastMessageChanged();
    });
    connect(source, &ButtonStateManager::showToastChanged, this, &ReplySectionState::showToastChanged);
    connect(source, &ButtonStateManager::announced, this, &ReplySectionState::hideToastLater);
}

void ReplySectionState::takeReply()
{
    m_reply = ShownText::of(m_manager->generateResponse().value_or(""));
    Q_EMIT replyChanged();
}

void ReplySectionState::hideToastLater()
{
    // A newer toast stands its own time.
    DispatchQueue::main().asyncAfter(toastSeconds, [self = QPointer<ReplySectionState>(this), toast = ++m_toasts] {
        if (self && self->m_toasts == toast) {
            self->m_manager->setShowToast(false);
        }
    });
}

void ReplySectionState::setShowTooltip(bool show)
{
    if (std::exchange(m_showTooltip, show) != show) {
        Q_EMIT showTooltipChanged();
    }
}

void ReplySectionState::generateClicked()
{
    m_manager->generate();
}

void ReplySectionState::submitClicked()
{
    m_manager->submitTrainingData();
}

void ReplySectionState::copyClicked()
{
    copyToClipboard(m_manager->generateResponse().value_or(""));
    setShowTooltip(true);
    DispatchQueue::main().asyncAfter(tooltipSeconds, [self = QPointer<ReplySectionState>(this), copy = ++m_copies] {
        if (self && self->m_copies == copy) {
            self->setShowTooltip(false);
        }
    });
}

} // namespace quillmate
