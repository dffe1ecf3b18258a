#pragma once

#include <optional>
#include <string_view>

namespace quillmate
{

/// The body of a message source, as a view into it: what follows the first two consecutive line feeds, without the
/// white space and line breaks at its ends. Absent when the source is not valid UTF-8 or has no such pair. Nothing is
/// decoded: transfer encodings and all parts are included. Any thread.
[[nodiscard]] std::optional<std::string_view> extractBody(std::string_view rawData);

} // namespace quillmate
