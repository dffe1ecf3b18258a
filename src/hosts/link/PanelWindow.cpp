#include "hosts/link/PanelWindow.h"

#include "platform/appkit/MEExtensionViewController.h"
#include "platform/appkit/WindowAppearance.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>

#include <algorithm>

namespace quillmate
{
namespace
{

constexpr int gap = 8;
constexpr int preferredWidth = 440;

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
    const int lowestTop = std::max(available.top(), available.top() + available.height() - height);
    return {left, std::clamp(compose.top(), available.top(), lowestTop), width, height};
}

PanelWindow::PanelWindow(std::shared_ptr<MEExtensionViewController> controller)
    : m_controller(std::move(controller))
{
    setTitle(QStringLiteral("Quillmate"));
    QQuickItem* panel = m_controller->view()->item();
    // The panel may ask for more once a message is known.
    const auto bound = [this, panel] {
        setMinimumSize({static_cast<int>(panel->implicitWidth()), static_cast<int>(panel->implicitHeight())});
        resize(size().expandedTo(minimumSize()));
    };
    connect(panel, &QQuickItem::implicitWidthChanged, this, bound);
    connect(panel, &QQuickItem::implicitHeightChanged, this, bound);
    bound();
    resize(std::max(minimumWidth(), preferredWidth), std::max(minimumHeight(), 600));
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
    const QRect frame(qRound(compose.left), qRound(compose.top), qRound(compose.width), qRound(compose.height));
    const QScreen* composeScreen = QGuiApplication::screenAt(frame.center());
    const QScreen* shownOn = composeScreen ? composeScreen : QGuiApplication::primaryScreen();
    if (shownOn) { // There is none while the last one is being plugged in again.
        setGeometry(panelGeometry(frame, minimumSize(), shownOn->availableGeometry()));
    }
}

void PanelWindow::fit()
{
    QQuickItem* panel = m_controller->view()->item();
    panel->setPosition({0, 0});
    panel->setSize(size());
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
