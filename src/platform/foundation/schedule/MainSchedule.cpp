#include "platform/foundation/schedule/MainSchedule.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace quillmate
{

MainSchedule& MainSchedule::shared()
{
    static MainSchedule schedule;
    // Work may own objects that need the application, so none may outlive it.
    static const bool clearedAtExit = [] {
        qAddPostRoutine([] { MainSchedule::shared().clear(); });
        return true;
    }();
    Q_UNUSED(clearedAtExit)
    return schedule;
}

double MainSchedule::now() const
{
    if (m_manual) {
        return m_manualNow;
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void MainSchedule::post(Work work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(work));
        if (m_wakePending) {
            return;
        }
        m_wakePending = true;
    }
    wake();
}

void MainSchedule::wake()
{
    if (auto* application = QCoreApplication::instance()) {
        QMetaObject::invokeMethod(
            application, [] { MainSchedule::shared().drain(); }, Qt::QueuedConnection);
        return;
    }
    const std::lock_guard lock(m_mutex);
    m_wakePending = false; // Nobody to wake yet: the first work posted once there is an application wakes for all.
}

void MainSchedule::drain()
{
    std::deque<Work> turn;
    {
        const std::lock_guard lock(m_mutex);
        m_wakePending = false;
        turn.swap(m_posted);
    }
    while (!turn.empty()) {
        const Work work = std::move(turn.front());
        turn.pop_front();
        work();
    }
}

MainSchedule::Token MainSchedule::postAfter(double seconds, Work work)
{
    Token token = 0;
    bool manual = false;
    {
        const std::lock_guard lock(m_mutex);
        token = ++m_lastToken;
        m_delayed.emplace(Deadline{now() + std::max(seconds, 0.0), token}, std::move(work));
        manual = m_manual;
    }
    if (!manual) {
        post([this] { armTimer(); });
    }
    return token;
}

void MainSchedule::cancel(Token token)
{
    Work dropped; // Declared first, so destroyed after the lock is let go: it may own what adds or cancels work.
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_delayed.begin(), m_delayed.end(),
                                    [token](const auto& entry) { return entry.first.second == token; });
    if (found != m_delayed.end()) {
        dropped = std::move(found->second);
        m_delayed.erase(found);
    }
}

void MainSchedule::armTimer()
{
    double wait = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (m_manual || m_delayed.empty()) {
            return;
        }
        wait = std::max(0.0, m_delayed.begin()->first.first - now());
    }
    if (!m_timer) {
        m_timer = new QTimer(QCoreApplication::instance());
        m_timer->setSingleShot(true);
        m_timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(m_timer, &QTimer::timeout, m_timer, [this] {
            runDue();
            armTimer();
        });
    }
    // QTimer counts milliseconds in an int; a longer wait is taken in steps.
    constexpr double longest = 86'400'000;
    m_timer->start(static_cast<int>(std::min(std::ceil(wait * 1000), longest)));
}

void MainSchedule::runDue()
{
    for (;;) {
        Work work;
        {
            const std::lock_guard lock(m_mutex);
            if (m_delayed.empty() || m_delayed.begin()->first.first > now()) {
                return;
            }
            work = std::move(m_delayed.begin()->second);
            m_delayed.erase(m_delayed.begin());
        }
        work();
    }
}

void MainSchedule::setManualTime(bool manual)
{
    const std::lock_guard lock(m_mutex);
    // On a fraction that binary numbers hold, so that sums and differences of moments are exact however long the
    // machine has been up.
    m_manualNow = std::ceil(now() * 1024) / 1024;
    m_manual = manual;
}

void MainSchedule::advance(double seconds)
{
    double target = 0;
    {
        const std::lock_guard lock(m_mutex);
        target = m_manualNow + seconds;
    }
    for (;;) {
        drain();
        {
            const std::lock_guard lock(m_mutex);
            // The tolerance takes up the rounding of sums such as 2.0 + 2.0 against one step of 4.0.
            if (m_delayed.empty() || m_delayed.begin()->first.first > target + 1e-6) {
                m_manualNow = target;
                return;
            }
            m_manualNow = std::max(m_manualNow, m_delayed.begin()->first.first);
        }
        runDue();
    }
}

std::vector<double> MainSchedule::pendingDelays()
{
    const std::lock_guard lock(m_mutex);
    std::vector<double> delays;
    for (const auto& [deadline, work] : m_delayed) {
        delays.push_back(deadline.first - now());
    }
    return delays;
}

void MainSchedule::clear()
{
    std::deque<Work> posted;
    std::map<Deadline, Work> delayed;
    const std::lock_guard lock(m_mutex);
    posted.swap(m_posted);
    delayed.swap(m_delayed);
    m_wakePending = false; // A wake that was on its way may go with the application object.
}

} // namespace quillmate
