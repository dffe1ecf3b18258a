#include "windowTimes.h"

#include <QGuiApplication>
#include <QQuickView>

/// The least a Qt Quick program can be: one window of the same backend with a rectangle and a text in it.
int main(int argc, char** argv)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    QFile file(
        QDir::temp().filePath(QStringLiteral("quillmate-minimal-%1.qml").arg(QCoreApplication::applicationPid())));
    if (!file.open(QIODevice::WriteOnly)) {
        return 1;
    }
    file.write(
        "import QtQuick\nRectangle { width: 460; height: 640; Text { text: \"Hello\"; anchors.centerIn: parent } }\n");
    file.close();
    QQuickView view(QUrl::fromLocalFile(file.fileName()));
    file.remove();
    quillmate::reportFirstFrame(view);
    view.show();
    return QGuiApplication::exec();
}
