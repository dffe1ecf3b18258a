#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// The UTF-8 of bytes in the named charset (RFC 2045, 2231 names, any case). What cannot be decoded becomes a
/// replacement character. Without a charset, or with one that is not known, the bytes are UTF-8 if they can be, else
/// Latin-1.
std::string utf8Of(const std::string& bytes, std::string_view charset);

} // namespace quillmate
