#include "localservice/AnswerPool.h"

#include <algorithm>
#include <utility>

namespace quillmate::localservice
{

AnswerPool::AnswerPool(int threads)
    : m_ordinaryLimit(std::max(1, threads - 1))
{
    for (int i = 0; i < threads; ++i) {
        m_threads.emplace_back([this] { run(); });
    }
}

AnswerPool::~AnswerPool()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

bool AnswerPool::stop(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    m_stop = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, limit, [this] { return m_running == 0; });
}

void AnswerPool::start(std::function<void()> work, Urgency urgency)
{
    {
        const std::lock_guard lock(m_mutex);
        (urgency == Urgency::Quick ? m_quick : m_ordinary).push_back(std::move(work));
    }
    m_changed.notify_one();
}

void AnswerPool::run()
{
    std::unique_lock lock(m_mutex);
    const auto canBeginOrdinary = [this] { return !m_ordinary.empty() && m_ordinaryRunning < m_ordinaryLimit; };
    for (;;) {
        m_changed.wait(lock, [&] { return m_stop || !m_quick.empty() || canBeginOrdinary(); });
        if (m_stop) {
            return;
        }
        const bool quick = !m_quick.empty();
        auto& waiting = quick ? m_quick : m_ordinary;
        auto work = std::move(waiting.front());
        waiting.pop_front();
        ++m_running;
        m_ordinaryRunning += quick ? 0 : 1;
        lock.unlock();
        work();
        work = nullptr; // What the work holds goes outside the lock.
        lock.lock();
        m_ordinaryRunning -= quick ? 0 : 1;
        if (--m_running == 0 && m_stop) {
            m_changed.notify_all();
        }
    }
}

} // namespace quillmate::localservice
