#pragma once

#include <string>

namespace quillmate
{

/// Chooses, before the application object is made, where windows go: to the display, or to memory alone when only a
/// picture is wanted. QT_QPA_PLATFORM stands above it. The result is empty, or one sentence that says that there is no
/// display and what to do.
[[nodiscard]] std::string chooseDisplay(bool pictureOnly);

/// Between these two calls a display that cannot be connected to ends the program with one sentence on standard error
/// and status 2, and not with an abort. Qt's own warnings of that time are dropped.
void watchDisplayConnection();
void endDisplayWatch();

} // namespace quillmate
