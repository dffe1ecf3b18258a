#include "platform/foundation/net/URLSessionThread.h"

#include "base/CryptographyEnd.h"
#include "platform/foundation/net/URLExchange.h"
#include "platform/foundation/net/URLManagers.h"
#include "platform/foundation/schedule/DispatchQueue.h"

#include <QCoreApplication>
#include <QThread>

#include <semaphore>
#include <utility>

namespace quillmate
{

std::mutex URLSessionThread::s_sharedMutex;
URLSessionThread::Surroundings URLSessionThread::s_surroundings;
NetworkLimits URLSessionThread::s_limits;
std::unique_ptr<URLSessionThread> URLSessionThread::s_shared;

URLSessionThread& URLSessionThread::shared()
{
    const std::lock_guard lock(s_sharedMutex);
    if (!s_shared) {
        s_shared.reset(new URLSessionThread(s_surroundings, s_limits));
        // Network objects must not outlive the application object.
        qAddPostRoutine([] { URLSessionThread::stop(); });
    }
    return *s_shared;
}

void URLSessionThread::configure(NetworkEnvironment environment, NetworkLimits limits)
{
    {
        const std::lock_guard lock(s_sharedMutex);
        s_limits = std::move(limits);
    }
    change({std::move(environment)});
}

void URLSessionThread::configureWhenNeeded(std::function<void()> needed)
{
    change({std::nullopt, std::move(needed)});
}

void URLSessionThread::change(Surroundings surroundings)
{
    const std::lock_guard lock(s_sharedMutex);
    s_surroundings = surroundings;
    if (s_shared) {
        s_shared->perform([thread = s_shared.get(), surroundings = std::move(surroundings)]() mutable {
            thread->take(std::move(surroundings));
        });
    }
}

void URLSessionThread::refuse(const std::string& sentence)
{
    const std::lock_guard lock(s_sharedMutex);
    if (s_shared) {
        s_shared->perform([thread = s_shared.get(), sentence] {
            for (Transfer& refused : std::exchange(thread->m_transfers, {})) {
                refused.completion(std::nullopt, std::nullopt, URLError{URLError::Kind::CannotConnectToHost, sentence});
            }
        });
    }
}

void URLSessionThread::stop()
{
    std::unique_ptr<URLSessionThread> ended;
    const std::lock_guard lock(s_sharedMutex);
    ended.swap(s_shared);
}

URLSessionThread::URLSessionThread(Surroundings surroundings, NetworkLimits limits)
    : m_surroundings(std::move(surroundings))
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
        m_managers = std::make_unique<URLManagers>(m_surroundings.environment.value_or(NetworkEnvironment()), m_limits);
    }
    return *m_managers;
}

void URLSessionThread::send(URLRequest request, DataTaskCompletion completion)
{
    perform([this, transfer = Transfer{std::move(request), std::move(completion)}]() mutable {
        begin(std::move(transfer));
    });
}

void URLSessionThread::begin(Transfer transfer)
{
    if (m_surroundings.environment) {
        URLExchange::begin(managers(), std::move(transfer.request), std::move(transfer.completion));
        return;
    }
    m_transfers.push_back(std::move(transfer));
    if (m_transfers.size() == 1) {
        DispatchQueue::main().async(m_surroundings.needed);
    }
}

void URLSessionThread::take(Surroundings surroundings)
{
    m_surroundings = std::move(surroundings);
    if (m_surroundings.environment && m_managers) {
        m_managers->setEnvironment(*m_surroundings.environment);
    }
    for (Transfer& waiting : std::exchange(m_transfers, {})) {
        begin(std::move(waiting));
    }
}

void URLSessionThread::clearCache()
{
    perform([this] { managers().keptReplies().clear(); });
}

} // namespace quillmate
