#include "service/SummarizeAttempt.h"

#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/URLSession.h"
#include "platform/foundation/print.h"
#include "service/RequestBuilder.h"
#include "state/APIManager.h"
#include "state/SummarizeManager.h"

#include <utility>

namespace quillmate
{
namespace
{

constexpr int mostRetries = 3;
constexpr double secondsBeforeRetry = 2.0;

} // namespace

SummarizeAttempt::SummarizeAttempt(std::shared_ptr<const Request> request, int attempt)
    : m_request(std::move(request))
    , m_attempt(attempt)
{
}

void SummarizeAttempt::send() const
{
    auto encoded = m_request->body.encode();
    if (!encoded) {
        print("Failed to encode JSON: " + encoded.error().description);
        retry();
        return;
    }
    URLRequest request = m_request->prepared;
    request.body = std::make_shared<const std::string>(std::move(encoded).value());
    URLSession::shared()
        .dataTask(std::move(request),
                  [self = *this](auto data, auto response, auto error) { self.handleResponse(data, response, error); })
        ->resume();
}

void SummarizeAttempt::handleResponse(const std::optional<std::string>& data,
                                      const std::optional<HTTPURLResponse>& response,
                                      const std::optional<URLError>& error) const
{
    if (error) {
        print("Error sending request: " + error->description());
        retry();
        return;
    }
    if (!response) {
        print("Invalid response received from the server.");
        retry();
        return;
    }
    if (!isSuccess(response->statusCode)) {
        print("Server error: " + std::to_string(response->statusCode));
        retry();
        return;
    }
    if (!data) {
        print("No data received from server.");
        m_request->completion(std::nullopt);
        return;
    }
    const auto reply = JSONSerialization::jsonObject(*data, JSONSerialization::Fragments::Allowed);
    if (!reply) {
        retry();
        return;
    }
    const auto rendering = JSONEncoder::encode(reply.value().object() ? reply.value() : JSONValue(JSONObject()));
    print("Response from server: " + (rendering ? rendering.value() : rendering.error().description));
    if (const auto* text = reply.value().stringMember("response")) {
        m_request->completion(SummarizedResponse{m_request->messageId, *text});
        return;
    }
    print("The 'response' key does not exist or is not a string.");
    m_request->completion(std::nullopt);
}

void SummarizeAttempt::retry() const
{
    if (m_attempt >= mostRetries) {
        print("Max retry attempts reached. Request failed.");
        SummarizeManager::shared().requestFailed = true;
        m_request->completion(std::nullopt);
        return;
    }
    const SummarizeAttempt next(m_request, m_attempt + 1);
    print("Retrying request, attempt " + std::to_string(next.m_attempt) + "...");
    DispatchQueue::main().asyncAfter(secondsBeforeRetry, [next] { next.send(); });
}

void HandleApiRequests::sendSummarizeRequest(const URL& url, const std::string& accessToken, SummarizeRequestBody body,
                                             const std::string& messageId, SummaryCompletion completion)
{
    const auto request = std::make_shared<const SummarizeAttempt::Request>(SummarizeAttempt::Request{
        makePostRequest(url, accessToken, AcceptHeader::Sent), std::move(body), messageId, std::move(completion)});
    fetchUserDetails(currentApiURL() + "/me", accessToken,
                     [request](UserDetailsManager&) { SummarizeAttempt(request, 0).send(); });
}

} // namespace quillmate
