#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

/// What a gzip file of one member (RFC 1952) holds. Absent when it is broken, cut short or followed by something, or
/// holds more than `longest` bytes.
[[nodiscard]] std::optional<std::string> gunzip(std::string_view file, std::size_t longest);

} // namespace quillmate
