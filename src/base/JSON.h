#pragma once

#include "base/Result.h"

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace quillmate
{

class JSONValue;

/// The members of an object in the order of the text.
using JSONObject = std::vector<std::pair<std::string, JSONValue>>;
using JSONArray = std::vector<JSONValue>;

/// A number's digits, so that it keeps its value as long as it is within the range of a double (RFC 8259, section 6).
/// As it was written, but for -0, which is 0.
struct JSONNumber {
    std::string text;
    bool operator==(const JSONNumber&) const = default;
};

/// One value of a JSON text (RFC 8259).
class JSONValue
{
public:
    using Content = std::variant<std::nullptr_t, bool, JSONNumber, std::string, JSONArray, JSONObject>;

    JSONValue() = default;
    // Implicit, so that members can be listed as they are.
    JSONValue(std::string text)
        : m_content(std::move(text))
    {
    }
    JSONValue(const char* text)
        : m_content(std::string(text))
    {
    }
    JSONValue(JSONObject members)
        : m_content(std::move(members))
    {
    }
    JSONValue(JSONArray elements)
        : m_content(std::move(elements))
    {
    }
    JSONValue(JSONNumber number)
        : m_content(std::move(number))
    {
    }
    template<typename Boolean>
    requires std::is_same_v<Boolean, bool> JSONValue(Boolean boolean)
        : m_content(boolean)
    {
    }
    JSONValue(std::nullptr_t) {}

    [[nodiscard]] const Content& content() const { return m_content; }
    [[nodiscard]] Content& content() { return m_content; }
    [[nodiscard]] bool isNull() const { return std::holds_alternative<std::nullptr_t>(m_content); }
    [[nodiscard]] const JSONObject* object() const { return std::get_if<JSONObject>(&m_content); }
    [[nodiscard]] const JSONArray* array() const { return std::get_if<JSONArray>(&m_content); }
    [[nodiscard]] const std::string* string() const { return std::get_if<std::string>(&m_content); }
    [[nodiscard]] const JSONNumber* number() const { return std::get_if<JSONNumber>(&m_content); }
    /// The member under a key, the last where several bear it; null for anything but an object.
    [[nodiscard]] const JSONValue* member(std::string_view key) const;
    [[nodiscard]] JSONValue* member(std::string_view key)
    {
        return const_cast<JSONValue*>(std::as_const(*this).member(key));
    }
    /// As `member`, when it is a string.
    [[nodiscard]] const std::string* stringMember(std::string_view key) const;

    bool operator==(const JSONValue&) const = default;

private:
    Content m_content = nullptr;
};

/// Why a text is no JSON, in words.
struct JSONError {
    std::string description;
};

/// Reads and renders JSON texts. Any thread; stateless.
class JSONSerialization
{
public:
    enum class Fragments { Refused, Allowed };

    /// Reads the whole text. Bytes that are not UTF-8, nesting past 512 levels, more than a million values and, where
    /// fragments are refused, a bare scalar at the top are failures.
    static Result<JSONValue, JSONError> jsonObject(std::string_view bytes, Fragments fragments);
};

/// Writes JSON: compact, members in their order, UTF-8. Any thread; stateless.
class JSONEncoder
{
public:
    /// Fails on a text that is not UTF-8.
    static Result<std::string, JSONError> encode(const JSONValue& value);
    /// The same for an object of texts, without making values of them first.
    static Result<std::string, JSONError>
    encode(const std::vector<std::pair<std::string_view, std::string_view>>& members);
};

} // namespace quillmate
