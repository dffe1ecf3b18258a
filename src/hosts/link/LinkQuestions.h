#pragma once

#include "hosts/link/LinkFrame.h"
#include "platform/mailkit/MEExtension.h"

#include <string>

namespace quillmate
{

/// Asks the extension's handlers on the calling thread; the answer's JSON.
[[nodiscard]] std::string answerTo(const LinkQuestion& question, MEExtension& extension);

} // namespace quillmate
