#pragma once

#include <string>

namespace quillmate
{

/// A summary as the service gave it, with the id of the message that was asked about.
struct SummarizedResponse {
    std::string messageId;
    std::string response;
    bool operator==(const SummarizedResponse&) const = default;
};

} // namespace quillmate
