#include "base/Descriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/uio.h>
#include <unistd.h>

namespace quillmate
{

void openMissingStandardDescriptors()
{
    int opened = 0;
    do {
        opened = ::open("/dev/null", O_RDWR); // Gets the lowest number that is free.
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        ::close(opened);
    }
}

bool writeWhole(int descriptor, const std::vector<std::string_view>& parts)
{
    std::vector<iovec> left;
    left.reserve(parts.size());
    for (const std::string_view part : parts) {
        // writev never writes through iov_base; its type predates const.
        left.push_back({const_cast<char*>(part.data()), part.size()});
    }
    iovec* first = left.data();
    std::size_t count = left.size();
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
            return false;
        }
        auto taken = static_cast<std::size_t>(written);
        while (count > 0 && taken >= first->iov_len) {
            taken -= first->iov_len;
            ++first;
            --count;
        }
        if (count > 0) {
            first->iov_base = static_cast<char*>(first->iov_base) + taken;
            first->iov_len -= taken;
        }
    }
    return true;
}

} // namespace quillmate
