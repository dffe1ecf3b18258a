#include "localservice/UpdateOffer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quillmate::localservice
{

namespace
{

/// Takes the next part's digits, without leading zeros, so that longer means larger.
std::string_view takePart(std::string_view& version)
{
    const std::size_t dot = version.find('.');
    std::string_view part = version.substr(0, dot);
    version = dot == std::string_view::npos ? std::string_view() : version.substr(dot + 1);
    part = part.substr(0, std::min(part.find_first_not_of("0123456789"), part.size()));
    part.remove_prefix(std::min(part.find_first_not_of('0'), part.size()));
    return part;
}

} // namespace

bool isNewerVersion(std::string_view candidate, std::string_view current)
{
    while (!candidate.empty() || !current.empty()) {
        const std::string_view left = takePart(candidate);
        const std::string_view right = takePart(current);
        if (left.size() != right.size()) {
            return left.size() > right.size();
        }
        if (left != right) {
            return left > right;
        }
    }
    return false;
}

std::string updateReply(const UpdateOffer& offer, std::string_view currentVersion)
{
    nlohmann::ordered_json reply = {{"current_version", nullptr}, {"download_url", nullptr}};
    if (!offer.version.empty() && !offer.url.empty() && isNewerVersion(offer.version, currentVersion)) {
        reply["current_version"] = offer.version;
        reply["download_url"] = offer.url;
    }
    return reply.dump();
}

} // namespace quillmate::localservice
