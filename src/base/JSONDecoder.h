#pragma once

#include "base/JSON.h"

#include <functional>
#include <span>
#include <string_view>
#include <variant>

namespace quillmate
{

/// A member that is neither null, a Boolean nor a text.
struct JSONOtherValue {
};

/// One member of a record: not there, null, a Boolean, a text that lives as long as the call it is given to, or
/// something else.
using JSONMember = std::variant<std::monostate, std::nullptr_t, bool, std::string_view, JSONOtherValue>;

/// Reads an array of flat records one after the other, without making values of the whole text. Any thread; stateless.
class JSONDecoder
{
public:
    /// Takes one record's members, in the order of the keys; a failure is a reason to stop, in words.
    using Take = std::function<Result<void, std::string>(std::span<const JSONMember>)>;

    /// Gives the members under these keys of every object of the array to `take`, in order; the last where several bear
    /// a key. Fails on a text that is no such array, and with the first reason given. Up to 4 GiB.
    static Result<void, JSONError> decodeRecords(std::string_view bytes, std::span<const std::string_view> keys,
                                                 const Take& take);
};

} // namespace quillmate
