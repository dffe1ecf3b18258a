#pragma once

#include "hosts/link/LinkFrame.h"

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

    /// Shows the panel, in place of one that the session may have already.
    void show(const std::string& session, std::shared_ptr<MEExtensionViewController> controller,
              const std::optional<WindowFrame>& compose);
    /// Follows the compose window; nothing for a session without a panel.
    void follow(const std::string& session, const WindowFrame& compose);
    void close(const std::string& session);

Q_SIGNALS:
    /// The user has closed the last window.
    void lastClosedByUser();

private:
    std::map<std::string, std::unique_ptr<PanelWindow>> m_windows;
};

} // namespace quillmate
