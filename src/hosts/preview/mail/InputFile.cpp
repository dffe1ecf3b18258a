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

constexpr std::size_t pipeChunkBytes = std::size_t{256} * 1024;
// How long a stop request may go unnoticed while a pipe or terminal is silent.
constexpr int pollMilliseconds = 50;

using Reading = Result<std::string, std::string>;

/// Everything to the end of input.
Reading readAll(int descriptor, const std::string& name, const std::stop_token& stop)
{
    std::string bytes;
    std::string chunk(pipeChunkBytes, '\0');
    while (!stop.stop_requested()) {
        // Before a named pipe's first writer a read gives 0 bytes, as at the end; only poll() tells the two apart.
        pollfd waiting{descriptor, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, pollMilliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) {
            continue;
        }
        const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count < 0) {
            return Failure(systemFailure(name, errno));
        }
        if (count == 0) {
            break;
        }
        if (bytes.size() + static_cast<std::size_t>(count) > maximumMessageBytes) {
            return Failure(tooLarge(name));
        }
        bytes.append(chunk, 0, static_cast<std::size_t>(count));
    }
    return bytes;
}

} // namespace

std::string systemFailure(const std::string& name, int errorNumber)
{
    if (errorNumber == ENOENT || errorNumber == ENOTDIR) {
        return name + " does not exist: check the name of the message file.";
    }
    const std::string reason = std::generic_category().message(errorNumber);
    return name + " cannot be read (" + reason + "): make it readable or name another message.";
}

std::string tooLarge(const std::string& name)
{
    return name + " is larger than 256 MiB, the largest message that can be opened: name a smaller message.";
}

InputFile::InputFile(int descriptor, std::string name)
    : m_descriptor(descriptor)
    , m_name(std::move(name))
{
}

InputFile::InputFile(InputFile&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_name(std::move(other.m_name))
    , m_size(other.m_size)
    , m_content(std::move(other.m_content))
{
}

InputFile::~InputFile()
{
    if (m_descriptor > STDIN_FILENO) { // Standard input is not ours to close.
        ::close(m_descriptor);
    }
}

Result<InputFile, std::string> InputFile::open(const std::string& argument, const std::stop_token& stop)
{
    const bool isInput = argument == "-";
    // Opening a named pipe would otherwise wait for its first writer, deaf to any request to stop.
    const int descriptor =
        isInput ? STDIN_FILENO : ::open(argument.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    InputFile file(descriptor, isInput ? "The message on standard input" : argument);
    struct stat status {
    };
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) {
        return Failure(systemFailure(file.m_name, errno));
    }
    if (S_ISREG(status.st_mode) && !isInput) {
        file.m_size = static_cast<std::uint64_t>(status.st_size);
        return file;
    }
    Reading content = readAll(descriptor, file.m_name, stop);
    if (!content) {
        return Failure(content.error());
    }
    file.m_content = std::make_shared<const std::string>(std::move(content).value());
    file.m_size = file.m_content->size();
    return file;
}

Reading InputFile::readAt(std::uint64_t offset, std::size_t length) const
{
    if (m_content != nullptr) {
        return m_content->substr(std::min<std::size_t>(offset, m_content->size()), length);
    }
    std::string bytes;
    bytes.resize(offset < m_size ? static_cast<std::size_t>(std::min<std::uint64_t>(length, m_size - offset)) : 0);
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count =
            ::pread(m_descriptor, bytes.data() + filled, bytes.size() - filled, static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return Failure(systemFailure(m_name, errno));
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace quillmate
