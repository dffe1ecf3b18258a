#pragma once

#include "platform/foundation/net/URLRequest.h"

#include <string>
#include <variant>

namespace quillmate
{

/// Why a chat request failed.
class ApiError
{
public:
    /// The status is outside 200 to 299.
    static ApiError serverError(int statusCode) { return ApiError(Content(std::in_place_index<0>, statusCode)); }
    /// The transfer itself failed.
    static ApiError networkError(URLError error) { return ApiError(Content(std::in_place_index<1>, std::move(error))); }
    /// No HTTP response came back.
    static ApiError invalidResponse() { return ApiError(Content(std::in_place_index<2>)); }
    /// The body could not be encoded, or the reply is not what it should be.
    static ApiError invalidData() { return ApiError(Content(std::in_place_index<3>)); }

    /// Whether the service wants the sign-in of a user first (RFC 9110, sections 15.5.2 and 15.5.4).
    [[nodiscard]] bool asksForSignIn() const;
    /// The case's name, with its payload in parentheses where it has one.
    [[nodiscard]] std::string description() const;

private:
    struct InvalidResponse {
    };
    struct InvalidData {
    };
    using Content = std::variant<int, URLError, InvalidResponse, InvalidData>;

    explicit ApiError(Content content)
        : m_content(std::move(content))
    {
    }

    Content m_content;
};

} // namespace quillmate
