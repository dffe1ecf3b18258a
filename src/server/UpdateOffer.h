#pragma once

#include <string>
#include <string_view>

namespace quillmate::server
{

/// The release that the version check offers; empty texts offer nothing.
struct UpdateOffer {
    std::string version;
    std::string url;
};

/// Whether a version is newer than another, by the order of Semantic Versioning 2.0.0 (section 11): "1.10" is newer
/// than "1.9", "1.2.0" than "1.2.0-rc.1", and what follows "+" does not count. Beyond that standard there may be any
/// number of parts, a missing one counts as 0, and a "v" may stand in front; what is no version is older than every one
/// above 0.
bool isNewerVersion(std::string_view candidate, std::string_view current);

/// Whether it is written as those versions are, without the "v", in at most 64 characters and 9 digits a part.
bool isVersion(std::string_view text);

/// The version check's JSON object: both texts when the offer is newer than `currentVersion`, else both null.
std::string updateReply(const UpdateOffer& offer, std::string_view currentVersion);

} // namespace quillmate::server
