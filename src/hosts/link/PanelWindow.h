#pragma once

#include "hosts/link/LinkFrame.h"

#include <memory>
#include <optional>

#include <QQuickWindow>

namespace quillmate
{

class MEExtensionViewController;

/// A top-level window that shows one panel, beside the compose window where the window system allows it. Main thread.
class PanelWindow : public QQuickWindow
{
    Q_OBJECT

public:
    explicit PanelWindow(std::shared_ptr<MEExtensionViewController> controller);
    ~PanelWindow() override;

    /// Stands beside the compose window: at its right, at its left where the screen ends, and at the screen's edge
    /// where there is room at neither side.
    void placeBeside(const WindowFrame& compose);

Q_SIGNALS:
    /// The user has closed the window.
    void closedByUser();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    void fit();

    std::shared_ptr<MEExtensionViewController> m_controller;
};

/// Where a panel of the given size goes, beside a compose window and within the available area of its screen.
[[nodiscard]] QRect panelGeometry(const QRect& compose, const QSize& leastSize, const QRect& available);

} // namespace quillmate
