#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// A mailbox of an address field (RFC 5322, 3.4).
struct Mailbox {
    std::string name;    ///< display name, decoded, UTF-8; may be empty
    std::string address; ///< bare address

    /// "Name <address>", or whichever of the two there is.
    [[nodiscard]] std::string text() const;
    bool operator==(const Mailbox&) const = default;
};

/// The mailboxes of an address field's value, those inside groups included; of a value above 64 KiB or 200 colons those
/// of its beginning. An unreadable value gives none.
std::vector<Mailbox> parseMailboxes(std::string_view value);

} // namespace quillmate
