#include "hosts/link/PanelWindow.h"

#include "platform/appkit/ForeignWindow.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "platform/appkit/WindowActivation.h"
#include "platform/appkit/WindowAppearance.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace quillmate
{
namespace
{

constexpr int gap = 8;
constexpr int preferredWidth = 440;
constexpr int preferredHeight = 600;

/// Whether the frame says where the compose window is. On Wayland every window believes to be at the origin.
bool isPlaceKnown(const QRectF& compose)
{
    const bool fromWayland = qEnvironmentVariableIsSet("WAYLAND_DISPLAY") && compose.topLeft().isNull();
    return !fromWayland && !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

QRect panelGeometry(const QRect& compose, const QSize& leastSize, const QRect& available)
{
    const int width = std::max(leastSize.width(), preferredWidth);
    const int height =
        std::clamp(compose.height(), leastSize.height(), std::max(leastSize.height(), available.height()));
    // In plain edges: QRect::right() is one short of them.
    const int availableRight = available.left() + available.width();
    int left = compose.left() + compose.width() + gap;
    if (left + width > availableRight) {
        const int atLeft = compose.left() - gap - width;
        left = atLeft >= available.left() ? atLeft : availableRight - width;
    }
    left = std::max(left, available.left()); // A screen may be narrower than the panel.
    const int lowestTop = std::max(available.top(), available.top() + available.height() - height);
    return {left, std::clamp(compose.top(), available.top(), lowestTop), width, height};
}

PanelWindow::PanelWindow(std::shared_ptr<MEExtensionViewController> controller)
    : m_controller(std::move(controller))
{
    setTitle(QStringLiteral("Quillmate"));
    setProperty("_q_showWithoutActivating", true); // The user is writing: the keyboard stays there.
    QQuickItem* panel = m_controller->view()->item();
    // The panel may ask for more once a message is known.
    const auto bound = [this, panel] {
        setMinimumSize({static_cast<int>(panel->implicitWidth()), static_cast<int>(panel->implicitHeight())});
        resize(size().expandedTo(minimumSize()));
    };
    connect(panel, &QQuickItem::implicitWidthChanged, this, bound);
    connect(panel, &QQuickItem::implicitHeightChanged, this, bound);
    bound();
    resize(std::max(minimumWidth(), preferredWidth), std::max(minimumHeight(), preferredHeight));
    panel->setParentItem(contentItem());
    fit();

    followAppearance(*this);
}

PanelWindow::~PanelWindow()
{
    // The panel goes before the window, while the window can still tell it so.
    m_controller->view()->item()->setParentItem(nullptr);
    m_controller.reset();
}

void PanelWindow::placeBeside(const WindowFrame& compose)
{
    const QRectF told(compose.left, compose.top, compose.width, compose.height);
    if (!isPlaceKnown(told)) {
        return;
    }
    belongTo(told);
    // The mail application may count in units of its own; the display knows better where its window is.
    const QRect frame = (m_compose ? m_compose->frame() : std::nullopt).value_or(told.toRect());
    const QScreen* composeScreen = QGuiApplication::screenAt(frame.center());
    const QScreen* shownOn = composeScreen ? composeScreen : QGuiApplication::primaryScreen();
    if (shownOn) { // There is none while the last one is being plugged in again.
        m_place = panelGeometry(frame, minimumSize().grownBy(frameMargins()), shownOn->availableGeometry());
        takePlace();
    }
}

void PanelWindow::comeForward()
{
    bringForward(*this);
}

void PanelWindow::belongTo(const QRectF& compose)
{
    if (m_compose) {
        // What is told of a window that is being moved is behind the times. But where another window than ours is said
        // to have moved, ours is the wrong one: two in one place cannot be told apart.
        const auto before = std::exchange(m_composeFrame, m_compose->frame());
        if (m_composeFrame != before || m_compose->covers(compose)) {
            return;
        }
    }
    auto found = ForeignWindow::find(::getppid(), compose);
    if (!found) {
        return;
    }
    const bool wasVisible = isVisible();
    if (wasVisible) {
        hide(); // The display learns whose it is only when it is shown.
    }
    // A window of this kind has no button of its own on a task bar, so it must have a window to belong to.
    setFlags(Qt::Tool);
    setTransientParent(found->window());
    m_compose = std::move(found);
    m_composeFrame = m_compose->frame();
    if (wasVisible) {
        show();
    }
}

void PanelWindow::takePlace()
{
    m_frameMargins = frameMargins();
    setGeometry(m_place.marginsRemoved(m_frameMargins));
    if (!handle()) {
        setFramePosition(m_place.topLeft()); // The title bar's height is not known yet, but that there will be one.
    }
}

void PanelWindow::fit()
{
    QQuickItem* panel = m_controller->view()->item();
    panel->setPosition({0, 0});
    panel->setSize(size());
}

void PanelWindow::moveEvent(QMoveEvent* event)
{
    QQuickWindow::moveEvent(event);
    // Its title bar is known only once it is on the screen.
    if (!m_place.isNull() && frameMargins() != m_frameMargins) {
        takePlace();
    }
}

void PanelWindow::resizeEvent(QResizeEvent* event)
{
    QQuickWindow::resizeEvent(event);
    if (m_controller) {
        fit();
    }
}

bool PanelWindow::event(QEvent* event)
{
    const bool handled = QQuickWindow::event(event);
    if (event->type() == QEvent::Close) {
        Q_EMIT closedByUser();
    }
    return handled;
}

} // namespace quillmate
