#include "platform/appkit/NSFont.h"

#include "platform/appkit/PortalSetting.h"

#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPointer>

#include <algorithm>

namespace quillmate
{
namespace
{

constexpr double designPixels = 10.0 * 96 / 72;
constexpr double smallest = 1;
constexpr double largest = 3;

} // namespace

NSFont& NSFont::shared()
{
    static QPointer<NSFont> font;
    if (!font) {
        font = new NSFont(QCoreApplication::instance());
    }
    return *font;
}

NSFont::NSFont(QObject* parent)
    : QObject(parent)
{
    bool isNumber = false;
    m_forced = qgetenv("QUILLMATE_TEXT_SCALE").toDouble(&isNumber);
    if (!isNumber) {
        m_forced = 0;
        new PortalSetting(
            QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("text-scaling-factor"),
            [this](const QVariant& value) {
                m_portal = value.toDouble();
                update();
            },
            this);
    }
    parent->installEventFilter(this);
    update();
}

void NSFont::setTextScale(double scale)
{
    m_forced = scale;
    update();
}

bool NSFont::eventFilter(QObject* receiver, QEvent* event)
{
    if (event->type() == QEvent::ApplicationFontChange) {
        update();
    }
    return QObject::eventFilter(receiver, event);
}

void NSFont::update()
{
    double scale = m_forced;
    if (scale == 0) {
        scale = std::max(m_portal, QFontInfo(QGuiApplication::font()).pixelSize() / designPixels);
    }
    // A desktop that says nothing may have a default of 9 points, which nobody has chosen.
    scale = std::clamp(scale, smallest, largest);
    if (m_textScale != scale) {
        m_textScale = scale;
        Q_EMIT textScaleChanged();
    }
}

} // namespace quillmate
