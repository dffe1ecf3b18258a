#pragma once

#include <optional>
#include <string>

namespace quillmate
{

/// What is known of the text of a panel's message.
struct MessageContent {
    /// Whether the message is the one that is being replied to now; another compose window may have begun since.
    bool isCurrent = false;
    /// What the shared record holds while it is the current one, taken in one look with the id; else the text kept for
    /// it, an empty one counting as none. Messages without an id cannot be told apart, so nothing kept counts for them.
    std::optional<std::string> text;

    /// By the id that the panel was made for. Any thread.
    static MessageContent ofMessage(const std::optional<std::string>& messageId);
};

/// Keeps the text for the message, in the settings store.
void storeFallbackContent(const std::optional<std::string>& messageId, const std::string& text);

/// The text kept for the message.
[[nodiscard]] std::optional<std::string> loadFallbackContent(const std::optional<std::string>& messageId);

} // namespace quillmate
