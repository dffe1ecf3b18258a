#pragma once

#include "hosts/preview/mail/MimeLibrary.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmate
{

/// The text parts of a message, found once and decoded as they are asked for. Attachments are passed over. Not for two
/// threads at once.
class MessageParts
{
public:
    struct Content {
        std::string text; ///< UTF-8
        bool cut = false; ///< the part goes on after `text`
    };

    /// `source` outlives this object; it may be the beginning of a message only.
    explicit MessageParts(std::string_view source);
    MessageParts(const MessageParts&) = delete;
    MessageParts& operator=(const MessageParts&) = delete;

    [[nodiscard]] bool hasPlain() const { return m_plain != nullptr; }
    [[nodiscard]] bool hasHtml() const { return m_html != nullptr; }
    /// The first part of the kind with its encodings undone, at most `limit` bytes of it and a little more; empty
    /// without one.
    [[nodiscard]] Content plain(std::size_t limit) const;
    [[nodiscard]] Content html(std::size_t limit) const;

private:
    void find(GMimeObject* object, int depth);

    GByteArray m_bytes;
    ObjectPointer<GMimeStream> m_stream;
    ObjectPointer<GMimeMessage> m_message;
    GMimePart* m_plain = nullptr; // Both are the message's.
    GMimePart* m_html = nullptr;
};

} // namespace quillmate
