#pragma once

#include "platform/foundation/net/NetworkEnvironment.h"
#include "platform/foundation/net/NetworkLimits.h"
#include "platform/foundation/net/URLRequest.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

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

    // As URLSession's functions of these names.
    static void configure(NetworkEnvironment environment, NetworkLimits limits);
    static void configureWhenNeeded(std::function<void()> needed);
    static void refuse(const std::string& sentence);
    /// Main thread: ends the thread with its connections; what is under way ends without a completion. The next
    /// transfer begins anew. Done by itself when the application object goes.
    static void stop();

    /// Any thread. Work runs in the order of the calls; what is still waiting when the thread ends is dropped.
    void send(URLRequest request, DataTaskCompletion completion);
    void clearCache();
    using Work = std::function<void()>;
    void perform(Work work);

private:
    /// How connections are made, or who finds it out.
    struct Surroundings {
        std::optional<NetworkEnvironment> environment = NetworkEnvironment();
        std::function<void()> needed = {};
    };
    struct Transfer {
        URLRequest request;
        DataTaskCompletion completion;
    };

    URLSessionThread(Surroundings surroundings, NetworkLimits limits);
    static void change(Surroundings surroundings);
    void runWaiting();
    // On the thread.
    URLManagers& managers();
    void take(Surroundings surroundings);
    void begin(Transfer transfer);

    static std::mutex s_sharedMutex;
    static Surroundings s_surroundings;
    static NetworkLimits s_limits;
    static std::unique_ptr<URLSessionThread> s_shared;

    Surroundings m_surroundings;      // Used on the thread.
    std::deque<Transfer> m_transfers; // Those that wait for the surroundings; used on the thread.
    const NetworkLimits m_limits;
    std::mutex m_mutex;
    std::deque<Work> m_waiting;
    std::unique_ptr<QThread> m_thread;
    std::unique_ptr<URLManagers> m_managers; // Made, used and ended on the thread.
};

} // namespace quillmate
