#include "service/RequestBuilder.h"

namespace quillmate
{
namespace
{

constexpr auto json = "application/json";

std::pair<std::string, std::string> authorization(std::string_view accessToken)
{
    return {"Authorization", "Bearer " + std::string(accessToken)};
}

} // namespace

URLRequest makeGetRequest(const URL& url)
{
    return {url, "GET", {}, nullptr};
}

URLRequest makeGetRequest(const URL& url, std::string_view accessToken)
{
    return {url, "GET", {authorization(accessToken)}, nullptr};
}

URLRequest makePostRequest(const URL& url, std::string_view accessToken, AcceptHeader accept)
{
    URLRequest request{url, "POST", {{"Content-Type", json}}, nullptr};
    if (accept == AcceptHeader::Sent) {
        request.headers.emplace_back("Accept", json);
    }
    request.headers.push_back(authorization(accessToken));
    return request;
}

} // namespace quillmate
