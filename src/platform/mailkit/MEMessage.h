#pragma once

#include "base/SharedText.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmate
{

/// A mailbox address as the Mail host read it.
struct MEEmailAddress {
    /// UTF-8, absent when the host could not make an address of the header.
    std::optional<std::string> addressString;

    bool operator==(const MEEmailAddress&) const = default;
};

/// A message that the Mail host shows the extension. Immutable once shared.
struct MEMessage {
    using Headers = std::map<std::string, std::vector<std::string>>;

    /// The whole message source, bare line feeds, any bytes; absent when the host does not have it at hand.
    std::optional<SharedText> rawData;
    /// Decoded subject, UTF-8, empty when the message has none.
    std::string subject;
    MEEmailAddress fromAddress;
    /// Header names in lower case, each with its values in message order.
    std::optional<Headers> headers;
    /// The host is still reading the source: the session begins again once it has it, or knows that it cannot.
    bool rawDataFollows = false;

    bool operator==(const MEMessage&) const = default;
};

} // namespace quillmate
