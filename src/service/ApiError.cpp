#include "service/ApiError.h"

namespace quillmate
{

bool ApiError::asksForSignIn() const
{
    const auto* statusCode = std::get_if<int>(&m_content);
    return statusCode && (*statusCode == 401 || *statusCode == 403);
}

std::string ApiError::description() const
{
    if (const auto* statusCode = std::get_if<int>(&m_content)) {
        return "serverError(" + std::to_string(*statusCode) + ")";
    }
    if (const auto* error = std::get_if<URLError>(&m_content)) {
        return "networkError(" + error->description() + ")";
    }
    return std::holds_alternative<InvalidResponse>(m_content) ? "invalidResponse" : "invalidData";
}

} // namespace quillmate
