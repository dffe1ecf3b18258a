#include "hosts/link/Frame.h"

#include "base/Descriptors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace quillmate
{

FrameReader::Outcome FrameReader::read(char* target, std::size_t size, std::size_t& got) const
{
    got = 0;
    while (got < size) {
        std::array<pollfd, 2> waiting{{{m_descriptor, POLLIN, 0}, {m_stopDescriptor, POLLIN, 0}}};
        if (::poll(waiting.data(), waiting.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return Outcome::Failed;
        }
        if (waiting[1].revents != 0) {
            return Outcome::Stopped;
        }
        const ssize_t count = ::read(m_descriptor, target + got, size - got);
        if (count < 0) {
            if (errno == EINTR || errno == EAGAIN) {
                continue;
            }
            return Outcome::Failed;
        }
        if (count == 0) {
            return Outcome::End;
        }
        got += static_cast<std::size_t>(count);
    }
    return Outcome::Whole;
}

FrameReader::Next FrameReader::next()
{
    const auto ended = [](Outcome outcome, bool betweenFrames) {
        if (outcome == Outcome::Stopped || (outcome == Outcome::End && betweenFrames)) {
            return Next(std::nullopt);
        }
        return Next::failure(outcome == Outcome::End
                                 ? "the input ended inside a frame"
                                 : "the input cannot be read: " + std::string(std::strerror(errno)));
    };

    std::uint32_t length = 0;
    std::array<char, sizeof length> prefix{};
    std::size_t got = 0;
    if (const Outcome outcome = read(prefix.data(), prefix.size(), got); outcome != Outcome::Whole) {
        return ended(outcome, got == 0);
    }
    std::memcpy(&length, prefix.data(), sizeof length);
    if (length > largestIncomingFrame) {
        return Next::failure("a frame of " + std::to_string(length) + " bytes is over the limit of " +
                             std::to_string(largestIncomingFrame));
    }
    constexpr std::size_t step = 4UL * 1024 * 1024;
    std::string bytes;
    bytes.reserve(length); // Addresses alone: the system gives memory where it is written to.
    while (bytes.size() < length) {
        const std::size_t had = bytes.size();
        bytes.resize(std::min<std::size_t>(length, had + step));
        if (const Outcome outcome = read(bytes.data() + had, bytes.size() - had, got); outcome != Outcome::Whole) {
            return ended(outcome, false);
        }
    }
    return Next(std::move(bytes));
}

bool FrameWriter::write(std::string_view bytes) const
{
    if (bytes.size() > largestOutgoingFrame) {
        return false;
    }
    const std::lock_guard lock(m_mutex);
    const auto length = static_cast<std::uint32_t>(bytes.size());
    return writeWhole(m_descriptor, {{reinterpret_cast<const char*>(&length), sizeof length}, bytes});
}

} // namespace quillmate
