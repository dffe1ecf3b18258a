#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"
#include "platform/foundation/net/NetworkLimits.h"
#include "platform/foundation/net/URLRequest.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include <QObject>

class QThread;

namespace quillmate
{

class URLManagers;

/// The thread behind URLSession and URLCache: takes work from any thread and runs it where the network objects live.
class URLSessionThread : public QObject
{
    Q_OBJECT

public:
    static URLSessionThread& shared();
    ~URLSessionThread() override;

    static void configure(NetworkEnvironment environment, NetworkLimits limits);
    /// Main thread: ends the thread with its connections; what is under way ends without a completion. The next
    /// transfer begins anew. Done by itself when the application object goes.
    static void stop();

    /// Any thread. Work runs in the order of the calls; what is still waiting when the thread ends is dropped.
    void send(URLRequest request, DataTaskCompletion completion);
    void clearCache();
    using Work = std::function<void()>;
    void perform(Work work);

private:
    URLSessionThread(NetworkEnvironment environment, NetworkLimits limits);
    void runWaiting();
    URLManagers& managers();

    static std::mutex s_sharedMutex;
    static NetworkEnvironment s_environment;
    static NetworkLimits s_limits;
    static std::unique_ptr<URLSessionThread> s_shared;

    const NetworkEnvironment m_environment;
    const NetworkLimits m_limits;
    std::mutex m_mutex;
    std::deque<Work> m_waiting;
    std::unique_ptr<QThread> m_thread;
    std::unique_ptr<URLManagers> m_managers; // Made, used and ended on the thread.
};

} // namespace quillmate
