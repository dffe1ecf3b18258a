#pragma once

#include "base/Result.h"
#include "hosts/startup/CommandLine.h"
#include "hosts/startup/ServiceChoice.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quillmate
{

/// What the command line asks of the preview Mail host.
struct PreviewOptions {
    /// Unset when the command line leaves it to the surroundings.
    std::optional<ServiceChoice> service = std::nullopt;
    std::optional<int> reply = std::nullopt; ///< number of the message to reply to at once, from 1
    bool newMessage = false;
    std::optional<std::string> screenshotFile = std::nullopt;
    std::vector<std::string> messages = {};

    /// From what `previewOptions` say. The failure is one sentence that names the argument and says what to do.
    static Result<PreviewOptions, std::string> from(const CommandLine& line);

    bool operator==(const PreviewOptions&) const = default;
};

/// The options that the preview takes.
[[nodiscard]] std::span<const CommandLine::Option> previewOptions();

/// Whether the reply to that message can be asked for among `count`; the failure is one sentence.
Result<void, std::string> checkReply(int reply, std::size_t count);

/// What --help prints.
[[nodiscard]] const char* previewHelp();

} // namespace quillmate
