#include "platform/appkit/ViewEngine.h"

#include <QCoreApplication>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QQuickWindow>

#include <memory>

namespace quillmate
{
namespace
{

std::unique_ptr<QQmlEngine>& engine()
{
    static std::unique_ptr<QQmlEngine> shared;
    return shared;
}

} // namespace

void ViewEngine::chooseRendering()
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
}

QQmlEngine& ViewEngine::shared()
{
    if (!engine()) {
        engine() = std::make_unique<QQmlEngine>();
        engine()->addImportPath(QStringLiteral("qrc:/qt/qml")); // Where the modules built into the program stand.
        engine()->setOutputWarningsToStandardError(true);
        qAddPostRoutine([] { engine().reset(); });
    }
    return *engine();
}

} // namespace quillmate
