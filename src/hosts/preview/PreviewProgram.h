#pragma once

#include "hosts/preview/ComposeSessions.h"
#include "hosts/preview/MailWindowState.h"
#include "hosts/preview/PreviewOptions.h"
#include "hosts/startup/ServiceAccess.h"
#include "platform/mailkit/MEExtension.h"

#include <QObject>
#include <QQuickWindow>
#include <memory>
#include <vector>

namespace quillmate
{

class WindowPicture;

/// The preview Mail host from its start to its end: reads the messages, opens the windows.
/// Lives within the application object; main thread only.
class PreviewProgram : public QObject
{
    Q_OBJECT

public:
    /// `service` and `extension` outlive this object.
    PreviewProgram(PreviewOptions options, ServiceAccess& service, MEExtension& extension);
    ~PreviewProgram() override;

    /// Begins once the main loop runs. The program ends the loop with its exit status.
    void start();

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    struct ComposeWindow {
        std::shared_ptr<ComposeWindowState> state;
        std::unique_ptr<QQuickWindow> window;
    };

    void takeMessages(const MessageReader::Listing& listing);
    /// Opens the reply to that message once it has been read.
    void replyTo(int index);
    void showMailWindow();
    void openCompose(ComposeKind kind, std::shared_ptr<const MailDocument> original);
    void closeCompose(const ComposeWindowState* state);
    void takePicture(QQuickWindow& window);
    /// Tells the failure, if there is one, and ends in order.
    void end(int status, const QString& failure = {});

    PreviewOptions m_options;
    ServiceAccess& m_service;
    MessageReader m_reader;
    ComposeSessions m_sessions;
    MailWindowState m_mail;
    std::unique_ptr<QQuickWindow> m_mailWindow;
    std::vector<ComposeWindow> m_composeWindows;
    std::unique_ptr<WindowPicture> m_picture;
    bool m_ending = false;
};

} // namespace quillmate
