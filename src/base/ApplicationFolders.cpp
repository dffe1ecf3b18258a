#include "base/ApplicationFolders.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace quillmate
{
namespace
{

std::filesystem::path baseFolder(const char* variable, const char* fallback)
{
    if (const char* value = std::getenv(variable); value && *value == '/') {
        return value;
    }
    return homeFolder() / fallback;
}

} // namespace

std::filesystem::path homeFolder()
{
    if (const char* home = std::getenv("HOME"); home && *home) {
        return home;
    }
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::filesystem::path applicationDataFolder()
{
    return baseFolder("XDG_DATA_HOME", ".local/share") / "quillmate";
}

std::filesystem::path applicationConfigurationFolder()
{
    return baseFolder("XDG_CONFIG_HOME", ".config") / "quillmate";
}

std::filesystem::path applicationCacheFolder()
{
    return baseFolder("XDG_CACHE_HOME", ".cache") / "quillmate";
}

} // namespace quillmate
