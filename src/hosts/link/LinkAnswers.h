#pragma once

#include "hosts/link/LinkFrame.h"
#include "platform/mailkit/MEHandlers.h"

#include <optional>
#include <string>

namespace quillmate
{

// The frames that this process sends, each as JSON. `request` is the number of the question that is answered. Bytes are
// written as base64 (RFC 4648).

[[nodiscard]] std::string writeMessageActionDecision(const JSONNumber& request,
                                                     const std::optional<MEMessageActionDecision>& decision);
[[nodiscard]] std::string writeContentRules(const JSONNumber& request, const std::string& rules);
[[nodiscard]] std::string writeEncodingStatus(const JSONNumber& request, const MEOutgoingMessageEncodingStatus& status);
[[nodiscard]] std::string writeEncodingResult(const JSONNumber& request, const MEMessageEncodingResult& result);
[[nodiscard]] std::string writeDecodedMessage(const JSONNumber& request,
                                              const std::optional<MEDecodedMessage>& message);

/// The answer that tells of an error, short enough for one frame.
[[nodiscard]] std::string writeLinkError(const LinkError& error);

} // namespace quillmate
