#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmate
{

/// The header block of a message source, fields in message order.
class HeaderFields
{
public:
    struct Field {
        std::string name;  ///< lower case
        std::string value; ///< unfolded (RFC 5322, 2.2.3), blanks at both ends removed, otherwise the source's bytes
    };

    /// The most of a header block that is read; nobody's is as long.
    static constexpr std::size_t longestBlock = std::size_t{1024} * 1024;

    /// Reads up to the first empty line, or to the end, at most `limit` bytes. A line that is no field and continues
    /// none is passed over. Takes CR LF and LF line ends. Linear in the block's size.
    static HeaderFields parse(std::string_view source, std::size_t limit = longestBlock);

    [[nodiscard]] const std::vector<Field>& fields() const { return m_fields; }
    /// The bytes of the first field of that (lower-case) name.
    [[nodiscard]] std::optional<std::string_view> first(std::string_view name) const;
    /// As `first`, with its encoded words (RFC 2047) decoded, as one line of UTF-8; empty when there is none.
    [[nodiscard]] std::string decoded(std::string_view name) const;

private:
    std::vector<Field> m_fields;
};

} // namespace quillmate
