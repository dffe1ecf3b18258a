#pragma once

#include <string>
#include <string_view>

namespace quillmate
{

/// The UTF-8 of bytes in the named charset (RFC 2045, 2231 names, any case). What cannot be decoded becomes a
/// replacement character. Without a charset, with one that is not known, and with one that is mostly wrong when it is
/// said (UTF-8, US-ASCII), the bytes are ISO-2022-JP where they switch to it, UTF-8 where most of them can be, else
/// Windows-1252.
std::string utf8Of(const std::string& bytes, std::string_view charset);

} // namespace quillmate
