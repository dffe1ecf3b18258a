#pragma once

#include <functional>

#include <QObject>
#include <QString>
#include <QVariant>

class QDBusVariant;

namespace quillmate
{

/// One setting of the desktop as its portal (org.freedesktop.portal.Settings) tells it, followed as it changes. On a
/// desktop without a portal, or without a session bus, it is never told. Main thread only.
class PortalSetting : public QObject
{
    Q_OBJECT

public:
    /// `told` runs in a later turn of the main loop with what the setting is, and again with every change.
    PortalSetting(QString group, QString key, std::function<void(const QVariant&)> told, QObject* parent);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void take(const QVariant& value) const;

    const QString m_group;
    const QString m_key;
    const std::function<void(const QVariant&)> m_told;
};

} // namespace quillmate
