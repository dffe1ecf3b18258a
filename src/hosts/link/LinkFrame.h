#pragma once

#include "platform/foundation/JSON.h"
#include "platform/mailkit/MEMessage.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace quillmate
{

/// Where a compose window stands on the screen, in points.
struct WindowFrame {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    bool operator==(const WindowFrame&) const = default;
};

// The frames that this process understands.

struct ComposeSessionDidBegin {
    std::string session;
    /// Null for a new message.
    std::shared_ptr<const MEMessage> originalMessage;
};
struct ViewControllerForSession {
    std::string session;
    std::optional<WindowFrame> frame;
};
struct ComposeSessionFrameDidChange {
    std::string session;
    WindowFrame frame;
};
struct ComposeSessionDidEnd {
    std::string session;
};

using LinkFrame =
    std::variant<ComposeSessionDidBegin, ViewControllerForSession, ComposeSessionFrameDidChange, ComposeSessionDidEnd>;

/// A frame to be obeyed, with what it had under "request" to echo in answers; null when it had no number there.
struct LinkRequest {
    LinkFrame frame;
    JSONValue request;
};

/// Why a frame could not be obeyed.
struct LinkError {
    /// A sentence for the other end's log.
    std::string message;
    /// As in LinkRequest.
    JSONValue request;
};

/// Reads one frame's JSON. Costs as much time as the frame is long, so not for the main thread.
[[nodiscard]] Result<LinkRequest, LinkError> readLinkFrame(std::string_view bytes);

/// The answer that tells of an error, short enough for one frame.
[[nodiscard]] std::string writeLinkError(const LinkError& error);

} // namespace quillmate
