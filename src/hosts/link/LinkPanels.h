#pragma once

#include "hosts/link/LinkFrame.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <QObject>

namespace quillmate
{

class MEExtensionViewController;
class PanelWindow;

/// The panels' windows, one per compose session. Main thread.
class LinkPanels : public QObject
{
    Q_OBJECT

public:
    LinkPanels();
    ~LinkPanels() override;

    using MakeController = std::function<std::shared_ptr<MEExtensionViewController>()>;

    /// Shows the session's panel. Only the first time one is made: later the same comes forward, closed or not, since
    /// another one could be about another session's message by now.
    void show(const std::string& session, const MakeController& make, const std::optional<WindowFrame>& compose);
    /// Follows the compose window; nothing for a session without a panel. A panel that the user has closed stays so.
    void follow(const std::string& session, const WindowFrame& compose);
    /// Ends the panel with its session.
    void close(const std::string& session);

Q_SIGNALS:
    /// A panel has been made and is on the screen.
    void shown();
    /// The user has closed the last window that was open.
    void lastClosedByUser();

private:
    std::map<std::string, std::unique_ptr<PanelWindow>> m_windows;
};

} // namespace quillmate
