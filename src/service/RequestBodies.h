#pragma once

#include "platform/foundation/JSON.h"

#include <string>

namespace quillmate
{

constexpr auto pluginSource = "plugin_apple";
/// The wire format's own version, not the extension's.
constexpr auto pluginVersion = "v1.0.0";

// The bodies of the POST requests. `encode` writes every member, all texts, in the order of the wire; it fails on a
// text that is not UTF-8. `description` shows every member's name and value on one line, for a diagnostic, and never
// fails.

struct SummarizeRequestBody {
    /// Text of the replied-to message, or what the user pasted in its place.
    std::string content;
    /// The signed-in user's address.
    std::string email;
    std::string pluginSource = quillmate::pluginSource;
    std::string pluginVersion = quillmate::pluginVersion;

    [[nodiscard]] Result<std::string, JSONError> encode() const;
    bool operator==(const SummarizeRequestBody&) const = default;
};

struct GenerateResponseBody {
    /// Id of the replied-to message, empty when unknown.
    std::string messageId;
    std::string content;
    std::string email;
    std::string pluginSource = quillmate::pluginSource;
    std::string pluginVersion = quillmate::pluginVersion;

    [[nodiscard]] Result<std::string, JSONError> encode() const;
    bool operator==(const GenerateResponseBody&) const = default;
};

struct TrainingDataBody {
    std::string email;
    /// Text of the replied-to message, empty when unknown.
    std::string question;
    /// The reply that is shown.
    std::string answer;
    std::string pluginSource = quillmate::pluginSource;
    std::string pluginVersion = quillmate::pluginVersion;

    [[nodiscard]] Result<std::string, JSONError> encode() const;
    [[nodiscard]] std::string description() const;
    bool operator==(const TrainingDataBody&) const = default;
};

struct ChatStartBody {
    std::string email;
    std::string pluginSource = quillmate::pluginSource;
    std::string pluginVersion = quillmate::pluginVersion;
    /// Text of the replied-to message; goes last on the wire.
    std::string emailContent;

    [[nodiscard]] Result<std::string, JSONError> encode() const;
    [[nodiscard]] std::string description() const;
    bool operator==(const ChatStartBody&) const = default;
};

struct ChatBody {
    std::string assistantId;
    std::string threadId;
    std::string email;
    /// The newest message that the user sent.
    std::string content;
    std::string pluginSource = quillmate::pluginSource;
    std::string pluginVersion = quillmate::pluginVersion;

    [[nodiscard]] Result<std::string, JSONError> encode() const;
    bool operator==(const ChatBody&) const = default;
};

} // namespace quillmate
