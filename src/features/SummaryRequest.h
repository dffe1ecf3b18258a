#pragma once

#include "state/SummarizedResponse.h"

#include <functional>
#include <optional>
#include <string>

namespace quillmate
{

/// Sends one summary request for a message: for its content as long as it is the one being replied to and its content
/// is known, else for the text kept for it. The id is the one that the asking panel was made for; another message may
/// be the current one by now, and neither's text goes under the other's id. The completion runs at most once, on any
/// thread; never when the refresh of the user's details that goes before the request fails. What was received stands in
/// `SummarizeManager.responses` by then. Main thread.
void requestSummary(const std::optional<std::string>& messageId,
                    std::function<void(std::optional<SummarizedResponse>)> completion);

} // namespace quillmate
