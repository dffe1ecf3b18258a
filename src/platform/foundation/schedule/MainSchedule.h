#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <QPointer>

class QTimer;

namespace quillmate
{

/// The main thread's work list: what DispatchQueue and Timer stand on. Work is added from any thread and runs on the
/// main thread only, from the application's event loop; delayed work runs in the order of its deadlines. The lists are
/// guarded by a lock of their own, so what a thread wrote before adding work is seen by that work.
class MainSchedule
{
public:
    using Work = std::function<void()>;
    using Token = std::uint64_t;

    static MainSchedule& shared();

    /// Runs the work on the main thread in a later turn of its loop, in the order of the calls.
    void post(Work work);
    /// Runs the work on the main thread once `seconds` have passed.
    Token postAfter(double seconds, Work work);
    /// Drops delayed work that has not begun; an unknown token is ignored.
    void cancel(Token token);

    /// Stops or starts the real clock. While it is stopped time passes only through `advance`.
    void setManualTime(bool manual);
    /// Main thread, manual time only: moves the clock, running what becomes due at each instant, and the posted work in
    /// between, in order.
    void advance(double seconds);
    /// Seconds from now to each pending deadline, nearest first.
    [[nodiscard]] std::vector<double> pendingDelays();
    /// Main thread: runs the posted work that is due in this turn.
    void drain();
    /// Drops all work; run when the application object goes.
    void clear();

private:
    using Deadline = std::pair<double, Token>;

    MainSchedule() = default;
    [[nodiscard]] double now() const;
    void wake();
    void armTimer();
    void runDue();

    std::mutex m_mutex;
    std::deque<Work> m_posted;
    std::map<Deadline, Work> m_delayed;
    bool m_wakePending = false;
    bool m_manual = false;
    double m_manualNow = 0;
    Token m_lastToken = 0;
    QPointer<QTimer> m_timer; // Main thread only.
};

/// Stops the real clock for its lifetime; a test holds one and moves time by hand. Main thread.
class ManualTime
{
public:
    ManualTime() { MainSchedule::shared().setManualTime(true); }
    ~ManualTime() { MainSchedule::shared().setManualTime(false); }
    ManualTime(const ManualTime&) = delete;
    ManualTime& operator=(const ManualTime&) = delete;

    static void advance(double seconds) { MainSchedule::shared().advance(seconds); }
    [[nodiscard]] static std::vector<double> pendingDelays() { return MainSchedule::shared().pendingDelays(); }
};

} // namespace quillmate
