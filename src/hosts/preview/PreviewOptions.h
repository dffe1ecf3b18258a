#pragma once

#include "platform/foundation/Result.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// What the command line asks of the preview Mail host.
struct PreviewOptions {
    enum class Task { Run, Help, Version };
    enum class Service { Local, Remote };

    Task task = Task::Run;
    /// Unset when the command line leaves it to the surroundings.
    std::optional<Service> service = std::nullopt;
    std::optional<int> reply = std::nullopt; ///< number of the message to reply to at once, from 1
    bool newMessage = false;
    std::optional<std::string> screenshotFile = std::nullopt;
    std::vector<std::string> messages = {};

    /// `arguments` without the program's name. The failure is one sentence that names the argument and says what to do.
    static Result<PreviewOptions, std::string> parse(std::span<const std::string_view> arguments);

    bool operator==(const PreviewOptions&) const = default;
};

/// What is wrong with asking for the reply to that message among `count`, one sentence; empty when nothing is.
[[nodiscard]] std::string replyRefusal(int reply, std::size_t count);

/// What --help prints.
[[nodiscard]] std::string_view previewHelp();

} // namespace quillmate
