#include "platform/foundation/ApplicationFolders.h"

#include <cstdlib>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quillmate
{
namespace
{

std::filesystem::path homeFolder()
{
    if (const char* home = std::getenv("HOME"); home && *home) {
        return home;
    }
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::filesystem::path baseFolder(const char* variable, const char* fallback)
{
    if (const char* value = std::getenv(variable); value && *value == '/') {
        return value;
    }
    return homeFolder() / fallback;
}

} // namespace

std::filesystem::path applicationDataFolder()
{
    return baseFolder("XDG_DATA_HOME", ".local/share") / "quillmate";
}

std::filesystem::path applicationCacheFolder()
{
    return baseFolder("XDG_CACHE_HOME", ".cache") / "quillmate";
}

bool makePrivateFolder(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    ::mkdir(folder.c_str(), S_IRWXU);
    // One that is there already may have been made by another program or with another mask.
    ::chmod(folder.c_str(), S_IRWXU);
    return std::filesystem::is_directory(folder, error);
}

} // namespace quillmate
