#pragma once

#include <optional>
#include <string>

namespace quillmate
{

/// The extension's version as its bundle tells it, read once; absent when the bundle does not.
[[nodiscard]] const std::optional<std::string>& appVersion();

} // namespace quillmate
