#pragma once

#include <filesystem>

namespace quillmate
{

/// ${XDG_DATA_HOME:-~/.local/share}/quillmate (XDG Base Directory: a relative value counts as unset). Not created here.
[[nodiscard]] std::filesystem::path applicationDataFolder();
/// ${XDG_CACHE_HOME:-~/.cache}/quillmate. Not created here.
[[nodiscard]] std::filesystem::path applicationCacheFolder();
/// Makes the folder and its parents, the folder itself readable by its owner only. False when it cannot be made.
[[nodiscard]] bool makePrivateFolder(const std::filesystem::path& folder);

} // namespace quillmate
