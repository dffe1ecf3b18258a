#include "hosts/link/LinkFields.h"

#include <QByteArray>
#include <QString>

#include <cmath>

namespace quillmate
{

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

const JSONValue* LinkFields::required(std::string_view key)
{
    const JSONValue* value = m_object.member(key);
    if (!value) {
        failMember(key, "is missing.");
    }
    return value;
}

const JSONValue* LinkFields::optional(std::string_view key) const
{
    const JSONValue* value = m_object.member(key);
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
    const JSONValue* value = required(key);
    auto bytes = value ? decoded(*value) : std::nullopt;
    if (value && !bytes) {
        failMember(key, "must be a base64 text.");
    }
    return std::move(bytes).value_or(std::string());
}

std::optional<std::string> LinkFields::bytesOrNull(std::string_view key)
{
    const JSONValue* value = required(key);
    if (!value || value->isNull()) {
        return std::nullopt;
    }
    auto bytes = decoded(*value);
    if (!bytes) {
        failMember(key, "must be null or a base64 text.");
    }
    return bytes;
}

std::optional<std::string> LinkFields::decoded(const JSONValue& value)
{
    const std::string* text = value.string();
    // One digit past the groups of four stands for no byte (RFC 4648): something is missing, and the decoder would not
    // say so.
    if (!text || text->size() % 4 == 1) {
        return std::nullopt;
    }
    const auto base64 = QByteArray::fromRawData(text->data(), static_cast<qsizetype>(text->size()));
    const auto decoding = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    return decoding ? std::optional(decoding.decoded.toStdString()) : std::nullopt;
}

} // namespace quillmate
