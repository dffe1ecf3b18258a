#pragma once

#include <optional>
#include <string>

namespace quillmate::localservice
{

/// Makes the folder (and those above it) where it is missing and takes every right on it but the owner's (0700).
/// Returns what went wrong, or nothing.
std::optional<std::string> makePrivateFolder(const std::string& folder);

/// Replaces a file whole: another process, or the next start after a crash, finds the old bytes or the new, never a
/// part. Returns what went wrong, or nothing.
std::optional<std::string> writeFileWhole(const std::string& path, const std::string& bytes, unsigned mode);

/// A file's bytes; nothing when it cannot be read.
std::optional<std::string> readFile(const std::string& path);

/// Holds a lock on DIR/lock while it lives, so that two starts do not make certificates at the same time.
class FolderLock
{
public:
    explicit FolderLock(const std::string& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int m_descriptor = -1;
};

} // namespace quillmate::localservice
