#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmate::server
{

/// The two doors of the program: everything over TLS, and the sign-in pages alone over plain HTTP on this machine.
enum class Listener { Service, LoginPages };

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

/// One request, whole. HEAD arrives as GET; header names are in lower case.
struct HttpRequest {
    std::string method;
    std::string path;
    std::string query;
    HttpHeaders headers;
    std::string body;
    Listener listener = Listener::Service;

    /// The first value of the header with this lower-case name, or null.
    [[nodiscard]] const std::string* header(std::string_view name) const;
    /// The percent-decoded value of a query item, "+" as a blank; empty where there is none.
    [[nodiscard]] std::string queryValue(std::string_view name) const;
};

/// One response; the server adds Date, Content-Length and Connection.
struct HttpResponse {
    int status = 200;
    HttpHeaders headers;
    std::string body;
};

/// A JSON text as a response that no cache keeps.
HttpResponse jsonResponse(int status, std::string json);
/// {"error": sentence}.
HttpResponse errorResponse(int status, std::string_view sentence);

} // namespace quillmate::server
