#pragma once

class QQuickWindow;

namespace quillmate
{

/// Shows the window before the others and asks for the keyboard: by EWMH on X11, by xdg-activation on Wayland. A
/// desktop that keeps the keyboard where it is marks the window instead. Main thread.
void bringForward(QQuickWindow& window);

} // namespace quillmate
