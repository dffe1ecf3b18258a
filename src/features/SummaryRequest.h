#pragma once

#include "state/SummarizedResponse.h"

#include <functional>
#include <optional>
#include <string>

namespace quillmate
{

/// Sends one summary request for the message being replied to, or for the pasted text when its content is unknown. The
/// completion runs at most once, on any thread; never when the refresh of the user's details that goes before the
/// request fails. What was received stands in `SummarizeManager.responses` by then. Main thread.
void requestSummary(std::function<void(std::optional<SummarizedResponse>)> completion);

/// Keeps the text for the message being replied to, in the settings store.
void storeFallbackContent(const std::string& text);

/// The text kept for the message being replied to.
[[nodiscard]] std::optional<std::string> loadFallbackContent();

} // namespace quillmate
