#include "base/CharacterSet.h"

#include <simdjson.h>

namespace quillmate
{
namespace
{

bool isWhitespaceOrNewline(char32_t character)
{
    return (character >= 0x09 && character <= 0x0D) || character == 0x20 || character == 0x85 || character == 0xA0 ||
           character == 0x1680 || (character >= 0x2000 && character <= 0x200B) || character == 0x2028 ||
           character == 0x2029 || character == 0x202F || character == 0x205F || character == 0x3000;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The members of the set take at most three bytes, so a longer sequence decodes to 0, which is no member.
char32_t decode(std::string_view sequence)
{
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(sequence[i])); };
    switch (sequence.size()) {
    case 1:
        return byte(0);
    case 2:
        return ((byte(0) & 0x1FU) << 6U) | (byte(1) & 0x3FU);
    case 3:
        return ((byte(0) & 0x0FU) << 12U) | ((byte(1) & 0x3FU) << 6U) | (byte(2) & 0x3FU);
    default:
        return 0;
    }
}

} // namespace

std::string_view trimmingWhitespacesAndNewlines(std::string_view text)
{
    while (!text.empty()) {
        std::size_t length = 1;
        while (length < text.size() && isContinuation(text[length])) {
            ++length;
        }
        if (!isWhitespaceOrNewline(decode(text.substr(0, length)))) {
            break;
        }
        text.remove_prefix(length);
    }
    while (!text.empty()) {
        std::size_t start = text.size() - 1;
        while (start > 0 && isContinuation(text[start])) {
            --start;
        }
        if (!isWhitespaceOrNewline(decode(text.substr(start)))) {
            break;
        }
        text.remove_suffix(text.size() - start);
    }
    return text;
}

bool isValidUTF8(std::string_view bytes)
{
    return simdjson::validate_utf8(bytes.data(), bytes.size());
}

} // namespace quillmate
