#pragma once

#include <chrono>
#include <functional>

namespace quillmate
{

/// Time since the computer was started, its sleep included.
[[nodiscard]] std::chrono::milliseconds timeSinceBoot();

/// The times of a session.
struct NetworkLimits {
    /// A reply from its head to its end, however steadily it comes.
    std::chrono::milliseconds longestReply{600'000};
    /// The clock for the replies kept. Called on the session's thread.
    std::function<std::chrono::milliseconds()> now = &timeSinceBoot;
};

} // namespace quillmate
