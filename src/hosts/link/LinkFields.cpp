#include "hosts/link/LinkFields.h"

#include <QString>

#include <array>
#include <cmath>

namespace quillmate
{
namespace
{

constexpr unsigned char noDigit = 64;

/// The six bits that each character stands for (RFC 4648, table 1); `noDigit` for any other.
constexpr std::array<unsigned char, 256> makeSixBits()
{
    std::array<unsigned char, 256> sixBits{};
    sixBits.fill(noDigit);
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        sixBits[static_cast<unsigned char>(alphabet[i])] = static_cast<unsigned char>(i);
    }
    return sixBits;
}
constexpr auto sixBits = makeSixBits();

/// Puts the bytes in the place of their base64 text, which may lack its padding; false where it is none.
bool decodeBase64(std::string& text)
{
    std::size_t size = text.size();
    for (int padding = 0; padding < 2 && text.size() % 4 == 0 && size > 0 && text[size - 1] == '='; ++padding) {
        --size;
    }
    if (size % 4 == 1) { // A single digit stands for no byte: something is missing.
        return false;
    }
    unsigned bits = 0;
    unsigned count = 0;
    std::size_t written = 0; // Always behind what is read.
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned value = sixBits[static_cast<unsigned char>(text[i])];
        if (value == noDigit) {
            return false;
        }
        bits = bits << 6U | value;
        count += 6;
        if (count >= 8) {
            count -= 8;
            text[written++] = static_cast<char>(bits >> count & 0xFFU);
        }
    }
    text.resize(written);
    return true;
}

} // namespace

void LinkFields::fail(const std::string& error)
{
    if (m_error.empty()) {
        m_error = error;
    }
}

void LinkFields::failMember(std::string_view key, std::string_view wanted)
{
    fail("The field \"" + std::string(key) + "\" " + std::string(wanted));
}

JSONValue* LinkFields::required(std::string_view key)
{
    JSONValue* value = m_object.member(key);
    if (!value) {
        failMember(key, "is missing.");
    }
    return value;
}

JSONValue* LinkFields::optional(std::string_view key) const
{
    JSONValue* value = m_object.member(key);
    return value && !value->isNull() ? value : nullptr;
}

std::string LinkFields::text(std::string_view key)
{
    const JSONValue* value = required(key);
    const std::string* text = value ? value->string() : nullptr;
    if (value && !text) {
        failMember(key, "must be a text.");
    }
    return text ? *text : std::string();
}

std::optional<std::string> LinkFields::textOrNull(std::string_view key)
{
    const JSONValue* value = required(key);
    if (!value || value->isNull()) {
        return std::nullopt;
    }
    if (!value->string()) {
        failMember(key, "must be a text or null.");
        return std::nullopt;
    }
    return *value->string();
}

JSONNumber LinkFields::number(std::string_view key)
{
    const JSONValue* value = required(key);
    const JSONNumber* number = value ? value->number() : nullptr;
    if (value && !number) {
        failMember(key, "must be a number.");
    }
    return number ? *number : JSONNumber();
}

bool LinkFields::flag(std::string_view key)
{
    JSONValue* value = optional(key);
    const bool* flag = value ? std::get_if<bool>(&value->content()) : nullptr;
    if (value && !flag) {
        failMember(key, "must be true or false.");
    }
    return flag && *flag;
}

double LinkFields::length(std::string_view key)
{
    // Far larger than any desktop; what is beyond is a mistake and must not reach the window system.
    constexpr double most = 1e6;
    const JSONValue* value = required(key);
    const JSONNumber* number = value ? value->number() : nullptr;
    const double length = number ? QString::fromStdString(number->text).toDouble() : 0;
    if (value && (!number || !std::isfinite(length) || std::abs(length) > most)) {
        failMember(key, "must be a number of points.");
    }
    return length;
}

std::string LinkFields::bytes(std::string_view key)
{
    JSONValue* value = required(key);
    auto bytes = value ? decoded(*value) : std::nullopt;
    if (value && !bytes) {
        failMember(key, "must be a base64 text.");
    }
    return std::move(bytes).value_or(std::string());
}

std::optional<std::string> LinkFields::bytesOrNull(std::string_view key)
{
    JSONValue* value = required(key);
    if (!value || value->isNull()) {
        return std::nullopt;
    }
    auto bytes = decoded(*value);
    if (!bytes) {
        failMember(key, "must be null or a base64 text.");
    }
    return bytes;
}

std::optional<std::string> LinkFields::decoded(JSONValue& value)
{
    auto* text = std::get_if<std::string>(&value.content());
    return text && decodeBase64(*text) ? std::optional(std::move(*text)) : std::nullopt;
}

} // namespace quillmate
