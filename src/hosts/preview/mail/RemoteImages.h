#pragma once

#include "hosts/preview/mail/ContentRules.h"

#include <QStringList>
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

/// Counts the images of an HTML mail body, UTF-8. Nothing is fetched. Runs as long as the markup is large: not on the
/// main thread.
RemoteImages countRemoteImages(std::string_view html, const ContentRules& rules);

/// The different addresses (http or https, absolute) of images, backgrounds included, in their order; at most `limit`.
/// An address is cut after 2048 characters. Images of attachments and of the markup itself are not remote.
QStringList remoteImageAddresses(std::string_view html, std::size_t limit);

/// One sentence for the reader of the message, empty when there was nothing to load.
std::string remoteImagesNotice(const RemoteImages& images);

} // namespace quillmate
