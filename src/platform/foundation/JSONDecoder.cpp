#include "platform/foundation/JSONDecoder.h"

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

JSONError failure(simdjson::error_code code)
{
    return {simdjson::error_message(code)};
}

} // namespace

std::optional<JSONError> JSONDecoder::decodeRecords(std::string_view bytes, std::span<const std::string_view> keys,
                                                    const Take& take)
{
    simdjson::dom::parser parser;
    simdjson::dom::element root;
    if (const auto code = parser.parse(bytes.data(), bytes.size()).get(root)) {
        return failure(code);
    }
    simdjson::dom::array records;
    if (root.get(records) != simdjson::SUCCESS) {
        return JSONError{"the text is not an array"};
    }
    std::vector<JSONMember> members(keys.size());
    for (const simdjson::dom::element record : records) {
        simdjson::dom::object object;
        if (record.get(object) != simdjson::SUCCESS) {
            return JSONError{"an element of the array is not an object"};
        }
        std::fill(members.begin(), members.end(), JSONMember());
        for (const auto& [key, value] : object) {
            const auto known = std::find(keys.begin(), keys.end(), key);
            if (known != keys.end()) {
                members[static_cast<std::size_t>(known - keys.begin())] = memberOf(value);
            }
        }
        if (auto reason = take(members)) {
            return JSONError{std::move(*reason)};
        }
    }
    return std::nullopt;
}

} // namespace quillmate
