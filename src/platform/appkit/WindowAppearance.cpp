#include "platform/appkit/WindowAppearance.h"

#include "platform/appkit/NSAppearance.h"

#include <QQuickWindow>

namespace quillmate
{

void followAppearance(QQuickWindow& window)
{
    NSAppearance& appearance = NSAppearance::shared();
    const auto dress = [&window, &appearance] { window.setColor(QColor(appearance.isDark() ? 0x28282d : 0xf5f5f8)); };
    QObject::connect(&appearance, &NSAppearance::darkChanged, &window, dress);
    dress();
}

} // namespace quillmate
