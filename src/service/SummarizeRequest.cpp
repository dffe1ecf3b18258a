#include "platform/foundation/schedule/DispatchQueue.h"
#include "service/HandleApiRequests.h"
#include "service/RequestSender.h"
#include "state/APIManager.h"
#include "state/SignInPeriod.h"

#include <utility>

namespace quillmate
{
namespace
{

constexpr int mostRetries = 3;
constexpr double secondsBeforeRetry = 2.0;

constexpr ReplyTable summaryTable{.transport = "Error sending request: ",
                                  .body = "No data received from server.",
                                  .rendering = "Response from server: ",
                                  .keys = "The 'response' key does not exist or is not a string."};

/// What every attempt of one request shares.
struct SharedParts {
    URL url;
    std::string accessToken;
    SummarizeRequestBody body;
    std::string messageId;
    HandleApiRequests::SummaryCompletion completion;
    SignInPeriod period = {};
};

/// One summary request on its way through its attempts; attempt 0 is the first send.
class SummarizeAttempt
{
public:
    SummarizeAttempt(std::shared_ptr<const SharedParts> shared, int attempt)
        : m_shared(std::move(shared))
        , m_attempt(attempt)
    {
    }

    /// Main thread.
    void send() const
    {
        if (m_shared->period.isTokenGone()) {
            m_shared->completion(std::nullopt);
            return;
        }
        URLSession::shared().perform([self = *this] { self.buildAndSend(); });
    }

private:
    void buildAndSend() const
    {
        auto request = buildRequest(m_shared->url, m_shared->accessToken, m_shared->body);
        if (!request) {
            print(request.error());
            retry();
            return;
        }
        sendRequest(std::move(request).value(), readSummary,
                    [self = *this](const auto& summary) { self.receive(summary); });
    }

    void receive(const Result<std::string, ReplyFailure>& summary) const
    {
        if (summary) {
            m_shared->completion(SummarizedResponse{m_shared->messageId, summary.value()});
            return;
        }
        const ReplyStage stage = summary.error().stage;
        if (stage == ReplyStage::Body || stage == ReplyStage::Keys) {
            m_shared->completion(std::nullopt); // The service has answered; it would say the same again.
            return;
        }
        retry();
    }

    void retry() const
    {
        if (m_shared->period.isTokenGone()) {
            m_shared->completion(std::nullopt);
            return;
        }
        if (m_attempt >= mostRetries) {
            print("Max retry attempts reached. Request failed.");
            m_shared->completion(std::nullopt);
            return;
        }
        const SummarizeAttempt next(m_shared, m_attempt + 1);
        print("Retrying request, attempt " + std::to_string(next.m_attempt) + "...");
        DispatchQueue::main().asyncAfter(secondsBeforeRetry, [next] { next.send(); });
    }

    std::shared_ptr<const SharedParts> m_shared;
    int m_attempt;
};

} // namespace

BuiltRequest buildRequest(const URL& url, std::string_view accessToken, const SummarizeRequestBody& body)
{
    return makePostRequest(url, accessToken, AcceptHeader::Sent,
                           {{"content", body.content},
                            {"email", body.email},
                            {"plugin_source", pluginSource},
                            {"plugin_version", pluginVersion}});
}

Reading<std::string> readSummary(const ServiceReply& reply)
{
    return readText(reply, summaryTable, "response");
}

void HandleApiRequests::sendSummarizeRequest(const URL& url, const std::string& accessToken, SharedText content,
                                             const std::string& messageId, SummaryCompletion completion)
{
    const auto shared = std::make_shared<SharedParts>(
        SharedParts{url, accessToken, {std::move(content), {}}, messageId, std::move(completion)});
    fetchUserDetails(
        currentApiURL() + "/me", accessToken,
        [shared](const UserDetailsManager& user) {
            shared->body.email = user.email();
            SummarizeAttempt(shared, 0).send();
        },
        [shared] { shared->completion(std::nullopt); });
}

} // namespace quillmate
