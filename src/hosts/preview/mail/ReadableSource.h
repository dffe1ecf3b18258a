#pragma once

#include <optional>
#include <string>

namespace quillmate
{

/// A message's source, with bare line feeds, in the form in which its text can be read without decoding: a single part
/// of text in UTF-8 under a header that says so, all else of the header as it was; one of several parts as it is.
/// Nothing for a message that only the holder of a key can read. Linear in the size.
std::optional<std::string> readableSource(std::string source);

} // namespace quillmate
