#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// `text` with its HTML character references ("&amp;", "&#65;", "&#x41;") resolved, UTF-8. Knows the names of Latin-1
/// and of the signs that mail programs write, also without the semicolon; what it does not know stays as it is. Linear
/// in the size.
std::string withReferencesResolved(std::string_view text);

} // namespace quillmate
