#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmate
{

/// The text that a person reads of an HTML mail body, UTF-8 in and out: blocks become lines, items of lists get a dash,
/// what is quoted (<blockquote>, and what mail programs mark as the quoted message) stands behind "> " as in plain
/// text. The head, scripts, styles, comments and what the markup hides are left out, unless nothing else is there. Ends
/// soon after `limit` bytes. Nothing is fetched. Never fails: broken markup reads as far as it makes sense, and what is
/// nested deeper than 400 elements as if it stood at that depth. Linear in the size of the markup.
std::string textOfHtml(std::string_view html, std::size_t limit = std::string_view::npos);

/// Whether a text of unknown type is HTML.
bool looksLikeHtml(std::string_view text);

} // namespace quillmate
