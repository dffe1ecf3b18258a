#pragma once

#include "base/Result.h"
#include "platform/foundation/net/NetworkEnvironment.h"

#include <optional>
#include <string>

namespace quillmate
{

/// Whose service a program asks.
enum class ServiceChoice {
    Local,  ///< of this machine, started by the program
    Remote, ///< at the origins of the build
};

/// "local" or "remote", as variables, options, files and frames say it.
[[nodiscard]] const char* nameOf(ServiceChoice choice);
/// Absent for any other word.
[[nodiscard]] std::optional<ServiceChoice> serviceChoiceNamed(std::string_view name);

/// Which service is asked, and what of that is the user's to choose.
struct ServiceOffer {
    ServiceChoice choice = ServiceChoice::Local;
    bool isFixed = false;   ///< the environment decides
    bool hasRemote = false; ///< there is a service at the origins of the build
};

/// What the value of QUILLMATE_SERVICE says, null for an unset variable. Without one the environment may lead
/// elsewhere; else the user's stored choice counts, and without that the service of this machine unless the build has a
/// host of its own. The failure is one sentence that names the variable and what to do.
[[nodiscard]] Result<ServiceOffer, std::string> serviceOffer(const char* value, const NetworkEnvironment& environment,
                                                             std::optional<ServiceChoice> stored);

/// The user's choice, for the programs that start from now on; absent when there is none. One that cannot be read costs
/// a diagnostic line and counts as none. Any thread.
[[nodiscard]] std::optional<ServiceChoice> storedServiceChoice();
/// Stores the choice. The failure is one sentence. Any thread.
Result<void, std::string> storeServiceChoice(ServiceChoice choice);

} // namespace quillmate
