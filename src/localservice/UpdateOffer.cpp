#include "localservice/UpdateOffer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quillmate::localservice
{

namespace
{

constexpr std::string_view digits = "0123456789";
constexpr std::size_t longestVersion = 64;

/// Takes what stands before the next full stop.
std::string_view takePart(std::string_view& parts)
{
    const std::size_t dot = parts.find('.');
    const std::string_view part = parts.substr(0, dot);
    parts = dot == std::string_view::npos ? std::string_view() : parts.substr(dot + 1);
    return part;
}

bool isNumber(std::string_view part)
{
    return !part.empty() && part.find_first_not_of(digits) == std::string_view::npos;
}

/// Below, equal to or above 0, as numbers of any length.
int compareNumbers(std::string_view left, std::string_view right)
{
    left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
    right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
    if (left.size() != right.size()) {
        return left.size() < right.size() ? -1 : 1;
    }
    return left.compare(right);
}

/// The parts of a version that count: "1.2.0" and "rc.1" of "v1.2.0-rc.1+5".
struct Version {
    std::string_view core;
    std::string_view preRelease;
};

Version readVersion(std::string_view text)
{
    text = text.substr(0, text.find('+'));
    if (!text.empty() && (text.front() | 0x20) == 'v') {
        text.remove_prefix(1);
    }
    const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
    const bool hasPreRelease = end > 0 && end < text.size() && text[end] == '-';
    return {text.substr(0, end), hasPreRelease ? text.substr(end + 1) : std::string_view()};
}

int compareCores(std::string_view left, std::string_view right)
{
    int order = 0;
    while (order == 0 && (!left.empty() || !right.empty())) {
        const std::string_view leftPart = takePart(left);
        order = compareNumbers(leftPart, takePart(right));
    }
    return order;
}

/// Numbers come before words, and fewer parts before more; a release has none and comes last.
int comparePreReleases(std::string_view left, std::string_view right)
{
    if (left.empty() || right.empty()) {
        return static_cast<int>(left.empty()) - static_cast<int>(right.empty());
    }
    while (!left.empty() && !right.empty()) {
        const std::string_view leftPart = takePart(left);
        const std::string_view rightPart = takePart(right);
        if (isNumber(leftPart) != isNumber(rightPart)) {
            return isNumber(leftPart) ? -1 : 1;
        }
        const int order = isNumber(leftPart) ? compareNumbers(leftPart, rightPart) : leftPart.compare(rightPart);
        if (order != 0) {
            return order;
        }
    }
    return static_cast<int>(right.empty()) - static_cast<int>(left.empty());
}

bool hasPartsOf(std::string_view text, std::string_view allowed)
{
    do {
        const bool last = text.find('.') == std::string_view::npos;
        const std::string_view part = takePart(text);
        if (part.empty() || part.find_first_not_of(allowed) != std::string_view::npos) {
            return false;
        }
        if (last) {
            return true;
        }
    } while (true);
}

} // namespace

bool isNewerVersion(std::string_view candidate, std::string_view current)
{
    const Version left = readVersion(candidate);
    const Version right = readVersion(current);
    const int order = compareCores(left.core, right.core);
    return order > 0 || (order == 0 && comparePreReleases(left.preRelease, right.preRelease) > 0);
}

bool isVersion(std::string_view text)
{
    constexpr std::string_view wordCharacters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-";
    if (text.size() > longestVersion) {
        return false;
    }
    const std::size_t plus = text.find('+');
    const std::string_view version = text.substr(0, plus);
    const std::size_t dash = version.find('-');
    return hasPartsOf(version.substr(0, dash), digits) &&
           (dash == std::string_view::npos || hasPartsOf(version.substr(dash + 1), wordCharacters)) &&
           (plus == std::string_view::npos || hasPartsOf(text.substr(plus + 1), wordCharacters));
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
