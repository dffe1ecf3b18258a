#include "platform/foundation/schedule/WorkQueue.h"

#include <utility>

namespace quillmate
{

WorkQueue::WorkQueue()
    : m_thread([this] { run(); })
{
}

WorkQueue::~WorkQueue()
{
    std::deque<std::function<void()>> dropped; // Destroyed after the thread has ended, outside the lock.
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
        dropped.swap(m_waiting);
    }
    m_changed.notify_all();
    m_thread.join();
}

void WorkQueue::async(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }
    m_changed.notify_all();
}

void WorkQueue::finish()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.empty() && !m_running; });
}

void WorkQueue::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stop || !m_waiting.empty(); });
        if (m_stop) {
            return;
        }
        auto work = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_running = true;
        lock.unlock();
        work();
        work = nullptr; // What the work holds goes on this thread, and before anybody is told that it is done.
        lock.lock();
        m_running = false;
        m_changed.notify_all();
    }
}

} // namespace quillmate
