#pragma once

#include "platform/mailkit/MEMessage.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// The header block of a message source, fields in message order.
class MailHeaders
{
public:
    struct Field {
        std::string name;  ///< lower case
        std::string value; ///< unfolded (RFC 5322, 2.2.3), blanks at both ends removed, otherwise the source's bytes
    };

    /// Reads up to the first empty line, or to the end. A line that is no field and continues none is passed over.
    /// Takes CR LF and LF line ends. Linear in the block's size.
    static MailHeaders parse(std::string_view source);

    [[nodiscard]] const std::vector<Field>& fields() const { return m_fields; }
    /// The bytes of the first field of that (lower-case) name.
    [[nodiscard]] std::optional<std::string_view> first(std::string_view name) const;
    /// As `first`, with its encoded words (RFC 2047) decoded, as one line of UTF-8; empty when there is none.
    [[nodiscard]] std::string decoded(std::string_view name) const;
    /// All fields as the extension sees them: encoded words decoded to UTF-8, but "message-id" byte for byte.
    [[nodiscard]] MEMessage::Headers toMessageHeaders() const;

private:
    std::vector<Field> m_fields;
};

/// A mailbox of an address field (RFC 5322, 3.4).
struct Mailbox {
    std::string name;    ///< display name, decoded, UTF-8; may be empty
    std::string address; ///< bare address

    /// "Name <address>", or whichever of the two there is.
    [[nodiscard]] std::string text() const;
    bool operator==(const Mailbox&) const = default;
};

/// The mailboxes of an address field's value, those inside groups included. An unreadable value gives none.
std::vector<Mailbox> parseMailboxes(std::string_view value);

} // namespace quillmate
