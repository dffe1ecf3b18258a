#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmate
{

/// The text that a person reads of a message.
struct DisplayText {
    std::string text;       ///< UTF-8, bare line feeds, no blank lines at either end
    bool truncated = false; ///< the message goes on after `text`

    bool operator==(const DisplayText&) const = default;
};

class MessageParts;

/// How many bytes of markup are read for each byte of text that is wanted; markup is mostly larger than the text it
/// holds.
inline constexpr std::size_t markupPerText = 8;

/// Decodes the message's first text part: plain text where there is one, else HTML turned into text. Attachments are
/// passed over. At most `limit` bytes; only so much of a part is decoded. A message without text gives an empty text.
/// `source` may be the beginning of a message only.
DisplayText displayTextOf(std::string_view source, std::size_t limit);
DisplayText displayTextOf(const MessageParts& parts, std::size_t limit);

} // namespace quillmate
