#pragma once

#include <string>

namespace quillmate
{

/// Replaces what the clipboard holds by the text; one that is not UTF-8 leaves it empty and is told in a diagnostic
/// line. Main thread.
void copyToClipboard(const std::string& text);

} // namespace quillmate
