#include "state/AppVersion.h"

#include "platform/foundation/Bundle.h"

namespace quillmate
{

const std::optional<std::string>& appVersion()
{
    static const std::optional<std::string> version = Bundle::main().object("CFBundleShortVersionString");
    return version;
}

} // namespace quillmate
