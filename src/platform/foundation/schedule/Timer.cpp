#include "platform/foundation/schedule/Timer.h"

namespace quillmate
{

Timer::Timer(double interval, bool repeats, Fire fire)
    : m_interval(interval)
    , m_repeats(repeats)
    , m_fire(std::move(fire))
{
}

Timer::~Timer()
{
    invalidate();
}

std::shared_ptr<Timer> Timer::schedule(double interval, bool repeats, Fire fire)
{
    std::shared_ptr<Timer> timer(new Timer(interval, repeats, std::move(fire)));
    timer->arm();
    return timer;
}

void Timer::arm()
{
    m_token = MainSchedule::shared().postAfter(m_interval, [weak = weak_from_this()] {
        if (const auto timer = weak.lock()) {
            timer->fired();
        }
    });
}

void Timer::fired()
{
    if (!m_valid) {
        return;
    }
    if (!m_fire() || !m_repeats) {
        m_valid = false;
    }
    if (m_valid) {
        arm();
    }
}

void Timer::invalidate()
{
    if (m_valid) {
        m_valid = false;
        MainSchedule::shared().cancel(m_token);
    }
}

} // namespace quillmate
