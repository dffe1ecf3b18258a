#include "platform/appkit/WindowActivation.h"

#include <QGuiApplication>
#include <QQuickWindow>

namespace quillmate
{

void bringForward(QQuickWindow& window)
{
    window.show();
    if (QGuiApplication::platformName() == QLatin1String("xcb")) {
        window.raise(); // Elsewhere there is no such thing.
    }
    window.requestActivate();
}

} // namespace quillmate
