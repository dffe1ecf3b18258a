#include "localservice/HttpMessage.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quillmate::localservice
{

namespace
{

int hexDigit(char character)
{
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

const std::string* HttpRequest::header(std::string_view name) const
{
    const auto found =
        std::find_if(headers.begin(), headers.end(), [&](const auto& entry) { return entry.first == name; });
    return found == headers.end() ? nullptr : &found->second;
}

std::string HttpRequest::queryValue(std::string_view name) const
{
    std::string_view rest = query;
    while (!rest.empty()) {
        const std::string_view item = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(rest.size(), item.size() + 1));
        const std::size_t equals = item.find('=');
        if (equals != std::string_view::npos && percentDecoded(item.substr(0, equals)) == name) {
            return percentDecoded(item.substr(equals + 1));
        }
    }
    return {};
}

HttpResponse jsonResponse(int status, std::string json)
{
    return {
        status,
        {{"Content-Type", "application/json"}, {"Cache-Control", "no-store"}, {"X-Content-Type-Options", "nosniff"}},
        std::move(json)};
}

HttpResponse errorResponse(int status, std::string_view sentence)
{
    const nlohmann::json object = {{"error", std::string(sentence)}};
    return jsonResponse(status, object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

HttpResponse methodNotAllowed(std::string_view allowed)
{
    HttpResponse response =
        errorResponse(405, "This address does not take that method: use " + std::string(allowed) + ".");
    response.headers.emplace_back("Allow", allowed);
    return response;
}

std::string_view reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 303:
        return "See Other";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 408:
        return "Request Timeout";
    case 413:
        return "Content Too Large";
    case 415:
        return "Unsupported Media Type";
    case 417:
        return "Expectation Failed";
    case 421:
        return "Misdirected Request";
    case 422:
        return "Unprocessable Content";
    case 429:
        return "Too Many Requests";
    case 431:
        return "Request Header Fields Too Large";
    case 500:
        return "Internal Server Error";
    case 501:
        return "Not Implemented";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    case 504:
        return "Gateway Timeout";
    case 505:
        return "HTTP Version Not Supported";
    default:
        return "Status";
    }
}

std::string percentDecoded(std::string_view text)
{
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool escape = text[index] == '%' && index + 2 < text.size() && hexDigit(text[index + 1]) >= 0 &&
                            hexDigit(text[index + 2]) >= 0;
        if (escape) {
            decoded += static_cast<char>(hexDigit(text[index + 1]) * 16 + hexDigit(text[index + 2]));
            index += 2;
        } else {
            decoded += text[index] == '+' ? ' ' : text[index];
        }
    }
    return decoded;
}

} // namespace quillmate::localservice
