#include "platform/foundation/net/URLSessionThread.h"

#include "base/CryptographyEnd.h"
#include "platform/foundation/net/URLExchange.h"
#include "platform/foundation/net/URLManagers.h"

#include <QCoreApplication>
#include <QThread>

#include <semaphore>
#include <utility>

namespace quillmate
{

std::mutex URLSessionThread::s_sharedMutex;
NetworkEnvironment URLSessionThread::s_environment;
NetworkLimits URLSessionThread::s_limits;
std::unique_ptr<URLSessionThread> URLSessionThread::s_shared;

URLSessionThread& URLSessionThread::shared()
{
    const std::lock_guard lock(s_sharedMutex);
    if (!s_shared) {
        s_shared.reset(new URLSessionThread(s_environment, s_limits));
        // Network objects must not outlive the application object.
        qAddPostRoutine([] { URLSessionThread::stop(); });
    }
    return *s_shared;
}

void URLSessionThread::configure(NetworkEnvironment environment, NetworkLimits limits)
{
    const std::lock_guard lock(s_sharedMutex);
    s_environment = std::move(environment);
    s_limits = std::move(limits);
}

void URLSessionThread::stop()
{
    std::unique_ptr<URLSessionThread> ended;
    const std::lock_guard lock(s_sharedMutex);
    ended.swap(s_shared);
}

URLSessionThread::URLSessionThread(NetworkEnvironment environment, NetworkLimits limits)
    : m_environment(std::move(environment))
    , m_limits(std::move(limits))
    , m_thread(std::make_unique<QThread>())
{
    leaveCryptographyToProcessEnd();
    m_thread->setObjectName(QStringLiteral("URLSession"));
    moveToThread(m_thread.get());
    m_thread->start();
}

URLSessionThread::~URLSessionThread()
{
    // What the thread wrote last is handed over here, and not by the end of the thread, which Qt waits for in a way of
    // its own.
    std::binary_semaphore ended(0);
    perform([this, &ended] {
        m_managers.reset();
        m_thread->quit();
        ended.release();
    });
    ended.acquire();
    m_thread->wait();
    // A run that was posted earlier may have come after that one and found nothing to do.
    const std::lock_guard lock(m_mutex);
}

void URLSessionThread::perform(Work work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }
    QMetaObject::invokeMethod(this, &URLSessionThread::runWaiting, Qt::QueuedConnection);
}

void URLSessionThread::runWaiting()
{
    std::deque<Work> waiting;
    {
        const std::lock_guard lock(m_mutex);
        waiting.swap(m_waiting);
    }
    for (Work& work : waiting) {
        work();
    }
}

URLManagers& URLSessionThread::managers()
{
    if (!m_managers) {
        m_managers = std::make_unique<URLManagers>(m_environment, m_limits);
    }
    return *m_managers;
}

void URLSessionThread::send(URLRequest request, DataTaskCompletion completion)
{
    perform([this, request = std::move(request), completion = std::move(completion)]() mutable {
        URLExchange::begin(managers(), std::move(request), std::move(completion));
    });
}

void URLSessionThread::clearCache()
{
    perform([this] { managers().keptReplies().clear(); });
}

} // namespace quillmate
