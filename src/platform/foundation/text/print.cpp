#include "platform/foundation/text/print.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <poll.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace quillmate
{
namespace
{

std::mutex& outputMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::atomic<int> printDescriptor = STDOUT_FILENO;

iovec vectorOf(std::string_view text)
{
    // writev never writes through iov_base; its type predates const.
    return {const_cast<char*>(text.data()), text.size()};
}

/// One writev in the ordinary case; more only when the system takes a part of the line.
void writeWhole(int descriptor, std::vector<iovec>& parts)
{
    iovec* first = parts.data();
    std::size_t count = parts.size();
    while (count > 0) {
        const ssize_t written = ::writev(descriptor, first, static_cast<int>(count));
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            if (errno == EAGAIN) {
                pollfd waiting{descriptor, POLLOUT, 0};
                ::poll(&waiting, 1, -1);
                continue;
            }
            return; // Nobody reads any more, and there is no second place to say so.
        }
        auto left = static_cast<std::size_t>(written);
        while (count > 0 && left >= first->iov_len) {
            left -= first->iov_len;
            ++first;
            --count;
        }
        if (count > 0) {
            first->iov_base = static_cast<char*>(first->iov_base) + left;
            first->iov_len -= left;
        }
    }
}

} // namespace

void printLine(std::span<const std::string_view> items)
{
    std::vector<iovec> parts;
    parts.reserve(items.size() * 2 + 1);
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            parts.push_back(vectorOf(" "));
        }
        parts.push_back(vectorOf(items[i]));
    }
    parts.push_back(vectorOf("\n"));

    const std::lock_guard lock(outputMutex());
    writeWhole(printDescriptor.load(), parts);
}

void setPrintDescriptor(int descriptor)
{
    const std::lock_guard lock(outputMutex());
    printDescriptor = descriptor;
}

} // namespace quillmate
