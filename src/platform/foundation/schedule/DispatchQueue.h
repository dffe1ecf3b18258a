#pragma once

#include "platform/foundation/schedule/MainSchedule.h"

#include <utility>

namespace quillmate
{

/// The main queue: work handed to it runs on the main thread, one piece at a time.
class DispatchQueue
{
public:
    static DispatchQueue& main();

    /// Any thread. The work runs in a later turn of the main loop, in the order of the calls.
    void async(MainSchedule::Work work) { m_schedule.post(std::move(work)); }
    /// Any thread. The work runs on the main thread `seconds` from now.
    void asyncAfter(double seconds, MainSchedule::Work work) { m_schedule.postAfter(seconds, std::move(work)); }

private:
    explicit DispatchQueue(MainSchedule& schedule)
        : m_schedule(schedule)
    {
    }

    MainSchedule& m_schedule;
};

} // namespace quillmate
