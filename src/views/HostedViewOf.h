#pragma once

#include "platform/appkit/NSHostingController.h"
#include "views/ViewsModule.h"

#include <memory>
#include <utility>

#include <QString>
#include <QUrl>
#include <QVariant>

namespace quillmate
{

/// A view of this module with its state: the state goes into the property "viewState", and is told as the view appears
/// and disappears.
template<typename State>
HostedView hostedViewOf(const QString& name, std::shared_ptr<State> state)
{
    registerViews();
    const std::weak_ptr<State> weak = state;
    const auto tell = [weak](void (State::*change)()) {
        return [weak, change] {
            if (const auto alive = weak.lock()) {
                (alive.get()->*change)();
            }
        };
    };
    const QVariant object = QVariant::fromValue(state.get());
    return {QUrl(QStringLiteral("qrc:/qt/qml/Quillmate/Views/%1.qml").arg(name)),
            {{QStringLiteral("viewState"), object}},
            std::move(state),
            tell(&State::appeared),
            tell(&State::disappeared)};
}

} // namespace quillmate
