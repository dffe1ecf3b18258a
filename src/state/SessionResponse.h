#pragma once

#include "platform/foundation/JSON.h"
#include "platform/foundation/Result.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmate
{

/// What the service says of a sign-in session.
struct SessionResponse {
    std::string id;
    /// Present once the user has signed in in the browser.
    std::optional<std::string> accessToken;
    std::optional<std::string> refreshToken;
    /// The page on which the user signs in.
    std::optional<std::string> loginURL;

    /// Reads an object with a string "id" and, each a string, null or missing, "access_token", "refresh_token" and
    /// "login_url". Unknown keys are ignored; anything else is a failure.
    static Result<SessionResponse, JSONError> decode(std::string_view bytes);

    bool operator==(const SessionResponse&) const = default;
};

} // namespace quillmate
