#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// The UTF-8 of a header value: its encoded words (RFC 2047) decoded, other bytes taken as those of no charset
/// (`utf8Of`). Blanks between two encoded words go; a character that is cut between two words of one charset is whole
/// again. What only looks like an encoded word stays as it is, and so does what follows 64 changes of the charset.
/// Linear in the size.
std::string decodeHeaderText(std::string_view value);

} // namespace quillmate
