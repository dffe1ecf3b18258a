#pragma once

#include "hosts/link/LinkFrame.h"
#include "platform/mailkit/MEExtension.h"

#include <optional>
#include <string>

namespace quillmate
{

// The frames that this process sends, each as JSON.

/// Asks the extension's handlers on the calling thread; the answer.
[[nodiscard]] std::string answerTo(const LinkQuestion& question, MEExtension& extension);

/// Whether the service can be reached: it cannot where there is a problem, a sentence for people.
[[nodiscard]] std::string writeStatus(const std::optional<std::string>& problem);

/// What tells of an error, short enough for one frame.
[[nodiscard]] std::string writeLinkError(const LinkError& error);

} // namespace quillmate
