#pragma once

#include "platform/foundation/URLRequest.h"

#include <string>
#include <string_view>

namespace quillmate
{

/// A GET request; the token goes into its one header.
[[nodiscard]] URLRequest makeGetRequest(const URL& url, std::string_view accessToken);
/// A GET request without a header of its own.
[[nodiscard]] URLRequest makeGetRequest(const URL& url);

/// Whether a POST says which replies it takes; the summary and reply-generation requests do.
enum class AcceptHeader { Omitted, Sent };

/// A POST request of JSON, without its body.
[[nodiscard]] URLRequest makePostRequest(const URL& url, std::string_view accessToken, AcceptHeader accept);

/// Whether a status is from 200 to 299.
[[nodiscard]] constexpr bool isSuccess(int statusCode)
{
    return statusCode >= 200 && statusCode <= 299;
}

} // namespace quillmate
