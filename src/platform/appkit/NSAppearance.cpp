#include "platform/appkit/NSAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QPointer>

namespace quillmate
{
namespace
{

// The XDG desktop portal's settings interface and its key for the appearance.
const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interfaceName = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const auto colorSchemeKey = QStringLiteral("color-scheme");

/// Asking for a session bus where there is none makes the bus library start one, which nobody asked for.
bool hasSessionBus()
{
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           (!runtimeFolder.isEmpty() && QFile::exists(runtimeFolder + QStringLiteral("/bus")));
}

} // namespace

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
        askPortal();
    }
    parent->installEventFilter(this);
    update();
}

void NSAppearance::askPortal()
{
    if (!hasSessionBus()) {
        return;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(service, path, interfaceName, QStringLiteral("SettingChanged"), this,
                SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    auto question = QDBusMessage::createMethodCall(service, path, interfaceName, QStringLiteral("Read"));
    question << appearanceGroup << colorSchemeKey;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        // A desktop without a portal answers with an error: then the palette decides.
        if (const QDBusPendingReply<QDBusVariant> reply = *watcher; reply.isValid()) {
            takePortalValue(reply.value().variant());
        }
        watcher->deleteLater();
    });
}

void NSAppearance::portalSettingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    if (group == appearanceGroup && key == colorSchemeKey) {
        takePortalValue(value.variant());
    }
}

void NSAppearance::takePortalValue(const QVariant& value)
{
    // "Read" wraps the number in one more variant than the signal does.
    const QVariant number = value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    switch (number.toUInt()) {
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
