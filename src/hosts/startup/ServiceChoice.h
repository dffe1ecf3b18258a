#pragma once

#include "base/Result.h"
#include "platform/foundation/net/NetworkEnvironment.h"

#include <string>

namespace quillmate
{

/// Whose service a program asks.
enum class ServiceChoice {
    Local,  ///< of this machine, started by the program
    Remote, ///< at the origins of the build
};

/// What the value of QUILLMATE_SERVICE says, null for an unset variable. Without one it is the service of this machine,
/// unless the environment leads elsewhere or the build has a host of its own. The failure is one sentence that names
/// the variable and what to do.
[[nodiscard]] Result<ServiceChoice, std::string> serviceChoice(const char* value,
                                                               const NetworkEnvironment& environment);

} // namespace quillmate
