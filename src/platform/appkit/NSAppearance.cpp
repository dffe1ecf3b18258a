#include "platform/appkit/NSAppearance.h"

#include "platform/appkit/PortalSetting.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>

namespace quillmate
{

NSAppearance& NSAppearance::shared()
{
    static QPointer<NSAppearance> appearance;
    if (!appearance) {
        appearance = new NSAppearance(QCoreApplication::instance());
    }
    return *appearance;
}

NSAppearance::NSAppearance(QObject* parent)
    : QObject(parent)
{
    const QByteArray forced = qgetenv("QUILLMATE_APPEARANCE").toLower();
    if (forced == "dark") {
        m_forced = ColorScheme::Dark;
    } else if (forced == "light") {
        m_forced = ColorScheme::Light;
    } else {
        new PortalSetting(
            QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
            [this](const QVariant& value) { takePortalValue(value); }, this);
    }
    parent->installEventFilter(this);
    update();
}

void NSAppearance::setDark(bool dark)
{
    m_forced = dark ? ColorScheme::Dark : ColorScheme::Light;
    update();
}

void NSAppearance::takePortalValue(const QVariant& value)
{
    switch (value.toUInt()) {
    case 1:
        m_portal = ColorScheme::Dark;
        break;
    case 2:
        m_portal = ColorScheme::Light;
        break;
    default:
        m_portal = ColorScheme::NoPreference;
    }
    update();
}

bool NSAppearance::eventFilter(QObject* receiver, QEvent* event)
{
    if (event->type() == QEvent::ApplicationPaletteChange) {
        update();
    }
    return QObject::eventFilter(receiver, event);
}

void NSAppearance::update()
{
    const ColorScheme scheme = m_forced == ColorScheme::NoPreference ? m_portal : m_forced;
    bool dark = scheme == ColorScheme::Dark;
    if (scheme == ColorScheme::NoPreference) {
        const QPalette palette = QGuiApplication::palette();
        dark = palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
    }
    if (m_dark != dark) {
        m_dark = dark;
        Q_EMIT darkChanged();
    }
}

} // namespace quillmate
