#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace quillmate
{

/// A serial queue of work on a thread of its own. Made and destroyed on one thread; work is added from any.
class WorkQueue
{
public:
    WorkQueue();
    /// Drops what has not begun and waits for what is running.
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    /// Runs the work after all that was added before.
    void async(std::function<void()> work);
    /// Waits until everything added so far has run.
    void finish();

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_waiting;
    bool m_running = false;
    bool m_stop = false;
    std::thread m_thread; // Last: it uses the members above.
};

} // namespace quillmate
