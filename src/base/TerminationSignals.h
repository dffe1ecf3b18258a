#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

class QSocketNotifier;

namespace quillmate
{

/// Ends the application in order on SIGTERM, SIGINT and SIGHUP. Should something hold up the end, such as a reader of
/// our output that reads no more, the process ends after the limit all the same, with status 0. A SIGHUP that the
/// starter ignores (nohup) stays ignored. Also ignores SIGPIPE, so that a reader that goes away is an error of the
/// write and not the end of the process. One per process; on the main thread, once there is an application object. A
/// signal that comes before the event loop is answered when it runs.
class TerminationSignals
{
public:
    explicit TerminationSignals(std::chrono::seconds limit = std::chrono::seconds(5));
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// What the first signal does from now on; without this, QCoreApplication::quit.
    void setEnd(std::function<void()> end) { m_end = std::move(end); }

private:
    std::function<void()> m_end;
    int m_readEnd = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace quillmate
