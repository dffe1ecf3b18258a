#pragma once

#include "platform/foundation/schedule/MainSchedule.h"

#include <functional>
#include <memory>

namespace quillmate
{

/// A timer of the main thread's run loop. It does not keep its target alive: when the target is gone the timer ends,
/// and dropping the last reference ends it as well. Main thread only.
class Timer : public std::enable_shared_from_this<Timer>
{
public:
    /// Runs `selector` on the target every `interval` seconds, first after one interval; once only without `repeats`.
    template<typename Target>
    static std::shared_ptr<Timer> scheduledTimer(double interval, std::weak_ptr<Target> target,
                                                 void (Target::*selector)(), bool repeats)
    {
        return schedule(interval, repeats, [target = std::move(target), selector] {
            if (const auto alive = target.lock()) {
                (alive.get()->*selector)();
                return true;
            }
            return false;
        });
    }

    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// Ends the timer for good.
    void invalidate();
    [[nodiscard]] bool isValid() const { return m_valid; }

private:
    /// Fires the target; false when there is none any more.
    using Fire = std::function<bool()>;

    Timer(double interval, bool repeats, Fire fire);
    static std::shared_ptr<Timer> schedule(double interval, bool repeats, Fire fire);
    void arm();
    void fired();

    double m_interval;
    bool m_repeats;
    bool m_valid = true;
    Fire m_fire;
    MainSchedule::Token m_token = 0;
};

} // namespace quillmate
