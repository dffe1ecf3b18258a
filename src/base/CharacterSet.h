#pragma once

#include <string_view>

namespace quillmate
{

/// The text without the white space and line breaks at its two ends, as a view into the same bytes. The set is U+0009
/// to U+000D, U+0020, U+0085, U+00A0, U+1680, U+2000 to U+200B, U+2028, U+2029, U+202F, U+205F and U+3000. The text
/// must be valid UTF-8. Costs only the bytes that it drops.
[[nodiscard]] std::string_view trimmingWhitespacesAndNewlines(std::string_view text);

/// Whether the bytes are valid UTF-8 (RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF).
[[nodiscard]] bool isValidUTF8(std::string_view bytes);

} // namespace quillmate
