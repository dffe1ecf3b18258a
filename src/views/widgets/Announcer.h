#pragma once

#include <QAccessible>
#include <QObject>
#include <QQuickItem>
#include <qqmlregistration.h>

namespace quillmate
{

/// Tells a screen reader what has just happened.
class Announcer : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// The item has come up with something that the user should hear of now. Main thread.
    Q_INVOKABLE static void alert(QQuickItem* item)
    {
        QAccessibleEvent event(item, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
};

} // namespace quillmate
