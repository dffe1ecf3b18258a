#pragma once

#include <filesystem>

namespace quillmate
{

/// The user's home: HOME, or what the system's list of users says.
[[nodiscard]] std::filesystem::path homeFolder();
/// ${XDG_DATA_HOME:-~/.local/share}/quillmate (XDG Base Directory: a relative value counts as unset). Not created here.
[[nodiscard]] std::filesystem::path applicationDataFolder();
/// ${XDG_CONFIG_HOME:-~/.config}/quillmate. Not created here.
[[nodiscard]] std::filesystem::path applicationConfigurationFolder();
/// ${XDG_CACHE_HOME:-~/.cache}/quillmate. Not created here.
[[nodiscard]] std::filesystem::path applicationCacheFolder();

} // namespace quillmate
