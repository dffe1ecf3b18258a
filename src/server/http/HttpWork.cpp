#include "server/http/HttpWork.h"

#include <utility>

namespace quillmate::server
{

void HttpWork::begin()
{
    const std::lock_guard lock(m_mutex);
    ++m_running;
}

void HttpWork::end()
{
    const std::lock_guard lock(m_mutex);
    if (--m_running == 0) {
        m_done.notify_all();
    }
}

bool HttpWork::waitUntilDone(std::chrono::steady_clock::time_point latest)
{
    std::unique_lock lock(m_mutex);
    return m_done.wait_until(lock, latest, [this] { return m_running == 0; });
}

bool HttpWork::answerSlowly(MHD_Connection* connection, std::function<void()> work)
{
    const std::lock_guard lock(m_slowMutex);
    if (m_isClosed) {
        return false;
    }
    MHD_suspend_connection(connection);
    // The pool hands over by locks that the thread sanitizer does not see; this one it sees.
    static std::mutex handOver;
    std::function<void()> job = [work = std::move(work)] {
        handOver.lock();
        handOver.unlock();
        work();
    };
    handOver.lock();
    handOver.unlock();
    slowAnswers.start(std::move(job));
    return true;
}

void HttpWork::close()
{
    const std::lock_guard lock(m_slowMutex);
    m_isClosed = true;
}

} // namespace quillmate::server
