#include "base/PrivateFiles.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quillmate
{
namespace
{

Failure<std::string> failed(const char* what, const std::filesystem::path& path)
{
    return Failure(std::string(what) + ' ' + path.string() + ": " + std::strerror(errno));
}

bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    // On the disk before it has the name, so that a loss of power leaves the old file or the new one.
    return ::fsync(descriptor) == 0;
}

} // namespace

Result<void, std::string> makeFolder(const std::filesystem::path& folder)
{
    std::filesystem::path made;
    for (const auto& part : folder) {
        made /= part;
        const int reason = ::mkdir(made.c_str(), S_IRWXU) == 0 ? 0 : errno;
        std::error_code unknown; // Where it cannot be told, it is none.
        if (reason != 0 && !std::filesystem::is_directory(made, unknown)) {
            errno = reason;
            return failed("cannot make the folder", made);
        }
    }
    return {};
}

Result<void, std::string> makePrivateFolder(const std::filesystem::path& folder)
{
    if (auto made = makeFolder(folder); !made) {
        return made;
    }
    // One that is there already may have been made by another program or with another mask.
    if (::chmod(folder.c_str(), S_IRWXU) != 0) {
        return failed("cannot make private the folder", folder);
    }
    return {};
}

Result<void, std::string> writeFileWhole(const std::filesystem::path& file, std::string_view bytes, unsigned mode)
{
    // QSaveFile opens a new file with whatever rights the process's mask leaves; this one is the owner's from the
    // start.
    std::string temporary = file.string() + ".XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) {
        return failed("cannot write in", file.parent_path());
    }
    bool written = writeAll(descriptor, bytes) && ::fchmod(descriptor, mode) == 0;
    written = ::close(descriptor) == 0 && written;
    if (written && std::rename(temporary.c_str(), file.c_str()) == 0) {
        return {};
    }
    auto failure = failed("cannot write", file);
    ::unlink(temporary.c_str());
    return failure;
}

std::optional<std::string> readFile(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string bytes;
    std::array<char, 65536> piece{};
    // A folder can be opened, and fails at the first byte; only this way of reading makes a state of that.
    while (stream.read(piece.data(), piece.size()) || stream.gcount() > 0) {
        bytes.append(piece.data(), static_cast<std::size_t>(stream.gcount()));
    }
    return stream.is_open() && !stream.bad() ? std::optional(std::move(bytes)) : std::nullopt;
}

FolderLock::FolderLock(const std::filesystem::path& folder, const char* name)
    : m_descriptor(::open((folder / name).c_str(), O_CREAT | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR))
{
    if (m_descriptor >= 0) {
        while (::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
}

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

} // namespace quillmate
