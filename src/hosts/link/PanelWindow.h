#pragma once

#include "hosts/link/LinkFrame.h"

#include <memory>
#include <optional>

#include <QQuickWindow>

namespace quillmate
{

class ForeignWindow;
class MEExtensionViewController;

/// A top-level window that shows one panel, beside the compose window where the window system allows it: on X11 it also
/// stays above that window and is minimised with it. On Wayland, where no window can place itself, the compositor does.
/// It appears without taking the keyboard. Main thread.
class PanelWindow : public QQuickWindow
{
    Q_OBJECT

public:
    explicit PanelWindow(std::shared_ptr<MEExtensionViewController> controller);
    ~PanelWindow() override;

    /// Stands beside the compose window: at its right, at its left where the screen ends, and at the screen's edge
    /// where there is room at neither side.
    void placeBeside(const WindowFrame& compose);
    /// Shows it, with the keyboard, wherever it was: for a user who asks for it.
    void comeForward();

Q_SIGNALS:
    /// The user has closed the window.
    void closedByUser();

protected:
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    void fit();
    /// Makes it belong to the window of the mail application that covers the frame, unless it does already.
    void belongTo(const QRectF& compose);
    void takePlace();

    std::shared_ptr<MEExtensionViewController> m_controller;
    std::unique_ptr<ForeignWindow> m_compose; // Null where it is not known.
    std::optional<QRect> m_composeFrame;      // As it was last.
    QRect m_place;                            // With the title bar; null before it has been told.
    QMargins m_frameMargins;                  // As they were when it took its place.
};

/// Where a panel of the given size goes, beside a compose window and within the available area of its screen.
[[nodiscard]] QRect panelGeometry(const QRect& compose, const QSize& leastSize, const QRect& available);

} // namespace quillmate
