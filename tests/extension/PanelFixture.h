#pragma once

#include "extension/ComposeSessionViewController.h"
#include "support/LogCapture.h"
#include "support/TestEnvironment.h"
#include "support/TestServer.h"

#include <QQuickItem>
#include <QQuickWindow>

#include <memory>
#include <string>
#include <vector>

namespace quillmate
{

/// A window with a panel in it, a server behind it and the clock in hand.
class PanelFixture
{
public:
    PanelFixture();
    ~PanelFixture();

    /// Signed out, no message, nothing stored, no replies, and no version on offer.
    void reset();
    /// Makes a panel and shows it in the window, in place of the one before.
    std::shared_ptr<ComposeSessionViewController> show();
    /// Takes the panel out of the window and lets go of it.
    void close();
    /// The newest item of that name in the window that is visible, null when there is none.
    [[nodiscard]] QQuickItem* item(const char* objectName) const;
    void click(const char* objectName);

    TestServer& server() { return m_server; }
    QQuickWindow& window() { return m_window; }
    LogCapture& log() { return m_log; }
    /// Pages handed to the browser since the reset.
    std::vector<std::string>& opened() { return m_opened; }

private:
    TestEnvironment m_environment;
    TestServer m_server;
    LogCapture m_log;
    std::vector<std::string> m_opened;
    QQuickWindow m_window;
    std::shared_ptr<ComposeSessionViewController> m_controller;
};

/// Path and query of the question for a newer version, below the API's or the origin.
[[nodiscard]] std::string versionCheck();

/// Puts a message into the shared record, as a compose session would.
void useMessage(const char* messageId, const char* content);

} // namespace quillmate
