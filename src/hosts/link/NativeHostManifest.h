#pragma once

#include "base/Result.h"

#include <filesystem>
#include <string>

namespace quillmate
{

// The file by which a mail application finds this program for its add-on: a native messaging manifest of WebExtensions.

/// Either a sentence that tells what was done, or one that tells why nothing was.
using NativeHostOutcome = Result<std::string, std::string>;

/// Where the mail application looks for a user's manifests: ~/.mozilla/native-messaging-hosts. Not created here.
[[nodiscard]] std::filesystem::path nativeHostFolder();

/// Writes the manifest that leads the add-on to `program` (absolute), whole or not at all, in place of one of ours.
/// Refused where the file there is not ours, and for a path that is not UTF-8, which JSON cannot hold (RFC 8259,
/// section 8.1). Makes the folder, readable by its owner only.
[[nodiscard]] NativeHostOutcome installNativeHost(const std::filesystem::path& folder,
                                                  const std::filesystem::path& program);

/// Removes the manifest if it is for our add-on; one that is not there is no failure.
[[nodiscard]] NativeHostOutcome removeNativeHost(const std::filesystem::path& folder);

} // namespace quillmate
