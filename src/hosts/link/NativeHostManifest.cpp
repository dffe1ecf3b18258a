#include "hosts/link/NativeHostManifest.h"

#include "platform/foundation/JSON.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmate
{
namespace
{

constexpr auto hostName = QUILLMATE_NATIVE_HOST;
constexpr auto addonId = QUILLMATE_ADDON_ID;

using Failure = std::string; // Empty when there is none.

std::filesystem::path manifestIn(const std::filesystem::path& folder)
{
    return folder / (std::string(hostName) + ".json");
}

Failure failed(const std::string& what, const std::filesystem::path& path)
{
    return "cannot " + what + " " + path.string() + ": " + std::strerror(errno);
}

/// What is in the manifest's place.
struct Found {
    enum class Owner { Nobody, Ours, SomebodyElse, Unreadable } owner = Owner::Nobody;
    /// Whose it is, or why it could not be read; a sentence's end.
    std::string detail;
};

/// Writes all of it; false with errno set.
bool writeWhole(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

/// Reads the whole file; false with errno set.
bool readWhole(const std::filesystem::path& file, std::string& bytes)
{
    // A manifest is shorter than a page; what reaches this is none, and is not read to its end.
    constexpr std::size_t longest = 64UL * 1024;
    // Not waiting, so that a pipe in the file's place holds nobody up.
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return false;
    }
    std::array<char, 4096> chunk{};
    ssize_t got = 1;
    while (got != 0 && bytes.size() < longest) {
        got = ::read(descriptor, chunk.data(), chunk.size());
        if (got < 0 && errno != EINTR) {
            break;
        }
        bytes.append(chunk.data(), got < 0 ? 0 : static_cast<std::size_t>(got));
    }
    const int reason = bytes.size() < longest ? errno : EFBIG;
    ::close(descriptor);
    errno = reason;
    return got >= 0 && bytes.size() < longest;
}

Found find(const std::filesystem::path& file)
{
    std::string bytes;
    if (!readWhole(file, bytes)) {
        return errno == ENOENT ? Found{} : Found{Found::Owner::Unreadable, failed("read", file)};
    }
    const auto read = JSONSerialization::jsonObject(bytes, JSONSerialization::Fragments::Refused);
    const JSONValue* allowed = read ? read.value().member("allowed_extensions") : nullptr;
    if (!allowed || !allowed->array()) {
        return {Found::Owner::Unreadable, file.string() + " is no manifest of a native host; look at it and remove it"};
    }
    const JSONArray& addons = *allowed->array();
    if (std::find(addons.begin(), addons.end(), JSONValue(addonId)) != addons.end()) {
        return {Found::Owner::Ours, {}};
    }
    std::string whose;
    for (const JSONValue& addon : addons) {
        if (const std::string* id = addon.string()) {
            whose += (whose.empty() ? "" : ", ") + *id;
        }
    }
    const std::string* program = read.value().stringMember("path");
    return {Found::Owner::SomebodyElse, file.string() + " starts " + (program ? *program : "nothing") + " for " +
                                            (whose.empty() ? "no add-on" : whose) + ", not for " + addonId};
}

Failure makeFolder(const std::filesystem::path& folder)
{
    std::filesystem::path made;
    for (const auto& part : folder) {
        made /= part;
        const int reason = ::mkdir(made.c_str(), S_IRWXU) == 0 ? 0 : errno;
        std::error_code unknown; // Where it cannot be told, it is none.
        if (reason != 0 && reason != EEXIST && !std::filesystem::is_directory(made, unknown)) {
            errno = reason;
            return failed("make the folder", made);
        }
    }
    return {};
}

Failure replaceFile(const std::filesystem::path& file, std::string_view bytes)
{
    std::string temporary = file.string() + ".XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) {
        return failed("write in", file.parent_path());
    }
    // On the disk before it has the name, so that a power cut leaves the old file or the new one.
    bool good = writeWhole(descriptor, bytes) && ::fsync(descriptor) == 0;
    good = ::close(descriptor) == 0 && good;
    if (good && ::rename(temporary.c_str(), file.c_str()) == 0) {
        return {};
    }
    Failure failure = failed("write", file);
    ::unlink(temporary.c_str());
    return failure;
}

} // namespace

std::filesystem::path nativeHostFolder()
{
    const char* home = std::getenv("HOME");
    if (!home || *home == '\0') {
        const passwd* user = ::getpwuid(::getuid());
        home = user && user->pw_dir ? user->pw_dir : "/";
    }
    return std::filesystem::path(home) / ".mozilla" / "native-messaging-hosts";
}

NativeHostOutcome installNativeHost(const std::filesystem::path& folder, const std::filesystem::path& program)
{
    const std::filesystem::path file = manifestIn(folder);
    const auto manifest = JSONEncoder::encode(JSONObject{{"name", hostName},
                                                         {"description", "E-mail assistant beside the compose window"},
                                                         {"path", program.string()},
                                                         {"type", "stdio"},
                                                         {"allowed_extensions", JSONArray{addonId}}});
    if (!manifest) {
        return NativeHostOutcome::failure("the path of this program is not UTF-8, so no manifest can name it; move it");
    }
    if (const Found found = find(file);
        found.owner == Found::Owner::SomebodyElse || found.owner == Found::Owner::Unreadable) {
        return NativeHostOutcome::failure(found.detail + "; nothing was written");
    }
    Failure failure = makeFolder(folder);
    if (failure.empty()) {
        failure = replaceFile(file, manifest.value() + "\n");
    }
    if (!failure.empty()) {
        return NativeHostOutcome::failure(std::move(failure));
    }
    return "wrote " + file.string() + " for " + program.string() +
           "; next, install the add-on in Thunderbird and start it again";
}

NativeHostOutcome removeNativeHost(const std::filesystem::path& folder)
{
    const std::filesystem::path file = manifestIn(folder);
    const Found found = find(file);
    switch (found.owner) {
    case Found::Owner::Nobody:
        return "there is no " + file.string() + ", so nothing was removed";
    case Found::Owner::SomebodyElse:
    case Found::Owner::Unreadable:
        return NativeHostOutcome::failure(found.detail + "; nothing was removed");
    case Found::Owner::Ours:
        break;
    }
    if (::unlink(file.c_str()) != 0) {
        return NativeHostOutcome::failure(failed("remove", file));
    }
    return "removed " + file.string();
}

} // namespace quillmate
