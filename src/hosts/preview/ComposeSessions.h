#pragma once

#include "platform/foundation/schedule/WorkQueue.h"
#include "platform/mailkit/MEExtension.h"

#include <QObject>
#include <deque>
#include <memory>
#include <vector>

namespace quillmate
{

class ComposeWindowState;

/// Tells the extension of compose windows as they open and close, and puts its panels into them. One session at a time
/// is begun and given its panel, since the extension reads the replied-to message when it builds the panel. The
/// extension's beginning and ending run on a thread of this object's own. Main thread only.
class ComposeSessions : public QObject
{
    Q_OBJECT

public:
    /// `extension` outlives this object.
    explicit ComposeSessions(MEExtension& extension)
        : m_extension(extension)
    {
    }
    /// Waits for what the extension is doing.
    ~ComposeSessions() override;

    void begin(const std::shared_ptr<ComposeWindowState>& window);
    /// Drops the window's panel and ends its session, if it was begun.
    void end(const std::shared_ptr<ComposeWindowState>& window);

    /// Whether every open window has its panel.
    [[nodiscard]] bool isSettled() const { return !m_beginning && m_waiting.empty(); }

private:
    struct Session {
        std::shared_ptr<ComposeWindowState> window;
        std::shared_ptr<MEComposeSessionHandler> handler;
        MEComposeSession session;
    };

    void beginNext();
    void begun(const std::shared_ptr<ComposeWindowState>& window);

    MEExtension& m_extension;
    std::deque<std::shared_ptr<ComposeWindowState>> m_waiting;
    std::vector<Session> m_sessions;
    bool m_beginning = false;
    WorkQueue m_queue; // Last: its work uses the members above.
};

} // namespace quillmate
