#include "hosts/link/NativeHostManifest.h"

#include "base/ApplicationFolders.h"
#include "base/JSON.h"
#include "base/PrivateFiles.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>

namespace quillmate
{
namespace
{

constexpr auto hostName = QUILLMATE_NATIVE_HOST;
constexpr auto addonId = QUILLMATE_ADDON_ID;

std::filesystem::path manifestIn(const std::filesystem::path& folder)
{
    return folder / (std::string(hostName) + ".json");
}

/// What stands in the manifest's place, if anything does.
Result<std::optional<JSONValue>, std::string> manifestAt(const std::filesystem::path& file)
{
    // A manifest is shorter than a page; what is longer is none, and neither is a folder or a pipe.
    constexpr std::uintmax_t longest = 64UL * 1024;
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return std::optional<JSONValue>();
    }
    const bool isShort = std::filesystem::is_regular_file(status) && std::filesystem::file_size(file, error) < longest;
    const auto bytes = isShort ? readFile(file) : std::string();
    if (error || !bytes) {
        const std::error_code reason = error ? error : std::error_code(errno, std::generic_category());
        return Failure("cannot read " + file.string() + ": " + reason.message());
    }
    auto read = JSONSerialization::jsonObject(*bytes, JSONSerialization::Fragments::Refused);
    const JSONValue* allowed = read ? read.value().member("allowed_extensions") : nullptr;
    if (!allowed || !allowed->array()) {
        return Failure(file.string() + " is no manifest of a native host; look at it and remove it");
    }
    return std::optional(std::move(read).value());
}

/// Whether our manifest is there. The failure says why what is there must be left alone.
Result<bool, std::string> hasOurs(const std::filesystem::path& file)
{
    const auto found = manifestAt(file);
    if (!found) {
        return Failure(found.error());
    }
    if (!found.value()) {
        return false;
    }
    const JSONArray& addons = *found.value()->member("allowed_extensions")->array();
    if (std::find(addons.begin(), addons.end(), JSONValue(addonId)) != addons.end()) {
        return true;
    }
    std::string whose;
    for (const JSONValue& addon : addons) {
        if (const std::string* id = addon.string()) {
            whose += (whose.empty() ? "" : ", ") + *id;
        }
    }
    const std::string* program = found.value()->stringMember("path");
    return Failure(file.string() + " starts " + (program ? *program : "nothing") + " for " +
                   (whose.empty() ? "no add-on" : whose) + ", not for " + addonId);
}

} // namespace

std::filesystem::path nativeHostFolder()
{
    return homeFolder() / ".mozilla" / "native-messaging-hosts";
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
        return Failure("the path of this program is not UTF-8, so no manifest can name it; move it");
    }
    if (const auto found = hasOurs(file); !found) {
        return Failure(found.error() + "; nothing was written");
    }
    if (const auto made = makeFolder(folder); !made) {
        return Failure(made.error());
    }
    constexpr unsigned ownerOnly = 0600;
    if (const auto written = writeFileWhole(file, manifest.value() + "\n", ownerOnly); !written) {
        return Failure(written.error());
    }
    return "wrote " + file.string() + " for " + program.string() +
           "; next, install the add-on in Thunderbird and start it again";
}

NativeHostOutcome removeNativeHost(const std::filesystem::path& folder)
{
    const std::filesystem::path file = manifestIn(folder);
    const auto found = hasOurs(file);
    if (!found) {
        return Failure(found.error() + "; nothing was removed");
    }
    if (!found.value()) {
        return "there is no " + file.string() + ", so nothing was removed";
    }
    std::error_code error;
    if (!std::filesystem::remove(file, error)) {
        return Failure("cannot remove " + file.string() + ": " + error.message());
    }
    return "removed " + file.string();
}

} // namespace quillmate
