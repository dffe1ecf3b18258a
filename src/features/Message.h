#pragma once

#include "platform/foundation/text/UUID.h"

#include <optional>
#include <string>
#include <utility>

namespace quillmate
{

/// One entry of a conversation: what the user wrote, or what the assistant answered.
struct Message {
    UUID id;
    /// Present on the user's entries.
    std::optional<std::string> text;
    /// Present on the assistant's entries.
    std::optional<std::string> response;
    bool isSentByCurrentUser = false;

    /// A new entry of the user's.
    static Message question(std::string text) { return {UUID::random(), std::move(text), std::nullopt, true}; }
    /// A new entry of the assistant's.
    static Message answer(std::string response) { return {UUID::random(), std::nullopt, std::move(response), false}; }

    /// The entry's identity alone: the same one, whatever it says.
    bool operator==(const Message& other) const { return id == other.id; }
};

} // namespace quillmate
