#include "extension/MailExtension.h"
#include "panelProcess.h"
#include "platform/appkit/MEExtensionViewController.h"
#include "state/AuthManager.h"
#include "windowTimes.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QTemporaryDir>

/// The panel as a host shows it: the sign-in screen, or with "signed-in" the session panel.
int main(int argc, char** argv)
{
    const QTemporaryDir folder;
    quillmate::beginPanelProcess(folder.path().toLocal8Bit());
    QGuiApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("signed-in"))) {
        quillmate::AuthManager::shared().accessToken.set("token");
    }
    quillmate::MailExtension extension;
    const quillmate::MEComposeSession session("s", quillmate::MEComposeContext());
    const auto handler = extension.handlerForComposeSession(session);
    const auto controller = handler->viewControllerForSession(session);
    QQuickWindow window;
    window.resize(460, 640);
    QQuickItem* panel = controller->view()->item();
    panel->setParentItem(window.contentItem());
    panel->setSize(window.size());
    quillmate::reportFirstFrame(window);
    window.show();
    const int status = QGuiApplication::exec();
    panel->setParentItem(nullptr);
    return status;
}
