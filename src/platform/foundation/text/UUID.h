#pragma once

#include <QUuid>

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
    static UUID random() { return UUID(QUuid::createUuid()); }
    /// Reads the 36 characters of the hyphenated form, digits in either case; nothing else is one.
    static std::optional<UUID> parse(std::string_view text);

    /// The hyphenated form in upper-case digits.
    [[nodiscard]] std::string uuidString() const;

    bool operator==(const UUID&) const = default;
    bool operator<(const UUID& other) const { return m_value < other.m_value; }

    /// All zeros.
    UUID() = default;

private:
    explicit UUID(const QUuid& value)
        : m_value(value)
    {
    }

    QUuid m_value;
};

} // namespace quillmate
