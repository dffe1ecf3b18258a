#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// The readable text of an HTML mail body, UTF-8 in and out: blocks become lines, list items get a dash, quotations
/// (<blockquote>) are marked with "> " as in plain text mail; scripts, styles, comments and the head are left out, and
/// character references are resolved. Nothing is fetched. Never fails: broken markup reads as far as it makes sense.
/// Linear in the size of the markup.
std::string textOfHtml(std::string_view html);

/// The UTF-8 text of a character reference's inside ("amp", "#65", "#x41"), empty when it is none that is known.
std::string characterReference(std::string_view name);

} // namespace quillmate
