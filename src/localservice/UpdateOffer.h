#pragma once

#include <string>
#include <string_view>

namespace quillmate::localservice
{

/// The release that the version check offers; empty texts offer nothing.
struct UpdateOffer {
    std::string version;
    std::string url;
};

/// Whether a dotted version is newer than another: parts compare as numbers of any length, a missing part counts as 0,
/// and what follows the digits of a part is not looked at ("1.10" is newer than "1.9", "1.2" is not newer than
/// "1.2.0").
bool isNewerVersion(std::string_view candidate, std::string_view current);

/// The version check's JSON object: both texts when the offer is newer than `currentVersion`, else both null.
std::string updateReply(const UpdateOffer& offer, std::string_view currentVersion);

} // namespace quillmate::localservice
