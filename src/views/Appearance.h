#pragma once

#include "platform/appkit/NSAppearance.h"
#include "platform/appkit/NSFont.h"

#include <QObject>
#include <qqmlregistration.h>

namespace quillmate
{

/// The desktop's appearance and text size as the views ask for them. One per engine.
class Appearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)
    /// 1 for the sizes that the views were drawn for.
    Q_PROPERTY(double textScale READ textScale NOTIFY textScaleChanged)

public:
    explicit Appearance(QObject* parent = nullptr)
        : QObject(parent)
    {
        connect(&NSAppearance::shared(), &NSAppearance::darkChanged, this, &Appearance::darkChanged);
        connect(&NSFont::shared(), &NSFont::textScaleChanged, this, &Appearance::textScaleChanged);
    }

    [[nodiscard]] static bool isDark() { return NSAppearance::shared().isDark(); }
    [[nodiscard]] static double textScale() { return NSFont::shared().textScale(); }

Q_SIGNALS:
    void darkChanged();
    void textScaleChanged();
};

} // namespace quillmate
