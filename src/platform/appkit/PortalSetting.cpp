#include "platform/appkit/PortalSetting.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>

#include <utility>

namespace quillmate
{
namespace
{

const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interfaceName = QStringLiteral("org.freedesktop.portal.Settings");

/// Asking for a session bus where there is none makes the bus library start one, which nobody asked for.
bool hasSessionBus()
{
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           (!runtimeFolder.isEmpty() && QFile::exists(runtimeFolder + QStringLiteral("/bus")));
}

} // namespace

PortalSetting::PortalSetting(QString group, QString key, std::function<void(const QVariant&)> told, QObject* parent)
    : QObject(parent)
    , m_group(std::move(group))
    , m_key(std::move(key))
    , m_told(std::move(told))
{
    if (!hasSessionBus()) {
        return;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    bus.connect(service, path, interfaceName, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto question = QDBusMessage::createMethodCall(service, path, interfaceName, QStringLiteral("Read"));
    question << m_group << m_key;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        // A desktop without a portal, or without this setting, answers with an error.
        if (const QDBusPendingReply<QDBusVariant> reply = *watcher; reply.isValid()) {
            take(reply.value().variant());
        }
        watcher->deleteLater();
    });
}

void PortalSetting::settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    if (group == m_group && key == m_key) {
        take(value.variant());
    }
}

void PortalSetting::take(const QVariant& value) const
{
    // "Read" wraps the value in one more variant than the signal does.
    m_told(value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value);
}

} // namespace quillmate
