#include "hosts/preview/mail/InputFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillmate
{
namespace
{

constexpr std::size_t chunkBytes = std::size_t{256} * 1024;
// How long a stop request may go unnoticed while a pipe or terminal is silent.
constexpr int pollMilliseconds = 50;

MailFailure stopped(const std::string& name)
{
    return {MailFailure::Kind::Stopped, "Reading " + name + " was stopped before its end."};
}

std::optional<std::uint64_t> regularSize(int descriptor)
{
    struct stat status {
    };
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

} // namespace

MailFailure systemFailure(const std::string& name, int errorNumber)
{
    if (errorNumber == ENOENT || errorNumber == ENOTDIR) {
        return {MailFailure::Kind::Missing, name + " does not exist: check the name of the message file."};
    }
    const std::string reason = std::generic_category().message(errorNumber);
    return {MailFailure::Kind::Unreadable,
            name + " cannot be read (" + reason + "): make it readable or name another message."};
}

MailFailure tooLarge(const std::string& name)
{
    return {MailFailure::Kind::TooLarge, name +
                                             " is larger than 256 MiB, the largest message that can be opened: name a "
                                             "smaller message."};
}

InputFile::InputFile(int descriptor, bool owned, std::string name, std::optional<std::uint64_t> size)
    : m_descriptor(descriptor)
    , m_owned(owned)
    , m_name(std::move(name))
    , m_size(size)
{
}

InputFile::InputFile(InputFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_owned(std::exchange(other.m_owned, false))
    , m_name(std::move(other.m_name))
    , m_size(other.m_size)
{
}

InputFile::~InputFile()
{
    if (m_owned) {
        ::close(m_descriptor);
    }
}

InputFile InputFile::standardInput()
{
    return {STDIN_FILENO, false, "The message on standard input", std::nullopt};
}

Result<InputFile, MailFailure> InputFile::open(const std::string& path)
{
    // Opening a named pipe would otherwise wait for its first writer, deaf to any request to stop.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) {
        return Result<InputFile, MailFailure>::failure(systemFailure(path, errno));
    }
    return InputFile(descriptor, true, path, regularSize(descriptor));
}

Result<std::string, MailFailure> InputFile::readAt(std::uint64_t offset, std::size_t length) const
{
    std::string bytes;
    bytes.resize(offset < size() ? static_cast<std::size_t>(std::min<std::uint64_t>(length, size() - offset)) : 0);
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count =
            ::pread(m_descriptor, bytes.data() + filled, bytes.size() - filled, static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return Result<std::string, MailFailure>::failure(systemFailure(m_name, errno));
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

Result<std::string, MailFailure> InputFile::readAll(const std::stop_token& stop) const
{
    using Reading = Result<std::string, MailFailure>;
    std::string bytes;
    std::string chunk(chunkBytes, '\0');
    while (true) {
        if (stop.stop_requested()) {
            return Reading::failure(stopped(m_name));
        }
        // Before a named pipe's first writer a read gives 0 bytes, as at the end; only poll() tells the two apart.
        pollfd waiting{m_descriptor, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, pollMilliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) {
            continue;
        }
        const ssize_t count = ::read(m_descriptor, chunk.data(), chunk.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count < 0) {
            return Reading::failure(systemFailure(m_name, errno));
        }
        if (count == 0) {
            return bytes;
        }
        if (bytes.size() + static_cast<std::size_t>(count) > maximumMessageBytes) {
            return Reading::failure(tooLarge(m_name));
        }
        bytes.append(chunk, 0, static_cast<std::size_t>(count));
    }
}

} // namespace quillmate
