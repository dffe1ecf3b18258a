#pragma once

#include "platform/foundation/net/URL.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmate
{

/// A prepared request. Header names and values go out as they are written here.
struct URLRequest {
    URL url;
    std::string method = "GET";
    std::vector<std::pair<std::string, std::string>> headers = {};
    /// Shared, since a body may be many megabytes and be sent more than once.
    std::shared_ptr<const std::string> body = nullptr;
    /// Seconds without any byte moving in either direction after which the transfer fails.
    double timeoutInterval = 60.0;
};

/// The answer of an HTTP server.
struct HTTPURLResponse {
    int statusCode = 0;
    /// Where the answer came from, after redirects.
    std::string url;
};

/// Why a transfer failed.
struct URLError {
    enum class Kind {
        BadRequest,
        TimedOut,
        CannotFindHost,
        CannotConnectToHost,
        NetworkConnectionLost,
        SecureConnectionFailed,
        BadServerResponse,
        TooManyRedirects,
        InsecureRedirect,
        ForeignRedirect,
        DataTooLarge,
        Unknown,
    };
    Kind kind = Kind::Unknown;
    /// A sentence for people.
    std::string localizedDescription;

    /// Kind and sentence, for diagnostics.
    [[nodiscard]] std::string description() const;
    [[nodiscard]] static std::string_view name(Kind kind);
};

/// How an exchange ended. A whole reply gives data (empty for a reply without content) and the response; a failed
/// transfer gives the error alone.
using DataTaskCompletion = std::function<void(std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                                              std::optional<URLError> error)>;

} // namespace quillmate
