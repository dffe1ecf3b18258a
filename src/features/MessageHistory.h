#pragma once

#include "base/JSON.h"
#include "features/Message.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmate
{

/// The messages of a conversation, oldest first, and their stored form: a JSON array of one object per message. What
/// has been encoded once is kept, so that a message more costs its own length and not the conversation's.
class MessageHistory
{
public:
    MessageHistory() = default;
    explicit MessageHistory(std::vector<Message> messages)
        : m_messages(std::move(messages))
    {
    }

    /// All or nothing: every element needs a valid "id" and "isSentByCurrentUser"; "text" and "response" are texts, or
    /// null or missing when absent; other keys are ignored.
    static Result<MessageHistory, JSONError> decode(std::string_view bytes);

    [[nodiscard]] const std::vector<Message>& messages() const { return m_messages; }
    /// Whether two histories of the same messages also say the same.
    [[nodiscard]] bool hasSameTexts(const MessageHistory& other) const;
    void append(Message message) { m_messages.push_back(std::move(message)); }
    /// Appends the messages of another history that are not in this one, by their ids.
    void appendUnknown(const MessageHistory& other);
    /// The stored form, which lives until the next call. A large one ends in blanks, which make room: while it keeps
    /// its size, only the pages with what is new are written. Fails on a text that is not UTF-8.
    Result<std::string_view, JSONError> encode();
    /// Whether the stored form in these bytes holds nothing but the first of the messages that have been encoded here.
    [[nodiscard]] bool continues(std::string_view stored) const;

private:
    std::vector<Message> m_messages;
    std::string m_encoded;
    std::size_t m_length = 0; // The part of it that is the array up to the last message, without its end.
    std::size_t m_encodedCount = 0;
};

} // namespace quillmate
