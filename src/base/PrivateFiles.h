#pragma once

#include "base/Result.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

// The failures are one sentence each, which names the file or the folder and gives the system's reason.

/// Makes the folder and those above it where they are missing, for the owner alone (0700, as the XDG Base Directory
/// rules want it).
Result<void, std::string> makeFolder(const std::filesystem::path& folder);
/// Does that, and takes every other right on the folder itself.
Result<void, std::string> makePrivateFolder(const std::filesystem::path& folder);

/// Replaces a file whole: another process, or the next start after a crash, finds the old bytes or the new, never a
/// part. The file has the mode when it has the name, and nobody but the owner can open it before.
Result<void, std::string> writeFileWhole(const std::filesystem::path& file, std::string_view bytes, unsigned mode);

/// A file's bytes; nothing when it cannot be read.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file);

/// Holds a lock on a file in the folder while it lives, so that two processes do not do the same work there at the same
/// time. Without the file, because nothing can be written there, it holds nothing.
class FolderLock
{
public:
    explicit FolderLock(const std::filesystem::path& folder, const char* name = "lock");
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int m_descriptor = -1;
};

} // namespace quillmate
