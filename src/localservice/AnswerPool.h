#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quillmate::localservice
{

/// A few threads that answer requests, the quick ones first: of two threads or more
/// one is always left to them, since the others may be busy for long.
class AnswerPool
{
public:
    enum class Urgency { Ordinary, Quick };

    explicit AnswerPool(int threads);
    /// Drops what has not begun and waits for what is running.
    ~AnswerPool();
    AnswerPool(const AnswerPool&) = delete;
    AnswerPool& operator=(const AnswerPool&) = delete;

    /// Drops what has not begun; whether what is running ended within the limit.
    bool stop(std::chrono::milliseconds limit);

    /// Any thread.
    void start(std::function<void()> work, Urgency urgency);

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_quick;
    std::deque<std::function<void()>> m_ordinary;
    int m_running = 0;
    int m_ordinaryRunning = 0;
    int m_ordinaryLimit;
    bool m_stop = false;
    std::vector<std::thread> m_threads; // Last: they use the members above.
};

} // namespace quillmate::localservice
