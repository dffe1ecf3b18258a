#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate::localservice
{

/// ASCII letters in lower case, all else as it is.
std::string lowered(std::string_view text);
/// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);
/// Whether the text is a token (RFC 9110, 5.6.2).
bool isToken(std::string_view text);
/// The number that the text is, digits alone; nothing when it is none or too large.
std::optional<std::size_t> number(std::string_view text, int base);

} // namespace quillmate::localservice
