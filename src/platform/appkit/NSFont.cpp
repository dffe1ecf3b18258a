#include "platform/appkit/NSFont.h"

#include "platform/appkit/PortalSetting.h"
#include "platform/foundation/text/print.h"

#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <string>

namespace quillmate
{
namespace
{

constexpr double designPixels = 10.0 * 96 / 72;
constexpr double smallest = 1;
constexpr double largest = 2;
constexpr auto variable = "QUILLMATE_TEXT_SCALE";

std::optional<double> scaleOfEnvironment()
{
    if (qEnvironmentVariableIsEmpty(variable)) {
        return std::nullopt;
    }
    bool isNumber = false;
    const double scale = qgetenv(variable).toDouble(&isNumber);
    if (isNumber && std::isfinite(scale) && scale > 0) {
        return scale;
    }
    print(variable, "is not a number from 1 to 2; the desktop's text size is used.");
    return std::nullopt;
}

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
    m_forced = scaleOfEnvironment();
    if (!m_forced) {
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
    double scale = m_forced.value_or(std::max(m_portal, QFontInfo(QGuiApplication::font()).pixelSize() / designPixels));
    // A desktop that says nothing may have a default of 9 points, which nobody has chosen.
    scale = std::clamp(scale, smallest, largest);
    if (m_textScale != scale) {
        m_textScale = scale;
        Q_EMIT textScaleChanged();
    }
}

} // namespace quillmate
