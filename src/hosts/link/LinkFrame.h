#pragma once

#include "base/JSON.h"
#include "platform/mailkit/MEMessage.h"

#include <memory>
#include <optional>
#include <string>
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

// Questions, each answered by a frame that bears the question's number. Their messages are never null.

struct DecideActionForMessage {
    std::shared_ptr<const MEMessage> message;
};
struct ContentRulesJSON {
};
struct GetEncodingStatus {
    std::shared_ptr<const MEMessage> message;
};
struct EncodeMessage {
    std::shared_ptr<const MEMessage> message;
};
struct DecodedMessage {
    /// The bytes that would be decoded.
    std::string data;
};

/// Which version this program is; the add-on was perhaps installed with another one.
struct ProgramVersion {
};
/// Whose service this program asks, and whether that can be chosen.
struct Service {
};
/// The user chooses another service, for the programs that start from now on.
struct ChooseService {
    std::string choice;
};

struct LinkQuestion {
    /// To be echoed in the answer.
    JSONNumber request;
    std::variant<DecideActionForMessage, ContentRulesJSON, GetEncodingStatus, EncodeMessage, DecodedMessage,
                 ProgramVersion, Service, ChooseService>
        asked;
};

using LinkFrame = std::variant<ComposeSessionDidBegin, ViewControllerForSession, ComposeSessionFrameDidChange,
                               ComposeSessionDidEnd, LinkQuestion>;

/// A frame to be obeyed, with what it had under "request" to echo in an error; null when it had no number there.
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

/// Reads one frame's JSON. A surrogate without its other half, as JavaScript's texts may have, is read as U+FFFD. Costs
/// as much time as the frame is long, so not for the main thread.
[[nodiscard]] Result<LinkRequest, LinkError> readLinkFrame(std::string bytes);

} // namespace quillmate
