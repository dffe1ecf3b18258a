#pragma once

#include "state/SummarizedResponse.h"

#include <string>

namespace quillmate
{

// What the client makes of the replies; SummarizedResponse stands with the state that keeps it.

/// A generated reply, with the id of the message that it answers.
struct GeneratedResponse {
    std::string messageId;
    std::string response;
    bool operator==(const GeneratedResponse&) const = default;
};

/// A conversation that the service has opened.
struct ChatStartResponse {
    std::string assistantId;
    std::string threadId;
    bool operator==(const ChatStartResponse&) const = default;
};

} // namespace quillmate
