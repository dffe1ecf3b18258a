#pragma once

#include <string>

namespace quillmate::server
{

/// One turn of a chat, in UTF-8.
struct ThreadMessage {
    enum class Role { User, Assistant };
    Role role = Role::User;
    std::string text;
    bool operator==(const ThreadMessage&) const = default;
};

} // namespace quillmate::server
