#pragma once

#include "platform/appkit/NSAppearance.h"

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

/// The desktop's appearance as the views ask for it. One per engine.
class Appearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)

public:
    explicit Appearance(QObject* parent = nullptr)
        : QObject(parent)
    {
        connect(&NSAppearance::shared(), &NSAppearance::darkChanged, this, &Appearance::darkChanged);
    }

    [[nodiscard]] static bool isDark() { return NSAppearance::shared().isDark(); }

Q_SIGNALS:
    void darkChanged();
};

} // namespace quillmate
