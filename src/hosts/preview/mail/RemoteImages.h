#pragma once

#include "hosts/preview/mail/ContentRules.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmate
{

/// How many images a message wanted loaded from elsewhere. Different addresses count, not their repetitions.
struct RemoteImages {
    std::size_t count = 0;
    std::size_t trackers = 0; ///< how many of them the content rules block
    bool more = false;        ///< counting ended at maximumRemoteImages, and there are more

    bool operator==(const RemoteImages&) const = default;
};

/// Where counting ends.
inline constexpr std::size_t maximumRemoteImages = 1000;

/// Counts the images of an HTML mail body, UTF-8: those at different http or https addresses, of which the first 2048
/// characters tell, backgrounds included. Images of attachments and of the markup itself are not remote. Nothing is
/// fetched. Runs as long as the markup is large: not on the main thread.
RemoteImages countRemoteImages(std::string_view html, const ContentRules& rules);

/// One sentence for the reader of the message, empty when there was nothing to load.
std::string remoteImagesNotice(const RemoteImages& images);

} // namespace quillmate
