#include "platform/foundation/UUID.h"

#include <QUuid>

#include <algorithm>

namespace quillmate
{
namespace
{

constexpr std::size_t textLength = 36;

constexpr bool isHyphenPlace(std::size_t index)
{
    return index == 8 || index == 13 || index == 18 || index == 23;
}

/// The digit's value; 16 for what is no hexadecimal digit.
constexpr unsigned valueOf(char digit)
{
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a') + 10 : 16;
}

} // namespace

UUID UUID::random()
{
    const QByteArray bytes = QUuid::createUuid().toRfc4122();
    UUID made;
    std::copy(bytes.begin(), bytes.end(), made.m_bytes.begin());
    return made;
}

std::optional<UUID> UUID::parse(std::string_view text)
{
    if (text.size() != textLength) {
        return std::nullopt;
    }
    UUID read;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < textLength; ++i) {
        if (isHyphenPlace(i)) {
            if (text[i] != '-') {
                return std::nullopt;
            }
            continue;
        }
        const unsigned value = valueOf(text[i]);
        if (value > 15) {
            return std::nullopt;
        }
        std::uint8_t& byte = read.m_bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4U | value);
    }
    return read;
}

std::string UUID::uuidString() const
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(textLength);
    for (const std::uint8_t byte : m_bytes) {
        if (isHyphenPlace(text.size())) {
            text += '-';
        }
        text += digits[byte >> 4U];
        text += digits[byte & 0x0FU];
    }
    return text;
}

} // namespace quillmate
