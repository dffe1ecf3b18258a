#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// The UTF-8 of a header value: its encoded words (RFC 2047) decoded, other bytes taken as UTF-8 or, where that cannot
/// be, as Latin-1. Blanks between two encoded words go; a character that is cut between two words of one charset is
/// whole again. What only looks like an encoded word stays as it is. Linear in the size.
std::string decodeHeaderText(std::string_view value);

} // namespace quillmate
