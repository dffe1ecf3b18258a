#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

/// A universally unique identifier (RFC 4122).
class UUID
{
public:
    /// A new random one (version 4).
    static UUID random();
    /// Reads the 36 characters of the hyphenated form, digits in either case; nothing else is one.
    static std::optional<UUID> parse(std::string_view text);

    /// The hyphenated form in upper-case digits.
    [[nodiscard]] std::string uuidString() const;

    bool operator==(const UUID&) const = default;

private:
    std::array<std::uint8_t, 16> m_bytes{};
};

} // namespace quillmate
