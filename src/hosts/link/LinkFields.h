#pragma once

#include "base/JSON.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

/// Reads the members of one object of a frame and keeps the first thing that is wrong with them, so that the readers
/// read like the format. A member that is wrong is read as an empty value. The object outlives this.
class LinkFields
{
public:
    explicit LinkFields(JSONValue& object)
        : m_object(object)
    {
    }

    /// A sentence that names the member, empty when nothing is wrong.
    [[nodiscard]] const std::string& error() const { return m_error; }
    /// Keeps the error unless there is one already; an empty one is none.
    void fail(const std::string& error);

    /// Null when it is missing, which is wrong.
    JSONValue* required(std::string_view key);
    /// As `required`, for a member that is left out or null.
    JSONValue* optional(std::string_view key) const;
    std::string text(std::string_view key);
    std::optional<std::string> textOrNull(std::string_view key);
    /// The number as it was written.
    JSONNumber number(std::string_view key);
    /// A number of points on a desktop.
    double length(std::string_view key);
    /// False when it is absent.
    bool flag(std::string_view key);
    /// The bytes of a base64 text (RFC 4648), which is used up: a message of many megabytes is decoded where it stands.
    std::string bytes(std::string_view key);
    std::optional<std::string> bytesOrNull(std::string_view key);

private:
    void failMember(std::string_view key, std::string_view wanted);
    /// Absent for anything but a base64 text.
    static std::optional<std::string> decoded(JSONValue& value);

    JSONValue& m_object;
    std::string m_error;
};

} // namespace quillmate
