#pragma once

#include "platform/foundation/URLRequest.h"
#include "service/HandleApiRequests.h"

#include <memory>
#include <optional>
#include <string>

namespace quillmate
{

/// One summary request on its way through its attempts.
class SummarizeAttempt
{
public:
    /// What every attempt of one request shares.
    struct Request {
        URLRequest prepared;
        SummarizeRequestBody body;
        std::string messageId;
        HandleApiRequests::SummaryCompletion completion;
    };

    /// Attempt 0 is the first send. Main thread.
    SummarizeAttempt(std::shared_ptr<const Request> request, int attempt);

    void send() const;

private:
    void handleResponse(const std::optional<std::string>& data, const std::optional<HTTPURLResponse>& response,
                        const std::optional<URLError>& error) const;
    void retry() const;

    std::shared_ptr<const Request> m_request;
    int m_attempt;
};

} // namespace quillmate
