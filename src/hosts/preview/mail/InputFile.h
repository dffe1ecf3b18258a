#pragma once

#include "base/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>

namespace quillmate
{

/// The largest single message that is read, in bytes: what fits one frame of the host link.
inline constexpr std::uint64_t maximumMessageBytes = std::uint64_t{256} * 1024 * 1024;

/// A file that messages are read from, or what a pipe or terminal gave. Not for two threads at once.
class InputFile
{
public:
    /// What the argument of a command line names; "-" is standard input. What cannot be read at any place, a pipe as a
    /// rule, is read to its end here, at most maximumMessageBytes of it, and that soon after `stop` was requested:
    /// nothing may ever come.
    static Result<InputFile, std::string> open(const std::string& argument, const std::stop_token& stop = {});

    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&&) = delete;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    /// What the user called it, for sentences.
    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// What was read of a pipe; null for a file that can be opened again.
    [[nodiscard]] const std::shared_ptr<const std::string>& content() const { return m_content; }

    /// Up to `length` bytes from `offset`; fewer only at the end.
    [[nodiscard]] Result<std::string, std::string> readAt(std::uint64_t offset, std::size_t length) const;

private:
    InputFile(int descriptor, std::string name);

    int m_descriptor = -1;
    std::string m_name;
    std::uint64_t m_size = 0;
    std::shared_ptr<const std::string> m_content;
};

/// The sentence for a failed system call on `name`.
std::string systemFailure(const std::string& name, int errorNumber);
std::string tooLarge(const std::string& name);

} // namespace quillmate
