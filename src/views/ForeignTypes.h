#pragma once

#include "features/SummarizeStateManager.h"
#include "platform/appkit/NSAppearance.h"

#include <QQmlEngine>
#include <qqmlregistration.h>

namespace quillmate
{

// Types of the floors below that the views name.

struct SummarizeStateManagerInViews {
    Q_GADGET
    QML_FOREIGN(quillmate::SummarizeStateManager)
    QML_NAMED_ELEMENT(SummarizeStateManager)
    QML_UNCREATABLE("Made with its panel")
};

struct AppearanceInViews {
    Q_GADGET
    QML_FOREIGN(quillmate::NSAppearance)
    QML_NAMED_ELEMENT(Appearance)
    QML_SINGLETON

public:
    static NSAppearance* create(QQmlEngine*, QJSEngine*)
    {
        NSAppearance& appearance = NSAppearance::shared();
        QJSEngine::setObjectOwnership(&appearance, QJSEngine::CppOwnership);
        return &appearance;
    }
};

} // namespace quillmate
