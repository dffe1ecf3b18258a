#pragma once

#include "hosts/preview/mail/MailFailure.h"
#include "platform/foundation/Result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace quillmate
{

/// The largest single message that is read, in bytes: what fits one frame of the host link.
inline constexpr std::uint64_t maximumMessageBytes = std::uint64_t{256} * 1024 * 1024;

/// A file, pipe or terminal that messages are read from. Not for two threads at once.
class InputFile
{
public:
    /// Standard input, which is left open afterwards.
    static InputFile standardInput();
    /// Does not wait for the first writer of a named pipe; readAll does.
    static Result<InputFile, MailFailure> open(const std::string& path);

    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&&) = delete;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    /// What the user called it, for sentences.
    [[nodiscard]] const std::string& name() const { return m_name; }
    /// Whether it has a size and can be read at any place.
    [[nodiscard]] bool isRegular() const { return m_size.has_value(); }
    /// Bytes of a regular file, 0 for anything else.
    [[nodiscard]] std::uint64_t size() const { return m_size.value_or(0); }

    /// Up to `length` bytes from `offset` of a regular file; fewer only where the file ends.
    [[nodiscard]] Result<std::string, MailFailure> readAt(std::uint64_t offset, std::size_t length) const;
    /// Everything from here to the end, at most maximumMessageBytes; ends with Stopped soon after `stop` was requested,
    /// also while nothing arrives.
    [[nodiscard]] Result<std::string, MailFailure> readAll(const std::stop_token& stop) const;

private:
    InputFile(int descriptor, bool owned, std::string name, std::optional<std::uint64_t> size);

    int m_descriptor = -1;
    bool m_owned = false;
    std::string m_name;
    std::optional<std::uint64_t> m_size;
};

/// The sentence for a failed system call on `name`.
MailFailure systemFailure(const std::string& name, int errorNumber);
MailFailure tooLarge(const std::string& name);

} // namespace quillmate
