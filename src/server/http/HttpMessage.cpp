#include "server/http/HttpMessage.h"

#include <QByteArray>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quillmate::server
{

namespace
{

std::string percentDecoded(std::string_view text)
{
    QByteArray bytes(text.data(), static_cast<qsizetype>(text.size()));
    return QByteArray::fromPercentEncoding(bytes.replace('+', ' ')).toStdString();
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

} // namespace quillmate::server
