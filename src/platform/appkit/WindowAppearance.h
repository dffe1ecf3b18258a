#pragma once

class QQuickWindow;

namespace quillmate
{

/// Gives the window the ground of the desktop's appearance, also when that changes. Main thread.
void followAppearance(QQuickWindow& window);

} // namespace quillmate
