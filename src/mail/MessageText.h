#pragma once

#include "mail/TextParts.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// The text that a person reads of a message.
struct MessageText {
    std::string text;       ///< UTF-8, bare line feeds, no blank lines at either end
    bool truncated = false; ///< the message goes on after `text`

    bool operator==(const MessageText&) const = default;
};

/// The text of a message's parts in their order: of alternatives the plain one, unless it only points to the HTML one;
/// a message within it, or another kind of text, only where nothing else was written. HTML is turned into text. At most
/// `limit` bytes, and of HTML at most 2 MiB are read. Empty when there is no text, or none that can be read.
MessageText textOfParts(const std::vector<TextPart>& parts, std::size_t limit);

/// The text of a message whose source may be its beginning only.
MessageText textOfMessage(std::string_view source, std::size_t limit);

/// The text of a message of which only what stands after the header block is there, or, as its fields show, the whole.
MessageText textOfBody(std::string_view body, std::size_t limit);

/// The markup of the first HTML part, UTF-8, at most 2 MiB; empty without one.
std::string htmlOfParts(const std::vector<TextPart>& parts);

} // namespace quillmate
