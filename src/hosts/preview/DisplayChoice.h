#pragma once

#include <string>

namespace quillmate
{

/// Chooses, before the application object is made, where windows go: to the display, or to memory alone when only a
/// picture is wanted. QT_QPA_PLATFORM stands above it. The result is empty, or one sentence that says that there is no
/// display and what to do.
[[nodiscard]] std::string chooseDisplay(bool pictureOnly);

} // namespace quillmate
