#pragma once

#include <string>

namespace quillmate
{

/// While it lives, a display that cannot be opened ends the program with one sentence on standard error and status 2,
/// and not with an abort; Qt's own warnings of that time are dropped. To be held around the making of the application
/// object; one at a time.
class DisplayWatch
{
public:
    /// The program's name, and what to do when the display cannot be opened; for a wrong QT_QPA_PLATFORM there is a
    /// sentence already.
    DisplayWatch(std::string program, std::string advice);
    ~DisplayWatch();

    /// Whether the environment names a display, or a platform that may do without one.
    [[nodiscard]] static bool isDisplayNamed();

    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;
};

} // namespace quillmate
