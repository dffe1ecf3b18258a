#pragma once

#include "platform/appkit/NSEvent.h"

#include <memory>
#include <string>

#include <QObject>
#include <QPointer>
#include <QVariantList>
#include <qqmlregistration.h>

namespace quillmate
{

/// The hidden developer menu of a screen: whether it is shown, the chosen environment and the version. Main thread
/// only.
class DeveloperMenuState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the screen that owns it")
    Q_PROPERTY(bool shown READ isShown NOTIFY shownChanged)
    Q_PROPERTY(QString selectedApiEndpoint READ selectedApiEndpoint WRITE setSelectedApiEndpoint NOTIFY
                   selectedApiEndpointChanged)
    /// The window that the screen is in; the key of another window's screen is not this one's.
    Q_PROPERTY(QObject* window MEMBER m_window NOTIFY windowChanged)
    /// The environments to choose from, each a map of "key" and "name".
    Q_PROPERTY(QVariantList environments READ environments CONSTANT)
    /// The extension's version, empty when the bundle does not tell it.
    Q_PROPERTY(QString version READ version CONSTANT)

public:
    /// Takes the stored choice.
    explicit DeveloperMenuState(QObject* parent = nullptr);
    ~DeveloperMenuState() override;

    [[nodiscard]] bool isShown() const { return m_shown; }
    void setShown(bool shown);
    [[nodiscard]] QString selectedApiEndpoint() const { return m_selectedApiEndpoint; }
    /// Chooses another environment, which signs the user out; the choice that stands already does nothing.
    void setSelectedApiEndpoint(const QString& key);
    [[nodiscard]] static QVariantList environments();
    [[nodiscard]] static QString version();

    /// Listens for Command-Shift-D, which shows and hides the menu; nothing while it listens already.
    void installKeyMonitor();
    void removeKeyMonitor();

Q_SIGNALS:
    void shownChanged();
    void windowChanged();
    void selectedApiEndpointChanged();

private:
    QPointer<QObject> m_window;
    bool m_shown = false;
    QString m_selectedApiEndpoint;
    std::shared_ptr<NSEvent::Monitor> m_eventMonitor;
};

} // namespace quillmate
