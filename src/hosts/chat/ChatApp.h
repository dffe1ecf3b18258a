#pragma once

#include "platform/appkit/NSHostingController.h"

#include <QQuickWindow>

namespace quillmate
{

/// The stand-alone chat: one window that shows the chat without a message. Main thread only.
class ChatApp
{
public:
    ChatApp();
    ~ChatApp();
    ChatApp(const ChatApp&) = delete;
    ChatApp& operator=(const ChatApp&) = delete;

    void show()
    {
        m_window.show();
        m_window.requestActivate();
    }

private:
    void fit();

    QQuickWindow m_window;
    NSHostingController m_content;
};

} // namespace quillmate
