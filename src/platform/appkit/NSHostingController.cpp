#include "platform/appkit/NSHostingController.h"

#include "platform/appkit/ViewEngine.h"
#include "platform/foundation/text/print.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <utility>

namespace quillmate
{

NSHostingController::NSHostingController(HostedView rootView)
    : m_rootView(std::move(rootView))
    , m_context(std::make_unique<QObject>())
{
}

NSHostingController::~NSHostingController()
{
    m_context.reset();
    windowChanged(false);
}

std::shared_ptr<NSView> NSHostingController::loadView()
{
    QQmlComponent component(&ViewEngine::shared(), m_rootView.source);
    // Qt takes it for granted that the component is ready.
    std::unique_ptr<QObject> object(component.isReady() ? component.createWithInitialProperties(m_rootView.properties)
                                                        : nullptr);
    auto* item = qobject_cast<QQuickItem*>(object.get());
    if (!item) {
        print("The view " + m_rootView.source.toString().toStdString() +
              " cannot be shown: " + component.errorString().simplified().toStdString());
        m_hostedView = std::make_shared<NSView>();
        return m_hostedView;
    }
    std::ignore = object.release();
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    // The superview may keep the item longer than this object lives, and its bindings read the state to the last.
    QObject::connect(item, &QObject::destroyed, item, [state = std::exchange(m_rootView.state, nullptr)] {});
    QObject::connect(item, &QQuickItem::windowChanged, m_context.get(),
                     [this](const QQuickWindow* window) { windowChanged(window != nullptr); });
    m_hostedView = std::make_shared<NSView>(std::unique_ptr<QQuickItem>(item));
    return m_hostedView;
}

void NSHostingController::windowChanged(bool shown)
{
    if (std::exchange(m_appeared, shown) == shown) {
        return;
    }
    if (const auto& action = shown ? m_rootView.onAppear : m_rootView.onDisappear) {
        action();
    }
}

} // namespace quillmate
