#include "base/JSON.h"

#include "base/CharacterSet.h"

#include <nlohmann/json.hpp>

#include <array>

namespace quillmate
{
namespace
{

// The platform's own limit; a deeper text is an attack or an accident.
constexpr std::size_t deepestNesting = 512;
// A value takes some 50 bytes where its text may take two; far more than any message or reply has.
constexpr std::size_t mostValues = 1'000'000;

/// Builds the values from the parser's events. The parser itself keeps no stack of calls, so depth costs it nothing.
class Builder final : public nlohmann::json_sax<nlohmann::json>
{
public:
    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(JSONNumber{std::to_string(value)}); }
    bool number_unsigned(number_unsigned_t value) override { return add(JSONNumber{std::to_string(value)}); }
    bool number_float(number_float_t, const string_t& text) override { return add(JSONNumber{text}); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(JSONObject()); }
    bool start_array(std::size_t) override { return open(JSONArray()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& value) override
    {
        m_keys.back() = std::move(value);
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) override
    {
        m_error = error.what();
        return false;
    }

    [[nodiscard]] const std::string& error() const { return m_error; }
    JSONValue take() { return std::move(m_root); }

private:
    bool add(JSONValue value)
    {
        if (++m_count > mostValues) {
            m_error = "the text holds more than " + std::to_string(mostValues) + " values";
            return false;
        }
        if (m_open.empty()) {
            m_root = std::move(value);
        } else if (auto* object = std::get_if<JSONObject>(&m_open.back().content())) {
            object->emplace_back(std::move(m_keys.back()), std::move(value));
        } else {
            std::get<JSONArray>(m_open.back().content()).push_back(std::move(value));
        }
        return true;
    }
    bool open(JSONValue container)
    {
        if (m_open.size() == deepestNesting) {
            m_error = "the text nests more than " + std::to_string(deepestNesting) + " levels deep";
            return false;
        }
        m_open.push_back(std::move(container));
        m_keys.emplace_back();
        return true;
    }
    bool close()
    {
        JSONValue closed = std::move(m_open.back());
        m_open.pop_back();
        m_keys.pop_back();
        return add(std::move(closed));
    }

    std::size_t m_count = 0;
    JSONValue m_root;
    std::vector<JSONValue> m_open;
    std::vector<std::string> m_keys; // One per open container; used by objects.
    std::string m_error;
};

/// What stands for a byte inside a JSON string: 0 for the byte itself, 'u' for a \u00XX escape, else the letter after
/// the backslash (RFC 8259, section 7).
constexpr std::array<char, 256> makeEscapes()
{
    std::array<char, 256> escapes{};
    for (std::size_t i = 0; i < 0x20; ++i) {
        escapes[i] = 'u';
    }
    escapes['\b'] = 'b';
    escapes['\t'] = 't';
    escapes['\n'] = 'n';
    escapes['\f'] = 'f';
    escapes['\r'] = 'r';
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    return escapes;
}
constexpr auto escapes = makeEscapes();

bool appendString(std::string& out, std::string_view text)
{
    if (!isValidUTF8(text)) {
        return false;
    }
    out += '"';
    std::size_t plain = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const char escape = escapes[byte];
        if (escape == 0) {
            continue;
        }
        out.append(text, plain, i - plain);
        plain = i + 1;
        out += {'\\', escape};
        if (escape == 'u') {
            constexpr std::string_view digits = "0123456789abcdef";
            out += {'0', '0', digits[byte >> 4U], digits[byte & 0x0FU]};
        }
    }
    out.append(text, plain);
    out += '"';
    return true;
}

bool append(std::string& out, const JSONValue& value);

// Values come from the reader, which bounds their depth, or from our own few literals.
// NOLINTNEXTLINE(misc-no-recursion)
bool appendContent(std::string& out, const JSONObject& members)
{
    out += '{';
    for (std::size_t i = 0; i < members.size(); ++i) {
        out += i > 0 ? "," : "";
        if (!appendString(out, members[i].first)) {
            return false;
        }
        out += ':';
        if (!append(out, members[i].second)) {
            return false;
        }
    }
    out += '}';
    return true;
}

// NOLINTNEXTLINE(misc-no-recursion)
bool appendContent(std::string& out, const JSONArray& elements)
{
    out += '[';
    for (std::size_t i = 0; i < elements.size(); ++i) {
        out += i > 0 ? "," : "";
        if (!append(out, elements[i])) {
            return false;
        }
    }
    out += ']';
    return true;
}

bool appendContent(std::string& out, std::nullptr_t)
{
    out += "null";
    return true;
}

bool appendContent(std::string& out, bool boolean)
{
    out += boolean ? "true" : "false";
    return true;
}

bool appendContent(std::string& out, const JSONNumber& number)
{
    out += number.text;
    return true;
}

bool appendContent(std::string& out, const std::string& text)
{
    return appendString(out, text);
}

// NOLINTNEXTLINE(misc-no-recursion)
bool append(std::string& out, const JSONValue& value)
{
    return std::visit([&out](const auto& content) { return appendContent(out, content); }, value.content());
}

JSONError notUTF8()
{
    return {"The text cannot be encoded as JSON because it is not valid UTF-8."};
}

} // namespace

const JSONValue* JSONValue::member(std::string_view key) const
{
    if (const auto* members = object()) {
        for (auto entry = members->rbegin(); entry != members->rend(); ++entry) {
            if (entry->first == key) {
                return &entry->second;
            }
        }
    }
    return nullptr;
}

const std::string* JSONValue::stringMember(std::string_view key) const
{
    const JSONValue* value = member(key);
    return value ? value->string() : nullptr;
}

Result<JSONValue, JSONError> JSONSerialization::jsonObject(std::string_view bytes, Fragments fragments)
{
    using Parsed = Result<JSONValue, JSONError>;
    if (bytes.find('\0') != std::string_view::npos) {
        return Parsed::failure({"the text holds a NUL"}); // The parser would take it for the end of the text.
    }
    Builder builder;
    if (!nlohmann::json::sax_parse(bytes.begin(), bytes.end(), &builder)) {
        // The parser quotes what it last read, raw bytes included; a diagnostic is one line of text.
        std::string description = builder.error();
        for (char& c : description) {
            if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) == 0x7F) {
                c = ' ';
            }
        }
        constexpr std::size_t longest = 300;
        return Parsed::failure(
            {isValidUTF8(description) && description.size() <= longest ? description : "the text is not valid JSON"});
    }
    JSONValue value = builder.take();
    if (fragments == Fragments::Refused && !value.object() && !value.array()) {
        return Parsed::failure({"the text is a bare value, neither an object nor an array"});
    }
    return value;
}

Result<std::string, JSONError> JSONEncoder::encode(const JSONValue& value)
{
    std::string out;
    return append(out, value) ? Result<std::string, JSONError>(std::move(out))
                              : Result<std::string, JSONError>::failure(notUTF8());
}

Result<std::string, JSONError>
JSONEncoder::encode(const std::vector<std::pair<std::string_view, std::string_view>>& members)
{
    std::size_t size = 2;
    for (const auto& [key, text] : members) {
        size += key.size() + text.size() + text.size() / 16 + 6;
    }
    std::string out;
    out.reserve(size);
    for (const auto& [key, text] : members) {
        out += out.empty() ? '{' : ',';
        if (!appendString(out, key)) {
            return Result<std::string, JSONError>::failure(notUTF8());
        }
        out += ':';
        if (!appendString(out, text)) {
            return Result<std::string, JSONError>::failure(notUTF8());
        }
    }
    out += out.empty() ? "{}" : "}";
    return out;
}

} // namespace quillmate
