#pragma once

#include "service/ReplyRecords.h"

#include <memory>
#include <optional>
#include <string>

namespace quillmate
{

class ButtonStateManager;

/// Whether no reply has ever been generated for the message; empty stands for an unknown id.
[[nodiscard]] bool isFirstReply(const std::string& messageId);
void markReplyGenerated(const std::string& messageId);

/// Asks the service for a reply to the manager's message and shows what comes of it; the manager is not kept alive. A
/// message of which no text is known, neither its own nor a pasted one, costs a toast and no request. Main thread.
void requestReply(const std::shared_ptr<ButtonStateManager>& manager);

/// Shows and stores a reply, or shows why there is none; in every case the request is over. What arrives after the
/// sign-out that ended the panel is dropped. Any thread; acts in a later turn of the main thread, while the manager is
/// still there.
void deliverReplyResult(std::optional<GeneratedResponse> record, std::optional<std::string> errorMessage,
                        std::weak_ptr<ButtonStateManager> manager);

} // namespace quillmate
