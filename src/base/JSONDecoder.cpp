#include "base/JSONDecoder.h"

#include <simdjson.h>

#include <algorithm>
#include <vector>

namespace quillmate
{
namespace
{

JSONMember memberOf(const simdjson::dom::element& value)
{
    if (value.is_null()) {
        return nullptr;
    }
    if (bool boolean = false; value.get(boolean) == simdjson::SUCCESS) {
        return boolean;
    }
    if (std::string_view text; value.get(text) == simdjson::SUCCESS) {
        return text;
    }
    return JSONOtherValue{};
}

JSONMember memberOf(const JSONValue* value)
{
    if (!value) {
        return std::monostate();
    }
    if (value->isNull()) {
        return nullptr;
    }
    if (const auto* boolean = std::get_if<bool>(&value->content())) {
        return *boolean;
    }
    if (const auto* text = value->string()) {
        return std::string_view(*text);
    }
    return JSONOtherValue{};
}

/// The same by the slower reader, which keeps numbers as they are written: the fast one refuses a whole text for an
/// integer of more than 64 bits, also under a key that nobody asks for.
Result<void, JSONError> decodeWithLargeNumbers(std::string_view bytes, std::span<const std::string_view> keys,
                                               const JSONDecoder::Take& take)
{
    const auto parsed = JSONSerialization::jsonObject(bytes, JSONSerialization::Fragments::Refused);
    if (!parsed) {
        return Failure(parsed.error());
    }
    const JSONArray* records = parsed.value().array();
    if (!records) {
        return Failure(JSONError{"the text is not an array"});
    }
    std::vector<JSONMember> members(keys.size());
    for (const JSONValue& record : *records) {
        if (!record.object()) {
            return Failure(JSONError{"an element of the array is not an object"});
        }
        std::transform(keys.begin(), keys.end(), members.begin(),
                       [&record](std::string_view key) { return memberOf(record.member(key)); });
        if (auto taken = take(members); !taken) {
            return Failure(JSONError{std::move(taken).error()});
        }
    }
    return {};
}

} // namespace

Result<void, JSONError> JSONDecoder::decodeRecords(std::string_view bytes, std::span<const std::string_view> keys,
                                                   const Take& take)
{
    simdjson::dom::parser parser;
    simdjson::dom::element root;
    if (const auto code = parser.parse(bytes.data(), bytes.size()).get(root)) {
        return code == simdjson::NUMBER_ERROR ? decodeWithLargeNumbers(bytes, keys, take)
                                              : Failure(JSONError{simdjson::error_message(code)});
    }
    simdjson::dom::array records;
    if (root.get(records) != simdjson::SUCCESS) {
        return Failure(JSONError{"the text is not an array"});
    }
    std::vector<JSONMember> members(keys.size());
    for (const simdjson::dom::element record : records) {
        simdjson::dom::object object;
        if (record.get(object) != simdjson::SUCCESS) {
            return Failure(JSONError{"an element of the array is not an object"});
        }
        std::fill(members.begin(), members.end(), JSONMember());
        for (const auto& [key, value] : object) {
            const auto known = std::find(keys.begin(), keys.end(), key);
            if (known != keys.end()) {
                members[static_cast<std::size_t>(known - keys.begin())] = memberOf(value);
            }
        }
        if (auto taken = take(members); !taken) {
            return Failure(JSONError{std::move(taken).error()});
        }
    }
    return {};
}

} // namespace quillmate
