#include "localservice/PrivateFiles.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmate::localservice
{

namespace
{

std::string failure(const std::string& what, const std::string& path)
{
    return what + ' ' + path + ": " + std::strerror(errno);
}

bool writeAll(int descriptor, const std::string& bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return fsync(descriptor) == 0;
}

} // namespace

std::optional<std::string> makePrivateFolder(const std::string& folder)
{
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), error);
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        return failure("cannot make the folder", folder);
    }
    if (!std::filesystem::is_directory(folder, error)) {
        return folder + " is not a folder";
    }
    if (chmod(folder.c_str(), 0700) != 0) {
        return failure("cannot make private the folder", folder);
    }
    return std::nullopt;
}

std::optional<std::string> writeFileWhole(const std::string& path, const std::string& bytes, unsigned mode)
{
    const std::string temporary = path + ".new";
    unlink(temporary.c_str());
    const int descriptor = open(temporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    if (descriptor < 0) {
        return failure("cannot write", temporary);
    }
    const bool written = fchmod(descriptor, mode) == 0 && writeAll(descriptor, bytes);
    const std::string reason = written ? std::string() : failure("cannot write", temporary);
    close(descriptor);
    if (!written) {
        unlink(temporary.c_str());
        return reason;
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        return failure("cannot replace", path);
    }
    return std::nullopt;
}

std::optional<std::string> readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

FolderLock::FolderLock(const std::string& folder)
    : m_descriptor(open((folder + "/lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600))
{
    if (m_descriptor >= 0) {
        while (flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
}

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

} // namespace quillmate::localservice
